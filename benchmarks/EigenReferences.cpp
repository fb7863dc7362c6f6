#include <Eigen/Core>

#include "References.h"

namespace Velmora::Benchmarks {

namespace {

using Frame = Eigen::Map<const Eigen::ArrayXd>;

Frame toFrame(const double* in_pX, std::size_t in_uiCount) {
    return Frame(in_pX, static_cast<Eigen::Index>(in_uiCount));
}

} // namespace

void computeElementsByEigen(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                            std::size_t in_uiCount, double* out_pY) {
    const auto x = toFrame(in_pX, in_uiCount);
    Eigen::Map<Eigen::ArrayXd> y(out_pY, static_cast<Eigen::Index>(in_uiCount));
    const auto difference = (in_Scalars.m_dA * x + in_Scalars.m_dB * x) - in_Scalars.m_dC * x;
    if (in_eEnding == Ending::Divide) {
        y = difference / in_Scalars.m_dD;
    } else {
        y = difference * in_Scalars.m_dD;
    }
}

void summarizeByEigen(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary) {
    const auto x = toFrame(in_pX, in_uiCount);
    out_Summary = {x.sum(), x.maxCoeff(), x.square().mean()};
}

} // namespace Velmora::Benchmarks
