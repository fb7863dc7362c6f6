#pragma once

#include <velmora/Export.h>

#include <utility>

namespace Velmora {

/// The part of `Fallible` that doesn't depend on the type.
class VELMORA_EXPORT FallibleBase {
public:
    /// Reports that the value was read while unset, as an assertion failure.
    static void assertUsedInInvalidStateErr(const char* in_szFile, int in_iLine);

    /// Whether the value is set.
    bool isValid() const noexcept { return m_bValid; }

protected:
    FallibleBase() = default;

    /// Set or unset from the start.
    explicit FallibleBase(bool in_bValid) : m_bValid(in_bValid) {}

    /// Whether the value is set.
    bool m_bValid = false;
};

/// An optional value whose read while unset is a programming error.
///
/// `T` is default constructible. Not thread-safe.
template <class T>
class VELMORA_EXPORT Fallible : public FallibleBase {
public:
    /// Unset.
    Fallible() = default;

    /// Set.
    Fallible(T in_value) : FallibleBase(true), m_value(std::move(in_value)) {}

    /// Sets the value.
    Fallible& operator=(T in_value) {
        m_value = std::move(in_value);
        m_bValid = true;
        return *this;
    }

    /// The value. While unset, every read fails one assertion and gives a default `T`.
    operator const T&() const {
        if (!m_bValid) {
            assertUsedInInvalidStateErr(__FILE__, __LINE__);
        }
        return m_value;
    }

    /// Back to unset.
    void invalidate() {
        m_bValid = false;
        m_value = T();
    }

private:
    T m_value = T();
};

} // namespace Velmora
