#include "OptimizerDictionnary.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>
#include <vector>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

#include "Ahead.h"
#include "GraphWalk.h"
#include "IdSet.h"
#include "OptimizerDictionnarySingleWalk.h"
#include "OptimizerKeys.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Optimizer.Dictionnary");

namespace {

/// What a dump holds at most of keys where texts are shortened; those behind are written as "...".
constexpr std::size_t MaxDumpedKeys = std::size_t(1) << 24;

template <std::size_t Lines>
void fetchChilds(const ExpressionBaseImpl& in_Node) {
    for (const auto* p = in_Node.getChildBegin(); p != in_Node.getChildEnd(); ++p) {
        fetchAhead<Lines>(p->get());
    }
}

} // namespace

OptimizerDictionnary::ExpressionMap::ExpressionMap(std::pmr::memory_resource* in_pMemory)
    : std::pmr::unordered_map<unsigned long, CountedObjPtr<OptimizerExpressionData>>(in_pMemory) {}

CountedObjPtr<OptimizerExpressionData>&
OptimizerDictionnary::ExpressionMap::get(const Expression& in_Expression) {
    const auto* pXpr = dynamic_cast<const ExpressionBaseImpl*>(&in_Expression);
    if (pXpr == nullptr) {
        VELMORA_ASSERT_FAIL("pXpr != 0 && \"Unsupported Expression implementation\"");
        // No node bears this number.
        return (*this)[0];
    }
    return get(*pXpr);
}

CountedObjPtr<OptimizerExpressionData>&
OptimizerDictionnary::ExpressionMap::get(const ExpressionBaseImpl& in_Expression) {
    return (*this)[in_Expression.getId()];
}

/// Which expressions are in the index, and which of them have their key. Not marks at the nodes,
/// which who reads the log may overwrite by a walk of its own.
struct OptimizerDictionnary::Walks {
    static bool enter(IdSet& inout_Entered, const ExpressionBaseImpl& in_Expression) {
        const bool bNew = !inout_Entered.contains(in_Expression.getId());
        if (bNew) {
            inout_Entered.insert(in_Expression.getId());
        }
        return bNew;
    }

    IdSet m_inserted;
    IdSet m_keyed;
};

OptimizerDictionnary::OptimizerDictionnary() {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::OptimizerDictionnary");
}

OptimizerDictionnary::~OptimizerDictionnary() {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::~OptimizerDictionnary");
    m_mapFunctions.clear();
    releaseHeld();
}

/// Expressions that others have taken the place of go with their data, and are fetched before, one
/// level after the other: themselves, their arguments, and what loses these as parents.
void OptimizerDictionnary::releaseHeld() {
    constexpr std::size_t Ahead = 4;
    const auto getDying = [this](std::size_t in_ui) {
        const ExpressionBaseImpl* const pNode =
            in_ui < m_vHeld.size() ? m_vHeld[in_ui].m_pNode : nullptr;
        const bool bDying = pNode != nullptr && pNode->getParentBegin() == pNode->getParentEnd();
        return bDying ? pNode : nullptr;
    };
    for (std::size_t ui = 0; ui != m_vHeld.size(); ++ui) {
        if (ui + 4 * Ahead < m_vHeld.size()) {
            fetchAhead<2>(m_vHeld[ui + 4 * Ahead].m_pData.get());
            fetchAhead<WalkedLines>(m_vHeld[ui + 4 * Ahead].m_pNode);
        }
        if (const auto* const pDying = getDying(ui + 2 * Ahead)) {
            fetchAhead<AllLines>(pDying);
            fetchChilds<AllLines>(*pDying);
        }
        if (const auto* const pDying = getDying(ui + Ahead)) {
            for (const auto* p = pDying->getChildBegin(); p != pDying->getChildEnd(); ++p) {
                fetchChilds<WalkedLines>(**p);
            }
        }
        const CountedObjPtr<OptimizerExpressionData> pReleased(std::move(m_vHeld[ui].m_pData));
    }
}

bool OptimizerDictionnary::initialize(const Dictionnary& in_Dictionnary) {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::initialize");
    VELMORA_LOG_DEBUG(fileLogger(),
                      "initializing with the Dictionnary=" << in_Dictionnary.getName() << "...");
    const GraphWalk::Nodes vRoots(rootsOf(in_Dictionnary));
    m_bOneVisitEach = !GraphWalk::isShort(vRoots);
    if (m_bOneVisitEach) {
        m_ExpressionMap.getKeys().shortenTexts();
    }
    // Most of a large graph's memory would be that of its data. Who reads the log may walk over the
    // graph as well, in the middle of this, which the single walk wouldn't stand.
    const bool bWatched =
        areKeysLogged() || detail::isSiteEnabled(fileLogger(), log4cplus::DEBUG_LOG_LEVEL);
    const bool bInserted = m_bOneVisitEach && !bWatched ? insertInOneWalk(in_Dictionnary, vRoots)
                                                        : insertInTwoWalks(in_Dictionnary);
    if (!bInserted) {
        VELMORA_ASSERT_FAIL("insertExpression( (*iteExpr).second )");
        return false;
    }
    VELMORA_LOG_DEBUG(fileLogger(), "\nadded: \n"
                                        << m_mapFunctions.size() << " function(s)\n"
                                        << m_ExpressionMap.size() << " expression(s)\n");
    return true;
}

bool OptimizerDictionnary::insertInTwoWalks(const Dictionnary& in_Dictionnary) {
    m_ExpressionMap.reserve(in_Dictionnary.size() * ExpressionsPerRoot);
    Walks walks;
    for (const auto& entry : in_Dictionnary) {
        const Handle<ExpressionBaseImpl> pRoot(entry.second);
        if (!insertExpression(pRoot, walks)) {
            return false;
        }
        fixKeys(*pRoot, walks);
    }
    return true;
}

bool OptimizerDictionnary::insertInOneWalk(const Dictionnary& in_Dictionnary,
                                           const Nodes& in_vRoots) {
    SingleWalk walk(*this, in_vRoots);
    const bool bInserted =
        std::all_of(in_Dictionnary.begin(), in_Dictionnary.end(), [&](const auto& in_entry) {
            return walk.insertExpression(Handle<ExpressionBaseImpl>(in_entry.second));
        });
    walk.reportUnknown();
    return bInserted;
}

bool OptimizerDictionnary::insertExpression(const Handle<ExpressionBaseImpl>& in_pExpression,
                                            Walks& inout_Walks) {
    // Depth first along every path, in the order of the children, without recursion.
    std::vector<const Handle<ExpressionBaseImpl>*> vPending{&in_pExpression};
    while (!vPending.empty()) {
        const Handle<ExpressionBaseImpl>& pExpression = *vPending.back();
        vPending.pop_back();
        if (m_bOneVisitEach && !pExpression.isNull() &&
            !Walks::enter(inout_Walks.m_inserted, *pExpression)) {
            continue;
        }
        if (!insertNode(pExpression)) {
            if (pExpression != in_pExpression) {
                VELMORA_ASSERT_FAIL("insertExpression( (*iteExpr) )");
            }
            return false;
        }
        for (const auto* pChild = pExpression->getChildEnd();
             pChild != pExpression->getChildBegin();) {
            vPending.push_back(--pChild);
            // Below large roots it's some time until the others are looked at.
            __builtin_prefetch(pChild->get());
        }
    }
    return true;
}

bool OptimizerDictionnary::insertNode(const Handle<ExpressionBaseImpl>& in_pExpression) {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::insertExpression");
    const CountedObjPtr<OptimizerExpressionData> pData(
        in_pExpression.isNull() ? nullptr
                                : m_ExpressionMap.newData(m_ExpressionMap, in_pExpression));
    if (pData.isNull()) {
        VELMORA_ASSERT_FAIL("!pData.isNull()");
        return false;
    }
    CountedObjPtr<OptimizerExpressionData>& pFirst = m_ExpressionMap.get(*in_pExpression);
    if (pFirst.isNull()) {
        pFirst = pData;
    }
    const OptimizerExpressionKind eKind = m_ExpressionMap.getKinds().of(*in_pExpression);
    m_bHasUnknown = m_bHasUnknown || eKind == OptimizerExpressionKind::Unknown;
    if (eKind == OptimizerExpressionKind::Function &&
        !insertFunctionInstance(static_cast<const FunctionBaseImpl&>(*in_pExpression), pData)) {
        VELMORA_ASSERT_FAIL("insertFunctionInstance( pFunc, pData )");
        return false;
    }
    return true;
}

bool OptimizerDictionnary::insertFunctionInstance(
    const FunctionBaseImpl& in_Function, const CountedObjPtr<OptimizerExpressionData>& in_pData) {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::insertFunctionInstance");
    VELMORA_LOG_DEBUG(fileLogger(), "adding function: " << in_Function.getName());
    CountedObjPtr<FunctionInstanceList>& pList = m_mapFunctions[in_Function.getName()];
    if (pList.isNull()) {
        pList = new FunctionInstanceList(&m_Memory);
    }
    pList->push_back(in_pData);
    return true;
}

void OptimizerDictionnary::fixKeys(ExpressionBaseImpl& in_Root, Walks& inout_Walks) {
    struct Place {
        ExpressionBaseImpl* m_pNode;
        const Handle<ExpressionBaseImpl>* m_pNextChild;
    };
    // A key is made of those below it, which are logged ahead of it, the first child first.
    const bool bWithText = areKeysLogged();
    std::vector<Place> vPath;
    const auto enter = [&](ExpressionBaseImpl& in_Node) {
        if (Walks::enter(inout_Walks.m_keyed, in_Node)) {
            vPath.push_back({&in_Node, in_Node.getChildBegin()});
        }
    };
    enter(in_Root);
    while (!vPath.empty()) {
        Place& place = vPath.back();
        if (place.m_pNextChild != place.m_pNode->getChildEnd()) {
            enter(**place.m_pNextChild++);
            continue;
        }
        const CountedObjPtr<OptimizerExpressionData>& pData = m_ExpressionMap.get(*place.m_pNode);
        pData->getKeyNumber();
        if (bWithText) {
            pData->key();
        }
        vPath.pop_back();
    }
}

OptimizerDictionnary::FunctionInstanceList::iterator
OptimizerDictionnary::eraseFunctionInstance(FunctionInstanceList::iterator& in_iteFunctionInstance,
                                            FunctionInstanceList& inout_InstancesList) {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerDictionnary::eraseFunctionInstance");
    if (in_iteFunctionInstance == inout_InstancesList.end()) {
        VELMORA_ASSERT_FAIL("in_InstancesList.end() != in_iteFunctionInstance");
        return inout_InstancesList.end();
    }
    const CountedObjPtr<OptimizerExpressionData> pData(*in_iteFunctionInstance);
    if (!pData->isValid()) {
        pData->invalidate();
    }
    return inout_InstancesList.erase(in_iteFunctionInstance);
}

std::string OptimizerDictionnary::dump() const {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    std::size_t uiDumped = 0;
    stream << "\n<OptimizerDictionnary>\n";
    for (const auto& function : m_mapFunctions) {
        stream << "\t<function name=\"" << function.first << "\">\n";
        for (const auto& pData : *function.second) {
            stream << "\t\t<data valid=\"" << pData->isValid() << "\"xprID=\""
                   << pData->getExpression()->getId() << "\">";
            if (!m_bOneVisitEach || uiDumped < MaxDumpedKeys) {
                stream << pData->key();
                uiDumped += pData->key().size();
            } else {
                stream << "...";
            }
            stream << "</data>\n";
        }
        stream << "\t</function>\n";
    }
    stream << "</OptimizerDictionnary>\n";
    return stream.str();
}

} // namespace Velmora::Math::Xpr
