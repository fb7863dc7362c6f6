#pragma once

namespace Velmora::Math::Xpr {

class ExpressionBaseImpl;

/// While one lives, this thread links children without asking all ancestors whether that makes a
/// loop: for whoever knows that the new child stands above none of them. In a sum of thousands of
/// terms, each of which would ask the whole sum, asking takes minutes.
class UncheckedLinks {
public:
    /// Changes nothing if the caller doesn't know it after all.
    explicit UncheckedLinks(bool in_bKnown = true) : m_Former(s_State) {
        if (in_bKnown) {
            s_State = {true, nullptr};
        }
    }

    /// Knows it of that child alone: a host may link others on the way.
    explicit UncheckedLinks(const ExpressionBaseImpl& in_Child) : m_Former(s_State) {
        s_State = {true, &in_Child};
    }

    ~UncheckedLinks() { s_State = m_Former; }
    UncheckedLinks(const UncheckedLinks&) = delete;
    UncheckedLinks& operator=(const UncheckedLinks&) = delete;

    static bool areOnFor(const ExpressionBaseImpl& in_Child) {
        return s_State.m_bOn && (s_State.m_pOnly == nullptr || s_State.m_pOnly == &in_Child);
    }

private:
    friend class CheckedLinks;

    struct State {
        bool m_bOn;
        const ExpressionBaseImpl* m_pOnly; ///< any child if it is null
    };

    inline static thread_local State s_State{false, nullptr};

    State m_Former;
};

/// While one lives, links are checked again: for what a host's node does in the middle of that,
/// of which the caller knows nothing.
class CheckedLinks {
public:
    CheckedLinks() : m_Former(UncheckedLinks::s_State) { UncheckedLinks::s_State.m_bOn = false; }
    ~CheckedLinks() { UncheckedLinks::s_State = m_Former; }
    CheckedLinks(const CheckedLinks&) = delete;
    CheckedLinks& operator=(const CheckedLinks&) = delete;

private:
    UncheckedLinks::State m_Former;
};

} // namespace Velmora::Math::Xpr
