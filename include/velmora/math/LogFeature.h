#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// The natural logarithm of each element, with an error below one unit in the last place.
///
/// A zero of either sign counts as the smallest positive normal double, so that it gives about
/// -708.4 and stays finite; a negative element gives NaN, and a NaN propagates. The elements are
/// taken as numbers without a unit. An empty vector gives an empty one. Always returns true.
///
/// The same bits on every processor: the logarithm of the C library chooses its instructions at run
/// time and differs in the last place between processors.
class VELMORA_EXPORT LogFeature : public SignalFeature {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
};

} // namespace Velmora::Math
