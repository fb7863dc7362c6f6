#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "OptimizerDictionnary.h"
#include "OptimizerExpressionKind.h"
#include "OptimizerKeyTable.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

/// Fills the index of a graph with too many paths to walk along each. Visits each expression once:
/// makes the data of a function on the way down, which orders the instances, and the keys on the
/// way up.
class OptimizerDictionnary::SingleWalk {
public:
    SingleWalk(OptimizerDictionnary& out_Index, const Nodes& in_vRoots);

    /// To be called for one root after the other.
    bool insertExpression(const Handle<ExpressionBaseImpl>& in_pRoot);

    /// Raises an assertion for each expression of an unknown kind. At the end: a host's handler may
    /// walk over the graph.
    void reportUnknown() const;

private:
    struct Place {
        ExpressionBaseImpl* m_pNode;
        const Handle<ExpressionBaseImpl>* m_pNextChild;
        OptimizerExpressionKind m_eKind;
        /// That of a function.
        OptimizerExpressionDataImpl* m_pData;
    };

    static constexpr OptimizerKeyTable::Number NoKey =
        std::numeric_limits<OptimizerKeyTable::Number>::max();

    bool enter(const Handle<ExpressionBaseImpl>& in_pExpression);
    void leave(const Place& in_Place);
    OptimizerKeyTable::Number makeKey(const Place& in_Place);
    OptimizerKeyTable::Number getKey(const ExpressionBaseImpl& in_Expression);

    OptimizerDictionnary& m_Index;
    OptimizerKeyTable& m_Keys;
    RootsAhead<AllLines> m_Ahead;
    std::size_t m_uiRoots = 0;
    std::size_t m_uiUnknown = 0;
    /// By the places that the complexity gives.
    OptimizerKeyTable::Numbers m_vKeys;
    std::vector<Place> m_vPath;
    OptimizerKeyTable::Numbers m_vChilds;
};

} // namespace Velmora::Math::Xpr
