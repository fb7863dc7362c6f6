#include <velmora/math/ScaledSum.h>

#include "Kernels.h"
#include "ScaledSumLoop.h"

namespace Velmora::Math {

ScaledSum::ScaledSum(const Form& in_Form) : m_pLoop(kernels().m_ScaledSums[indexOf(in_Form)]) {}

} // namespace Velmora::Math
