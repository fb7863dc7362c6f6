#pragma once

#include <memory_resource>
#include <unordered_map>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// Counts the nodes of expressions' trees, a shared node once for each path, in time that grows
/// with the number of nodes. The counts hold as long as the graph doesn't change.
class ExpressionComplexity {
public:
    /// The largest unsigned long stands for everything from there on.
    unsigned long of(const ExpressionBaseImpl& in_Expression);

    /// What stands above the expression has changed, or is about to.
    void forgetAbove(const ExpressionBaseImpl& in_Expression);

private:
    /// Who is here has everything below it here.
    std::pmr::monotonic_buffer_resource m_Memory;
    std::pmr::unordered_map<unsigned long, unsigned long> m_mapCounts{&m_Memory};
};

} // namespace Velmora::Math::Xpr
