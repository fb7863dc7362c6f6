#include "GoertzelReference.h"

namespace Velmora::Benchmarks {

double computeGoertzel(double in_dCoefficient, const double* in_pX, std::size_t in_uiCount) {
    double dLast = 0.0;
    double dLastButOne = 0.0;
    for (std::size_t i = 0; i != in_uiCount; ++i) {
        const double dNext = in_pX[i] + in_dCoefficient * dLast - dLastButOne;
        dLastButOne = dLast;
        dLast = dNext;
    }
    return dLast * dLast + dLastButOne * dLastButOne - in_dCoefficient * dLast * dLastButOne;
}

} // namespace Velmora::Benchmarks
