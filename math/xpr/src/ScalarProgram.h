#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AddressSet.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// What a set of nodes computes while all of them are scalars, with nothing left to look up.
///
/// A node of one element takes longer to find than to compute: what kind it is, where the nodes are
/// that it reads, whether those are one element still. As long as no scalar of the plan comes or
/// goes the answers are the same in each frame, and a program has them ready. It computes what
/// wasn't valid when it was made, and leaves the same numbers and flags as the nodes would.
///
/// A processor does several operations at a time if none needs another, and loses less time where
/// it can guess which comes next. So the operations are in the order of their distance from the
/// inputs, and those of one kind side by side.
///
/// Where a division fails the nodes are computed one by one. The recursion comes to all of them,
/// whatever fails, so that it makes no difference which of them have their new number by then.
///
/// The elements of the inputs are fetched first: an input has another vector in each frame. A host
/// may have set one of the results as an input; the nodes are computed one by one then.
class SealedPlan::ScalarProgram {
public:
    /// Makes room for the program of a set, so that nothing allocates later.
    void reserve(const SealedPlan& in_Plan, const Needs& in_Needs);

    /// Makes the program for what wasn't valid when the plan last remembered the set's flags, and
    /// has been computed since. If one of these values is no scalar the program isn't usable.
    void make(SealedPlan& inout_Plan, const Needs& in_Needs);

    /// Could it be made?
    bool isUsable() const { return m_bUsable; }

    /// Computes the set. False, and only inputs are valid, if an input isn't a scalar or is a
    /// result, or an operation fails.
    bool run(SealedPlan& inout_Plan, const Needs& in_Needs);

private:
    struct Operation {
        const double* m_pFirst;
        const double* m_pSecond;
        double* m_pResult;
        Kind m_eKind;
    };

    /// An input, where its element is put, and the vector that it was fetched from last.
    struct Fetch {
        const Step* m_pInput;
        double* m_pElement;
        const DoubleVector* m_pVector;
    };

    bool list(SealedPlan& inout_Plan, Index in_uiNode);
    void sort(SealedPlan& inout_Plan);
    void append(const SealedPlan& in_Plan, Index in_uiNode);
    void listFetches(const SealedPlan& in_Plan);
    void readInputs(SealedPlan& inout_Plan) const;
    bool fetchElements();
    std::size_t findChain() const;
    bool compute() const;
    bool computeChain() const;
    static bool computeOne(Kind in_eKind, double in_dFirst, double in_dSecond, double& out_dResult);
    bool isElement(const double* in_pSource) const;

    std::vector<Operation> m_vOperations;
    /// From where on each operation reads the result of the one ahead.
    std::size_t m_uiChain = 0;
    std::vector<Fetch> m_vFetches;
    /// The inputs and their elements.
    std::vector<Index> m_vInputs;
    std::vector<double> m_vElements;
    /// The inputs that are computed, and the nodes that pass on the vector of an input.
    std::vector<Index> m_vNew;
    std::vector<Index> m_vForwards;
    /// The vectors of the results.
    AddressSet m_Own;
    /// The nodes of the operations.
    std::vector<Index> m_vNodes;
    bool m_bUsable = false;
};

} // namespace Velmora::Math::Xpr
