#pragma once

#include <list>
#include <memory_resource>
#include <string>
#include <unordered_map>
#include <vector>

#include <velmora/CountedObjPtr.h>
#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

#include "ExpressionComplexity.h"
#include "OptimizerExpressionDataImpl.h"

namespace Velmora::Math::Xpr {

/// The index of one optimisation pass: the data of every expression below a dictionary, by
/// identifier, and the instances of every function, by name.
///
/// An expression is visited once for each path that leads to it: the expression map keeps the data
/// of the first visit, the list of its name has an entry for each. Where the paths of the whole
/// dictionary are more than `ExpressionBaseImpl::MaxVisitsPerWalk`, each expression is visited
/// once; unless the keys are logged, the functions alone get data then, and the map stays empty.
class OptimizerDictionnary {
public:
    VELMORA_MEM_ACCOUNT("OptimizerDictionnary")

    using FunctionInstanceList = std::pmr::list<CountedObjPtr<OptimizerExpressionData>>;
    using FunctionMap = std::unordered_map<std::string, CountedObjPtr<FunctionInstanceList>>;

    /// The data by identifier.
    class ExpressionMap
        : public std::pmr::unordered_map<unsigned long, CountedObjPtr<OptimizerExpressionData>>,
          public virtual OptimizerExpressionDataContainer,
          public OptimizerExpressionDataContainerImpl<OptimizerExpressionDataImpl> {
    public:
        explicit ExpressionMap(
            std::pmr::memory_resource* in_pMemory = std::pmr::get_default_resource());

        CountedObjPtr<OptimizerExpressionData>& get(const Expression& in_Expression) override;
        CountedObjPtr<OptimizerExpressionData>&
        get(const ExpressionBaseImpl& in_Expression) override;
    };

    OptimizerDictionnary();
    virtual ~OptimizerDictionnary();
    OptimizerDictionnary(const OptimizerDictionnary&) = delete;
    OptimizerDictionnary& operator=(const OptimizerDictionnary&) = delete;

    /// Fills the index, once, and fixes every key.
    bool initialize(const Dictionnary& in_Dictionnary);

    FunctionMap::const_iterator getFunctionBegin() const { return m_mapFunctions.begin(); }
    FunctionMap::const_iterator getFunctionEnd() const { return m_mapFunctions.end(); }

    /// Is there an instance of the function?
    bool hasFunction(const char* in_szName) const { return m_mapFunctions.count(in_szName) != 0; }

    /// Is there an expression of none of the known kinds?
    bool hasUnknown() const { return m_bHasUnknown; }

    /// Has every expression one visit only, because there are too many paths?
    bool hasOneVisitEach() const { return m_bOneVisitEach; }

    /// What is known of the expressions' complexity, for the time in which nothing else walks over
    /// them.
    ExpressionComplexity& getComplexity() { return m_Complexity; }

    /// Takes an instance out of its list and returns the position behind it. The data stays valid.
    FunctionInstanceList::iterator
    eraseFunctionInstance(FunctionInstanceList::iterator& in_iteFunctionInstance,
                          FunctionInstanceList& inout_InstancesList);

    /// The table of functions as a text, for the log.
    std::string dump() const;

private:
    struct Walks;
    class SingleWalk;

    using Nodes = std::vector<ExpressionBaseImpl*>;

    /// Of a definition of two operators, for which room is made.
    static constexpr std::size_t ExpressionsPerRoot = 8;

    bool insertInTwoWalks(const Dictionnary& in_Dictionnary);
    bool insertInOneWalk(const Dictionnary& in_Dictionnary, const Nodes& in_vRoots);
    void releaseHeld();
    bool insertExpression(const Handle<ExpressionBaseImpl>& in_pExpression, Walks& inout_Walks);
    bool insertNode(const Handle<ExpressionBaseImpl>& in_pExpression);
    bool insertFunctionInstance(const FunctionBaseImpl& in_Function,
                                const CountedObjPtr<OptimizerExpressionData>& in_pData);
    void fixKeys(ExpressionBaseImpl& in_Root, Walks& inout_Walks);

    /// Entries come by the thousand and go together.
    std::pmr::monotonic_buffer_resource m_Memory;
    FunctionMap m_mapFunctions;
    ExpressionMap m_ExpressionMap{&m_Memory};
    bool m_bOneVisitEach = false;
    bool m_bHasUnknown = false;
    ExpressionComplexity m_Complexity;
    /// Data that isn't in the expression map.
    struct Held {
        CountedObjPtr<OptimizerExpressionData> m_pData;
        ExpressionBaseImpl* m_pNode;
    };
    std::vector<Held> m_vHeld;
};

} // namespace Velmora::Math::Xpr
