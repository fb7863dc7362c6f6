#pragma once

#include <velmora/Export.h>

#include <iosfwd>

namespace Velmora {

/// A tagged value: a text, an integer or a float. A copy of a text is a text of its own.
///
/// Another tag than the four below can be set, for a value that this library doesn't read; such a
/// value holds nothing.
class VELMORA_EXPORT ParameterValue {
public:
    /// The tags of a value that holds nothing, a text, an integer, a float.
    static constexpr int EmptyTag = 0;
    static constexpr int StringTag = 1;
    static constexpr int IntTag = 2;
    static constexpr int FloatTag = 5;

    /// Empty.
    ParameterValue() noexcept = default;

    /// Of tag 2, and of tag 5.
    ParameterValue(int in_iValue) noexcept;
    ParameterValue(float in_fValue) noexcept;
    /// A null text is the empty text.
    ParameterValue(const char* in_szText);

    /// The same tag and value. Moving leaves the other value empty.
    ParameterValue(const ParameterValue& in_rhs);
    ParameterValue(ParameterValue&& inout_rhs) noexcept;
    ~ParameterValue();

    /// As the constructors; a text that was held before is released.
    ParameterValue& operator=(const ParameterValue& in_rhs);
    ParameterValue& operator=(ParameterValue&& inout_rhs) noexcept;

    /// The kind of the value.
    int getTag() const noexcept { return m_iTag; }

    /// Whether the tag is 0.
    bool isEmpty() const noexcept { return m_iTag == EmptyTag; }

    /// Gives the value another tag and a payload of zero; a held text is released in every case.
    void setTag(int in_iTag);

    /// Stores a copy of a text in a value of tag 1, up to `in_pEnd` or, if that is null, up to its
    /// terminating zero. Another tag is a programming error, without effect.
    void initUnionFromString(const char* in_szText, const char* in_pEnd);

    /// Releases a held text; the value then holds the empty one.
    void deallocateString() noexcept;

    /// The text of tag 1, the empty text for another tag. It lives as long as the value is
    /// unchanged.
    const char* getString() const noexcept;

    /// The integer of tag 2, 0 for another tag.
    operator int() const noexcept;

    /// The float of tag 5, 0 for another tag.
    operator float() const noexcept;

    /// Equal if the tags and what they hold are; a NaN is unlike itself.
    friend VELMORA_EXPORT bool operator==(const ParameterValue& in_a,
                                          const ParameterValue& in_b) noexcept;
    friend VELMORA_EXPORT bool operator!=(const ParameterValue& in_a,
                                          const ParameterValue& in_b) noexcept;

private:
    union Payload {
        char* m_szText;
        int m_iValue;
        float m_fValue;
    };

    int m_iTag = EmptyTag;
    Payload m_payload{nullptr};
};

/// Writes the text, the integer or the float in the stream's format, and nothing for another tag.
VELMORA_EXPORT std::ostream& operator<<(std::ostream& inout_stream, const ParameterValue& in_value);

} // namespace Velmora
