#pragma once

#include <cstddef>
#include <optional>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

/// The failures of one evaluation, so that it comes to an end.
///
/// A node that fails isn't valid and is tried again for each of its readers. Where every definition
/// uses the one before twice, and none has a value yet, that would double with each of them. So
/// beyond a number of failures a node fails once more and isn't tried again: what it reads can't
/// have changed.
class FailedTries {
public:
    /// The failures up to which every reader has a try of its own.
    static constexpr std::size_t MaxForEachReader = 1024;

    /// The node has failed.
    void note(ExpressionBaseImpl& inout_Node) {
        if (++m_uiFailures <= MaxForEachReader) {
            return;
        }
        if (!m_Walk.has_value()) {
            m_Walk.emplace();
        }
        m_Walk->enter(inout_Node);
    }

    /// Would another try be one too many?
    bool isUseless(const ExpressionBaseImpl& in_Node) const {
        return m_Walk.has_value() && m_Walk->hasEntered(in_Node);
    }

    /// The evaluation is over.
    void forget() {
        m_uiFailures = 0;
        m_Walk.reset();
    }

private:
    std::size_t m_uiFailures = 0;
    /// Has been where a node failed beyond the limit.
    std::optional<GraphWalk> m_Walk;
};

} // namespace Velmora::Math::Xpr
