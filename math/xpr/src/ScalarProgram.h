#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// What a set of nodes computes while all of them are scalars, with nothing left to look up.
///
/// A node of one element takes longer to find than to compute: what kind it is, where the nodes are
/// that it reads, whether those are one element still. As long as no scalar of the plan comes or
/// goes the answers are the same in each frame, and a program has them ready. It computes what
/// wasn't valid when it was made, and leaves the same numbers and flags as the nodes would.
///
/// The elements of the inputs are fetched first: an input has another vector in each frame.
class SealedPlan::ScalarProgram {
public:
    /// Makes room for the program of a set, so that nothing allocates later.
    void reserve(const SealedPlan& in_Plan, const Needs& in_Needs);

    /// Makes the program for what wasn't valid when the plan last remembered the set's flags, and
    /// has been computed since. If one of these values is no scalar the program isn't usable.
    void make(SealedPlan& inout_Plan, const Needs& in_Needs);

    /// Could it be made?
    bool isUsable() const { return m_bUsable; }

    /// Computes the set. False, and nothing but inputs was computed, if an input isn't a scalar.
    /// `out_uiFailed` is the node that failed, or `PassedOver`.
    bool run(SealedPlan& inout_Plan, const Needs& in_Needs, Index& out_uiFailed) const;

private:
    /// What is computed, and which side is the result of the operation ahead. Most are computed for
    /// the sake of the next, which needn't wait until memory has the number.
    enum class Code : std::uint8_t {
        Add,
        AddLast,
        AddToLast,
        Subtract,
        SubtractLast,
        SubtractFromLast,
        Multiply,
        MultiplyByLast,
        MultiplyLast,
        Divide,
        DivideByLast,
        DivideLast
    };

    struct Operation {
        const double* m_pFirst;
        const double* m_pSecond;
        double* m_pResult;
        Index m_uiNode;
        Code m_eCode;
    };

    /// An input, and where its element is put.
    struct Fetch {
        Index m_uiInput;
        double* m_pElement;
    };

    Code codeOf(Kind in_eKind, const double* in_pFirst, const double* in_pSecond) const;
    bool append(SealedPlan& inout_Plan, Index in_uiNode);
    void listFetches(const SealedPlan& in_Plan);
    bool fetchInputs(SealedPlan& inout_Plan) const;
    const Operation* compute() const;
    bool isElement(const double* in_pSource) const;

    std::vector<Operation> m_vOperations;
    std::vector<Fetch> m_vFetches;
    /// The inputs and their elements.
    std::vector<Index> m_vInputs;
    std::vector<double> m_vElements;
    /// Nodes that pass on the vector of an input.
    std::vector<Index> m_vForwards;
    bool m_bUsable = false;
};

} // namespace Velmora::Math::Xpr
