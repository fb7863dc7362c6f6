#pragma once

namespace Velmora::Math::Xpr {

/// While one lives, this thread links children without asking all ancestors whether that makes a
/// loop: for whoever knows that the new child stands above none of them. In a sum of thousands of
/// terms, each of which would ask the whole sum, asking takes minutes.
class UncheckedLinks {
public:
    /// Changes nothing if the caller doesn't know it after all.
    explicit UncheckedLinks(bool in_bKnown = true) : m_bFormer(s_bOn) {
        s_bOn = m_bFormer || in_bKnown;
    }
    ~UncheckedLinks() { s_bOn = m_bFormer; }
    UncheckedLinks(const UncheckedLinks&) = delete;
    UncheckedLinks& operator=(const UncheckedLinks&) = delete;

    static bool areOn() { return s_bOn; }

private:
    inline static thread_local bool s_bOn = false;

    bool m_bFormer;
};

} // namespace Velmora::Math::Xpr
