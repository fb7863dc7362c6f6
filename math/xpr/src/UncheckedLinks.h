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
    friend class CheckedLinks;

    inline static thread_local bool s_bOn = false;

    bool m_bFormer;
};

/// While one lives, links are checked again: for what a host's node does in the middle of that,
/// of which the caller knows nothing.
class CheckedLinks {
public:
    CheckedLinks() : m_bFormer(UncheckedLinks::s_bOn) { UncheckedLinks::s_bOn = false; }
    ~CheckedLinks() { UncheckedLinks::s_bOn = m_bFormer; }
    CheckedLinks(const CheckedLinks&) = delete;
    CheckedLinks& operator=(const CheckedLinks&) = delete;

private:
    bool m_bFormer;
};

} // namespace Velmora::Math::Xpr
