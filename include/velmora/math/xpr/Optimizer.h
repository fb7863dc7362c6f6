#pragma once

#include <velmora/Cloneable.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/ROConfiguration.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>

namespace Velmora::Math::Xpr {

class OptimizerDictionnary;

/// Rewrites the graph of a dictionary in place, after linking and before evaluation, so that each
/// frame computes less: equal function instances are merged, concatenations that bear the name
/// "concat" are flattened, and the graph is sealed.
///
/// Two functions are equal if they have the same name, the same parameters, and equal children in
/// the same order. Nothing is commutative: `a + b` and `b + a` are two. A constant is equal to
/// itself only. Functions with memory are merged like all others: with the same inputs and the same
/// parameters they are in the same state on every frame.
///
/// Has no state between runs. Needs exclusive use of the graph while it runs.
class VELMORA_EXPORT Optimizer : public virtual Cloneable {
public:
    VELMORA_MEM_ACCOUNT("Optimizer")

    Optimizer();

    /// An optimizer keeps nothing between runs: a copy is a new one.
    Optimizer(const Optimizer& in_Other);
    Optimizer& operator=(const Optimizer&) = default;
    ~Optimizer() override;

    Cloneable* clone() const override;

    /// Reads nothing; true.
    bool configure(const ROConfiguration& in_Configuration);

    /// Makes `out` hold the entries of `in` and optimises their graph, which the two share. False,
    /// after an assertion, when the graph can't be indexed; what was merged by then stays merged.
    bool run(const Dictionnary& in_Dictionnary, Dictionnary& out_OptimizedExpressions);

    /// Seals the graph of every entry.
    void sealExpressions(Dictionnary& inout_Dictionnary);

private:
    /// `out_bIndexMatters` tells whether anybody would miss the index of the second level.
    bool optimizeLevel1(const Dictionnary& in_Dictionnary, Dictionnary& out_OptimizedExpressions,
                        bool& out_bIndexMatters);
    bool optimizeLevel2(const Dictionnary& in_Dictionnary, Dictionnary& out_OptimizedExpressions,
                        bool in_bIndexMatters);

    Handle<OperatorConcatenate> asOperatorConcatenate(Handle<VariableImpl> in_pVariable) const;
    bool checkIfConcatenateChild(Handle<FunctionBaseImpl> in_pFunction) const;
    void regroupSubConcatenateOp(Handle<OperatorConcatenate>& inout_pOperator,
                                 const OptimizerDictionnary& in_Index);
};

} // namespace Velmora::Math::Xpr
