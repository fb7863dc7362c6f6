#include "FailedTries.h"

#include <optional>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

namespace {

struct Tries {
    std::size_t m_uiEvaluations = 0; ///< one within the other
    std::size_t m_uiFailures = 0;
    /// Has been where a node failed beyond the limit.
    std::optional<GraphWalk> m_Walk;
};

thread_local Tries t_Tries;

} // namespace

FailedTries::Evaluation::Evaluation() {
    if (t_Tries.m_uiEvaluations++ == 0) {
        t_Tries.m_uiFailures = 0;
    }
}

FailedTries::Evaluation::~Evaluation() {
    if (--t_Tries.m_uiEvaluations == 0) {
        t_Tries.m_Walk.reset();
    }
}

void FailedTries::note(ExpressionBaseImpl& inout_Node) {
    if (++t_Tries.m_uiFailures <= MaxForEachReader) {
        return;
    }
    if (!t_Tries.m_Walk.has_value()) {
        t_Tries.m_Walk.emplace();
    }
    t_Tries.m_Walk->enter(inout_Node);
}

bool FailedTries::isUseless(const ExpressionBaseImpl& in_Node) {
    return t_Tries.m_Walk.has_value() && t_Tries.m_Walk->hasEntered(in_Node);
}

} // namespace Velmora::Math::Xpr
