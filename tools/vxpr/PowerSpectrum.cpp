#include "PowerSpectrum.h"

#include <kissfft/kissfft.hh>

#include <cmath>
#include <complex>
#include <vector>

namespace Vxpr {

struct PowerSpectrum::Plan {
    explicit Plan(std::size_t in_uiFrame)
        : m_uiFrame(in_uiFrame),
          m_bEven(in_uiFrame % 2 == 0),
          m_Transform(m_bEven ? in_uiFrame / 2 : in_uiFrame, false),
          m_vWindow(in_uiFrame),
          m_vWindowed(in_uiFrame),
          m_vComplex(m_bEven ? 0 : in_uiFrame),
          m_vTransformed(m_bEven ? in_uiFrame / 2 : in_uiFrame) {
        const double dStep = 2.0 * std::acos(-1.0) / static_cast<double>(in_uiFrame);
        double dSum = 0.0;
        for (std::size_t uiSample = 0; uiSample < in_uiFrame; ++uiSample) {
            m_vWindow[uiSample] =
                in_uiFrame == 1 ? 1.0
                                : 0.5 * (1.0 - std::cos(dStep * static_cast<double>(uiSample)));
            dSum += m_vWindow[uiSample];
        }
        m_dScale = 1.0 / (dSum * dSum);
    }

    std::size_t m_uiFrame;
    bool m_bEven;
    kissfft<double> m_Transform; ///< of the real frame packed in pairs if its size is even
    std::vector<double> m_vWindow;
    double m_dScale = 0.0;
    std::vector<double> m_vWindowed;
    std::vector<std::complex<double>> m_vComplex;
    std::vector<std::complex<double>> m_vTransformed;
};

PowerSpectrum::PowerSpectrum(std::size_t in_uiFrame) : m_pPlan(new Plan(in_uiFrame)) {}

PowerSpectrum::~PowerSpectrum() = default;

std::size_t PowerSpectrum::getSize() const {
    return m_pPlan->m_uiFrame / 2 + 1;
}

void PowerSpectrum::compute(const double* in_pFrame, double* out_pPower) {
    Plan& plan = *m_pPlan;
    for (std::size_t uiSample = 0; uiSample < plan.m_uiFrame; ++uiSample) {
        plan.m_vWindowed[uiSample] = in_pFrame[uiSample] * plan.m_vWindow[uiSample];
    }
    const std::complex<double>* pBins = plan.m_vTransformed.data();
    const std::size_t uiLast = plan.m_uiFrame / 2;
    double dFirst = 0.0;
    if (plan.m_bEven) {
        plan.m_Transform.transform_real(plan.m_vWindowed.data(), plan.m_vTransformed.data());
        // The transform of a real frame keeps the last value in the place of the first one's
        // imaginary part, which is zero.
        dFirst = pBins[0].real();
        out_pPower[uiLast] = pBins[0].imag() * pBins[0].imag() * plan.m_dScale;
    } else {
        for (std::size_t uiSample = 0; uiSample < plan.m_uiFrame; ++uiSample) {
            plan.m_vComplex[uiSample] = plan.m_vWindowed[uiSample];
        }
        plan.m_Transform.transform(plan.m_vComplex.data(), plan.m_vTransformed.data());
        dFirst = pBins[0].real();
    }
    out_pPower[0] = dFirst * dFirst * plan.m_dScale;
    const std::size_t uiEnd = plan.m_bEven ? uiLast : uiLast + 1;
    for (std::size_t uiBin = 1; uiBin < uiEnd; ++uiBin) {
        out_pPower[uiBin] = 2.0 * std::norm(pBins[uiBin]) * plan.m_dScale;
    }
}

} // namespace Vxpr
