#pragma once

#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>

#include <cstddef>

namespace Velmora::Math {

struct Correlation;
struct ToneTables;

/// Tells how much of a frame is a sinusoid of one frequency.
///
/// The result is the square root of the share of the frame's energy that lies in the plane spanned
/// by the sine and the cosine of the frequency: sqrt(|P x|^2 / |x|^2), where P x is the
/// least-squares fit of a cos + b sin to the frame x. It is 1 for any sinusoid of that frequency,
/// whatever its amplitude and phase and however many periods the frame holds, and never above 1.
/// Where sine and cosine span a line only (half the sample rate, a frame of one sample) the fit is
/// that to the line.
///
/// A copy carries the configuration. One thread at a time uses a correlator. The result has the
/// same bits on every processor.
// The copy that the compiler makes of the arrays has names of its own:
// NOLINTNEXTLINE(bugprone-reserved-identifier)
class VELMORA_EXPORT SinusCorrelator {
public:
    /// The sample rate and the frequency, both in hertz. Returns false, and keeps the configuration
    /// before, for a sample rate of 0 and for a frequency that isn't above 0 or lies above half the
    /// sample rate.
    bool configure(std::size_t in_uiSampleRate, double in_dFrequency);

    /// Computes the result for the frame [first, last), a number from 0 to 1 without a unit, 0 for
    /// silence and for an empty frame, NaN for a frame with a NaN or an infinity. Returns false,
    /// and leaves the output alone, before a configuration.
    ///
    /// Accurate to 1e-12 for frames of up to 65536 samples of any finite amplitude. Allocates only
    /// for a frame that is longer than those before.
    bool compute(const double* const& in_pFirst, const double* const& in_pLast,
                 double& out_dCorrelation);

    /// Computes the results of some correlators for one frame, each with the bits that `compute`
    /// gives it, in less time: the frame is read once for several tones. Returns false, and leaves
    /// the output alone, if one of them has no configuration.
    static bool computeTogether(SinusCorrelator* const* in_ppCorrelators,
                                std::size_t in_uiCorrelators, const double* in_pFirst,
                                const double* in_pLast, double* out_pCorrelations);

private:
    /// The cosine and the sine at the samples behind the middle of a frame, the middle one left
    /// out.
    struct Basis {
        DoubleVector m_vCosine;
        DoubleVector m_vSine;
    };

    void prepare_i(std::size_t in_uiCount);
    ToneTables tables_i(std::size_t in_uiCount);
    double shareOf_i(const Correlation& in_products) const;

    std::size_t m_uiSampleRate = 0;
    double m_dFrequency = 0.0;

    /// For frames of an even and of an odd number of samples; each serves all shorter frames too.
    Basis m_bases[2];

    /// The number of samples to which the scales belong: the reciprocal norms of cosine and sine
    /// over the frame, 0 for one that vanishes on it.
    std::size_t m_uiCount = 0;
    double m_dCosineScale = 0.0;
    double m_dSineScale = 0.0;
};

} // namespace Velmora::Math
