#pragma once

#include <cstddef>
#include <memory>

namespace Vxpr {

/// The power spectrum of a frame, under a Hann window.
///
/// A frame of N samples gives N/2 + 1 values for the frequencies k * rate / N. A value is a mean
/// power: with w the window w[n] = (1 - cos(2 pi n / N)) / 2, W its sum and X the Fourier transform
/// of the frame times w, it is |X[k]|^2 / W^2, and twice that for the frequencies that stand for a
/// negative one as well, which are all but 0 and half the sample rate. So a sinusoid of amplitude A
/// on one of the frequencies shows as A^2 / 2 there, whatever the size of the frame. A frame of one
/// sample has the window [1].
class PowerSpectrum {
public:
    explicit PowerSpectrum(std::size_t in_uiFrame);
    ~PowerSpectrum();
    PowerSpectrum(const PowerSpectrum&) = delete;
    PowerSpectrum& operator=(const PowerSpectrum&) = delete;

    std::size_t getSize() const;

    /// Reads a frame and writes getSize() values.
    void compute(const double* in_pFrame, double* out_pPower);

private:
    struct Plan;
    std::unique_ptr<Plan> m_pPlan;
};

} // namespace Vxpr
