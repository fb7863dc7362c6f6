#include <velmora/math/xpr/Optimizer.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <log4cplus/logger.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/UUID.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include "ExpressionComplexity.h"
#include "GraphWalk.h"
#include "OptimizerDictionnary.h"
#include "RootsAhead.h"
#include "UncheckedLinks.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Optimizer");

namespace {

using Data = CountedObjPtr<OptimizerExpressionData>;
using InstanceList = OptimizerDictionnary::FunctionInstanceList;

/// The instances of one key.
struct Instances {
    const InstanceList::iterator* begin() const { return m_pBegin; }
    const InstanceList::iterator* end() const { return m_pEnd; }
    std::size_t size() const { return static_cast<std::size_t>(m_pEnd - m_pBegin); }

    const InstanceList::iterator* m_pBegin;
    const InstanceList::iterator* m_pEnd;
};

/// The opening of both levels: the output takes the entries over, and the index is filled.
bool open(const Dictionnary& in_Dictionnary, Dictionnary& out_OptimizedExpressions,
          OptimizerDictionnary& out_Index) {
    out_OptimizedExpressions = in_Dictionnary;
    VELMORA_LOG_DEBUG(fileLogger(), "populating optimizer dictionnary...");
    if (!out_Index.initialize(out_OptimizedExpressions)) {
        VELMORA_ASSERT_FAIL("dictOptimizer.initialize( out_OptimizedExpressions )");
        return false;
    }
    VELMORA_LOG_DEBUG(fileLogger(), "optimizer dictionnary before optimize:" << out_Index.dump());
    return true;
}

/// Would anybody see that the index is made?
bool isIndexLogged() {
    const auto isLogged = [](const char* in_szLogger) {
        return log4cplus::Logger::getInstance(in_szLogger).isEnabledFor(log4cplus::DEBUG_LOG_LEVEL);
    };
    constexpr std::array Loggers{"quillmark.math.xpr.Optimizer",
                                 "quillmark.math.xpr.Optimizer.Dictionnary",
                                 "quillmark.math.xpr.OptimizerExpressionData",
                                 "quillmark.math.xpr.OptimizerExpressionDataSpecializer"};
    return std::any_of(Loggers.begin(), Loggers.end(), isLogged);
}

/// The instances of a list by key, the groups in the order of their first instance. Serves one list
/// after the other.
class InstanceGroups {
public:
    void assign(InstanceList& inout_Instances) {
        // Comparing two instances builds their keys, which their readers see in the log.
        const bool bWithText = areKeysLogged() && inout_Instances.size() > 1;
        ++m_uiList;
        m_vGroupOf.clear();
        m_vEnds.clear();
        for (const Data& pData : inout_Instances) {
            if (bWithText) {
                pData->key();
            }
            m_vGroupOf.push_back(groupOf(pData->getKeyNumber()));
            ++m_vEnds[m_vGroupOf.back()];
        }
        // From the sizes of the groups to where each begins, and, once they are filled, ends.
        std::size_t uiBegin = 0;
        for (std::size_t& uiEnd : m_vEnds) {
            uiBegin += std::exchange(uiEnd, uiBegin);
        }
        m_vInstances.resize(inout_Instances.size());
        auto ite = inout_Instances.begin();
        for (const std::size_t uiGroup : m_vGroupOf) {
            m_vInstances[m_vEnds[uiGroup]++] = ite++;
        }
    }

    std::size_t size() const { return m_vEnds.size(); }

    Instances operator[](std::size_t in_uiGroup) const {
        const std::size_t uiBegin = in_uiGroup == 0 ? 0 : m_vEnds[in_uiGroup - 1];
        return {m_vInstances.data() + uiBegin, m_vInstances.data() + m_vEnds[in_uiGroup]};
    }

private:
    struct Known {
        std::size_t m_uiList = 0;
        std::size_t m_uiGroup = 0;
    };

    std::size_t groupOf(OptimizerKeyTable::Number in_uiKey) {
        if (in_uiKey >= m_vKnown.size()) {
            m_vKnown.resize(std::max<std::size_t>(in_uiKey + 1, 2 * m_vKnown.size()));
        }
        Known& known = m_vKnown[in_uiKey];
        if (known.m_uiList != m_uiList) {
            known = {m_uiList, m_vEnds.size()};
            m_vEnds.push_back(0);
        }
        return known.m_uiGroup;
    }

    std::size_t m_uiList = 0;
    /// By the number of the key; good for the list that it was noted for.
    std::vector<Known> m_vKnown;
    std::vector<std::size_t> m_vGroupOf;
    std::vector<std::size_t> m_vEnds;
    std::vector<InstanceList::iterator> m_vInstances;
};

/// Puts a node in the place of another below all of its parents, none of which stands below it.
void replaceEverywhere(ExpressionBaseImpl& inout_Old, const Handle<ExpressionBaseImpl>& in_pNew,
                       const OptimizerDictionnary& in_Index) {
    const UncheckedLinks unchecked(*in_pNew);
    const auto lParents = inout_Old.getParentEnd() - inout_Old.getParentBegin();
    constexpr std::ptrdiff_t MovedByOneCall = 2;
    if (in_Index.hasOneVisitEach() && lParents > MovedByOneCall) {
        // One call of `replace` passes over every second parent of more, and there is one entry
        // only where otherwise each path has its own.
        const std::vector<LimitedObjPtr<ExpressionBaseImpl>> vParents(
            inout_Old.getParentBegin(), inout_Old.getParentEnd() - MovedByOneCall);
        for (const auto& pParent : vParents) {
            pParent->replaceChild(inout_Old, in_pNew, true);
        }
    }
    inout_Old.replace(in_pNew);
}

/// Merges the instances of one key into the first of those with the highest complexity.
class Merger {
public:
    explicit Merger(OptimizerDictionnary& inout_Index) : m_Index(inout_Index) {}

    void merge(const Instances& in_Similar) {
        if (in_Similar.size() == 1) {
            return;
        }
        // Who reads the log may have walked over the graph since the last counts.
        ExpressionComplexity fresh;
        m_pComplexity = detail::isSiteEnabled(fileLogger(), log4cplus::DEBUG_LOG_LEVEL)
                            ? &fresh
                            : &m_Index.getComplexity();
        const Data pBest = findBest(in_Similar);
        for (const auto& iteSimilar : in_Similar) {
            const Data& pOther = *iteSimilar;
            if (pOther->getExpression()->getId() != pBest->getExpression()->getId()) {
                replace(*pOther->getExpression(), pBest->getExpression());
            }
        }
    }

private:
    Data findBest(const Instances& in_Similar) {
        Data pBest = **in_Similar.begin();
        for (const auto& iteSimilar : in_Similar) {
            const Data& pOther = *iteSimilar;
            // Entries of one expression need no count.
            if (pOther->getExpression()->getId() != pBest->getExpression()->getId() &&
                m_pComplexity->of(*pBest->getExpression()) <
                    m_pComplexity->of(*pOther->getExpression())) {
                pBest = pOther;
            }
        }
        return pBest;
    }

    void replace(ExpressionBaseImpl& inout_Other, const Handle<ExpressionBaseImpl>& in_pBest) {
        if (m_pComplexity->of(inout_Other) != m_pComplexity->of(*in_pBest)) {
            m_pComplexity->forgetAbove(inout_Other);
        }
        // No node comes below itself: the key of what stands above one is longer than its own.
        replaceEverywhere(inout_Other, in_pBest, m_Index);
    }

    OptimizerDictionnary& m_Index;
    /// Good for one group of instances.
    ExpressionComplexity* m_pComplexity = nullptr;
};

} // namespace

Optimizer::Optimizer() {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::Optimizer");
}

Optimizer::Optimizer(const Optimizer&) : Object(), Cloneable() {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::Optimizer copy");
}

Optimizer::~Optimizer() {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::~Optimizer");
}

Cloneable* Optimizer::clone() const {
    return new Optimizer(*this);
}

bool Optimizer::configure(const ROConfiguration&) {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::configure");
    return true;
}

bool Optimizer::run(const Dictionnary& in_Dictionnary, Dictionnary& out_OptimizedExpressions) {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::run");
    bool bIndexMatters = true;
    if (!optimizeLevel1(in_Dictionnary, out_OptimizedExpressions, bIndexMatters) ||
        !optimizeLevel2(out_OptimizedExpressions, out_OptimizedExpressions, bIndexMatters)) {
        return false;
    }
    sealExpressions(out_OptimizedExpressions);
    return true;
}

bool Optimizer::optimizeLevel1(const Dictionnary& in_Dictionnary,
                               Dictionnary& out_OptimizedExpressions, bool& out_bIndexMatters) {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::optimizeLevel1");
    OptimizerDictionnary dictOptimizer;
    if (!open(in_Dictionnary, out_OptimizedExpressions, dictOptimizer)) {
        return false;
    }
    out_bIndexMatters = dictOptimizer.hasFunction(OperatorConcatenate::getNameStatic()) ||
                        dictOptimizer.hasUnknown() || isIndexLogged();
    Merger merger(dictOptimizer);
    InstanceGroups groups;
    for (auto ite = dictOptimizer.getFunctionBegin(); ite != dictOptimizer.getFunctionEnd();
         ++ite) {
        InstanceList& instances = *ite->second;
        groups.assign(instances);
        for (std::size_t uiGroup = 0; uiGroup != groups.size(); ++uiGroup) {
            const Instances similar = groups[uiGroup];
            VELMORA_LOG_DEBUG(fileLogger(), "found " << similar.size()
                                                     << " similar instance(s) of the function "
                                                     << ite->first);
            merger.merge(similar);
            for (InstanceList::iterator iteInstance : similar) {
                dictOptimizer.eraseFunctionInstance(iteInstance, instances);
            }
        }
    }
    VELMORA_LOG_DEBUG(fileLogger(),
                      "optimizer dictionnary after optimize level 1" << dictOptimizer.dump());
    return true;
}

bool Optimizer::optimizeLevel2(const Dictionnary& in_Dictionnary,
                               Dictionnary& out_OptimizedExpressions, bool in_bIndexMatters) {
    VELMORA_TRACE_SCOPE(fileLogger(), "Optimizer::optimizeLevel2");
    if (!in_bIndexMatters) {
        out_OptimizedExpressions = in_Dictionnary;
        return true;
    }
    OptimizerDictionnary dictOptimizer;
    if (!open(in_Dictionnary, out_OptimizedExpressions, dictOptimizer)) {
        return false;
    }
    for (auto ite = dictOptimizer.getFunctionBegin(); ite != dictOptimizer.getFunctionEnd();
         ++ite) {
        if (ite->first != OperatorConcatenate::getNameStatic()) {
            continue;
        }
        for (const auto& pData : *ite->second) {
            Handle<OperatorConcatenate> pInstance(pData->getExpression());
            if (pInstance.isNull()) {
                VELMORA_ASSERT_FAIL("!pInstance.isNull()");
                return false;
            }
            regroupSubConcatenateOp(pInstance, dictOptimizer);
        }
    }
    VELMORA_LOG_DEBUG(fileLogger(),
                      "optimizer dictionnary after optimize level 2" << dictOptimizer.dump());
    return true;
}

Handle<OperatorConcatenate>
Optimizer::asOperatorConcatenate(Handle<VariableImpl> in_pVariable) const {
    const Handle<ExpressionBaseImpl>& pValue = in_pVariable->getValue();
    const Handle<OperatorConcatenate> pOperator(pValue);
    if (!pOperator.isNull()) {
        return pOperator;
    }
    const Handle<ScriptFunctionImpl> pFunction(pValue);
    return pFunction.isNull() ? Handle<OperatorConcatenate>()
                              : Handle<OperatorConcatenate>(pFunction->getImplementation());
}

bool Optimizer::checkIfConcatenateChild(Handle<FunctionBaseImpl> in_pFunction) const {
    for (auto ite = in_pFunction->getArgumentBegin(); ite != in_pFunction->getArgumentEnd();
         ++ite) {
        const Function& function = *in_pFunction;
        const Handle<VariableImpl> pVariable(function.getArgument((*ite).first.c_str()));
        if (!pVariable.isNull() && !asOperatorConcatenate(pVariable).isNull()) {
            return true;
        }
    }
    return false;
}

void Optimizer::regroupSubConcatenateOp(Handle<OperatorConcatenate>& inout_pOperator,
                                        const OptimizerDictionnary& in_Index) {
    const auto move = [](FunctionBaseImpl& inout_Operator, const std::string& in_strName,
                         const VariableImpl& in_Variable) {
        inout_Operator.addArgument(in_strName.c_str());
        const Function& function = inout_Operator;
        function.getArgument(in_strName.c_str())
            ->setValue(Handle<Expression>(in_Variable.getValue()));
    };
    while (checkIfConcatenateChild(inout_pOperator)) {
        const Handle<OperatorConcatenate> pNewOp(new OperatorConcatenate);
        for (auto ite = inout_pOperator->getArgumentBegin();
             ite != inout_pOperator->getArgumentEnd(); ++ite) {
            const Handle<VariableImpl> pChild = inout_pOperator->FunctionBaseImpl::getArgument(ite);
            const Handle<OperatorConcatenate> pSub = asOperatorConcatenate(pChild);
            if (pSub.isNull()) {
                move(*pNewOp, (*ite).first, *pChild);
                continue;
            }
            for (auto iteSub = pSub->getArgumentBegin(); iteSub != pSub->getArgumentEnd();
                 ++iteSub) {
                move(*pNewOp, UUID(), *pSub->FunctionBaseImpl::getArgument(iteSub));
            }
        }
        replaceEverywhere(*inout_pOperator, pNewOp, in_Index);
        inout_pOperator = pNewOp;
    }
}

void Optimizer::sealExpressions(Dictionnary& inout_Dictionnary) {
    VELMORA_TRACE_SCOPE(fileLogger(), "sealExpression");
    GraphWalk::seal(rootsOf(inout_Dictionnary));
}

} // namespace Velmora::Math::Xpr
