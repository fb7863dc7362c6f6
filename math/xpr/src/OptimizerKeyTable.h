#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Velmora::Math::Xpr {

/// The keys of expressions, by number: equal texts have equal numbers.
///
/// The text of a key holds the texts of the keys below it, and grows exponentially where an
/// expression is used twice on each level. So a key is kept as its head and the numbers of the keys
/// behind it. Digests and hashes are composed from those of the pieces, and a number is given when
/// a digest is first seen; the text is put together when somebody asks for it.
class OptimizerKeyTable {
public:
    using Number = std::uint32_t;
    using Numbers = std::vector<Number>;

    /// What `text` writes of a key at most once texts are shortened; a longer key ends in "...".
    /// Hashes and numbers are always those of the whole.
    static constexpr std::size_t MaxText = 65536;

    /// What it writes altogether before it goes over to `ShortText` for each key.
    static constexpr std::size_t MaxTexts = std::size_t(1) << 24;
    static constexpr std::size_t ShortText = 256;

    /// Makes room for about as many keys: a large table takes longer to move than to fill.
    void reserve(std::size_t in_uiKeys);

    /// The number of the key whose text is the head and then the texts of the other keys.
    Number insert(std::string in_strHead, const Numbers& in_vRest);

    /// The hash of the text: h = h * 5 + c for each character, as a signed char, over 64 bits.
    std::uint64_t hash(Number in_uiKey) const { return m_vKeys[in_uiKey].m_Digest.m_uiHash; }

    /// The whole text, unless texts are shortened.
    std::string text(Number in_uiKey) const;

    /// For a graph of so many paths that whole texts would be too long.
    void shortenTexts() { m_bShorten = true; }

private:
    /// What can be composed of a text from the same of its pieces.
    struct Digest {
        std::uint64_t m_uiHash = 0;
        std::uint64_t m_uiHashPower = 1; ///< 5 to the power of the length
        std::uint64_t m_uiCheck = 0;     ///< a second hash, modulo a prime
        std::uint64_t m_uiCheckPower = 1;
        std::uint64_t m_uiLength = 0; ///< modulo 2^64

        void append(const std::string& in_strText);
        void append(const Digest& in_Other);
        bool operator==(const Digest& in_Other) const;
    };

    struct Key {
        std::string m_strHead;
        /// Where its rest stands among those of all keys.
        std::size_t m_uiRest;
        std::size_t m_uiRestCount;
        Digest m_Digest;
    };

    class Reader;

    std::size_t getTextLimit() const;
    bool hasText(const Key& in_Key, Number in_uiOther) const;
    bool isEqual(const Key& in_Key, Number in_uiOther) const;
    Number* placeOf(const Key& in_Key);
    void setPlaceCount(std::size_t in_uiCount);

    static constexpr Number NoKey = std::numeric_limits<Number>::max();

    bool hasRest(const Key& in_Key, const Key& in_Other) const;

    std::vector<Key> m_vKeys;
    Numbers m_vRests;
    /// The numbers by digest: each stands at the first free place from the one that its digest
    /// gives. There are twice as many places as keys or more.
    std::vector<Number> m_vPlaces = std::vector<Number>(64, NoKey);
    bool m_bShorten = false;
    mutable std::size_t m_uiWritten = 0;
};

} // namespace Velmora::Math::Xpr
