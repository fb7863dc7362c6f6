#pragma once

namespace Velmora::Math::Xpr {

/// While one lives, this thread puts children in the place of others without asking all ancestors
/// whether that makes a loop: for whoever knows that the new child stands above none of them.
class UncheckedLinks {
public:
    UncheckedLinks() : m_bFormer(s_bOn) { s_bOn = true; }
    ~UncheckedLinks() { s_bOn = m_bFormer; }
    UncheckedLinks(const UncheckedLinks&) = delete;
    UncheckedLinks& operator=(const UncheckedLinks&) = delete;

    static bool areOn() { return s_bOn; }

private:
    inline static thread_local bool s_bOn = false;

    bool m_bFormer;
};

} // namespace Velmora::Math::Xpr
