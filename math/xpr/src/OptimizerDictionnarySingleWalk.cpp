#include "OptimizerDictionnarySingleWalk.h"

#include <velmora/LogSite.h>

#include "GraphWalk.h"
#include "OptimizerKeys.h"
#include "WayBack.h"

namespace Velmora::Math::Xpr {

namespace {

/// Of a definition of two operators.
constexpr std::size_t KeysPerRoot = 2;
constexpr std::size_t PlacesOfADefinition = 3;

} // namespace

OptimizerDictionnary::SingleWalk::SingleWalk(OptimizerDictionnary& out_Index,
                                             const Nodes& in_vRoots)
    : m_Index(out_Index), m_Keys(out_Index.m_ExpressionMap.getKeys()), m_Ahead(in_vRoots) {
    m_Keys.reserve(in_vRoots.size() * KeysPerRoot);
    m_vKeys.reserve(in_vRoots.size() * ExpressionsPerRoot);
    m_Index.m_Complexity.reserve(in_vRoots.size() * ExpressionsPerRoot);
}

bool OptimizerDictionnary::SingleWalk::insertExpression(
    const Handle<ExpressionBaseImpl>& in_pRoot) {
    if (in_pRoot.isNull()) {
        VELMORA_ASSERT_FAIL("!pData.isNull()");
        return false;
    }
    m_Ahead.begin(m_uiRoots++);
    if (!enter(in_pRoot)) {
        return false;
    }
    while (!m_vPath.empty()) {
        Place& place = m_vPath.back();
        if (place.m_pNextChild == place.m_pNode->getChildEnd()) {
            leave(place);
            m_vPath.pop_back();
            fetchWayBack<AllLines>(m_vPath.size(), PlacesOfADefinition, [this](std::size_t in_ui) {
                const Place& later = m_vPath[in_ui];
                return PlaceOnPath{later.m_pNode, later.m_pNextChild, later.m_pNode->getChildEnd()};
            });
        } else if (!enter(*place.m_pNextChild++)) {
            VELMORA_ASSERT_FAIL("insertExpression( (*iteExpr) )");
            return false;
        }
    }
    return true;
}

void OptimizerDictionnary::SingleWalk::reportUnknown() const {
    for (std::size_t ui = 0; ui != m_uiUnknown; ++ui) {
        VELMORA_ASSERT_FAIL("false && \"Unknown expression type\"");
    }
}

bool OptimizerDictionnary::SingleWalk::enter(const Handle<ExpressionBaseImpl>& in_pExpression) {
    ExpressionBaseImpl& node = *in_pExpression;
    if (!m_Index.m_Complexity.enter(node)) {
        return true;
    }
    for (const auto* pChild = node.getChildBegin(); pChild != node.getChildEnd(); ++pChild) {
        __builtin_prefetch(pChild->get());
    }
    m_Ahead.enter(node);
    m_vKeys.push_back(NoKey);
    const OptimizerExpressionKind eKind = m_Index.m_ExpressionMap.getKinds().of(node);
    OptimizerExpressionDataImpl* pData = nullptr;
    if (eKind == OptimizerExpressionKind::Unknown) {
        m_Index.m_bHasUnknown = true;
        ++m_uiUnknown;
    } else if (eKind == OptimizerExpressionKind::Function) {
        pData = new OptimizerExpressionDataImpl(m_Index.m_ExpressionMap, in_pExpression, eKind);
        if (pData == nullptr) {
            VELMORA_ASSERT_FAIL("!pData.isNull()");
            return false;
        }
        const CountedObjPtr<OptimizerExpressionData> pHeld(pData);
        m_Index.m_vHeld.push_back({pHeld, &node});
        m_Index.insertFunctionInstance(static_cast<const FunctionBaseImpl&>(node), pHeld);
    }
    m_vPath.push_back({&node, node.getChildBegin(), eKind, pData});
    return true;
}

void OptimizerDictionnary::SingleWalk::leave(const Place& in_Place) {
    const OptimizerKeyTable::Number uiKey = makeKey(in_Place);
    m_vKeys[GraphWalk::getPlace(*in_Place.m_pNode)] = uiKey;
    m_Index.m_Complexity.leave(*in_Place.m_pNode);
    if (in_Place.m_pData != nullptr) {
        in_Place.m_pData->setKeyNumber(uiKey);
    }
}

OptimizerKeyTable::Number OptimizerDictionnary::SingleWalk::makeKey(const Place& in_Place) {
    ExpressionBaseImpl& node = *in_Place.m_pNode;
    if (in_Place.m_eKind == OptimizerExpressionKind::Variable) {
        const VariableImpl& variable = *node.asVariable();
        return variable.getValue().isNull() ? insertNameKey(m_Keys, variable)
                                            : getKey(*variable.getValue());
    }
    if (in_Place.m_eKind != OptimizerExpressionKind::Function) {
        return insertLeafKey(m_Keys, node);
    }
    m_vChilds.clear();
    for (const auto* pChild = node.getChildBegin(); pChild != node.getChildEnd(); ++pChild) {
        m_vChilds.push_back(getKey(**pChild));
    }
    return insertFunctionKey(m_Keys, static_cast<const FunctionBaseImpl&>(node), m_vChilds);
}

OptimizerKeyTable::Number
OptimizerDictionnary::SingleWalk::getKey(const ExpressionBaseImpl& in_Expression) {
    OptimizerKeyTable::Number uiKey = NoKey;
    if (m_Index.m_Complexity.hasEntered(in_Expression)) {
        uiKey = m_vKeys[GraphWalk::getPlace(in_Expression)];
    }
    // In a circle, which a host can make, a key can't be made of the one that it is part of.
    return uiKey == NoKey ? insertLeafKey(m_Keys, in_Expression) : uiKey;
}

} // namespace Velmora::Math::Xpr
