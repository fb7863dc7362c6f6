#include "Sinusoid.h"

#include <algorithm>
#include <cmath>

namespace Velmora::Math {

namespace {

constexpr double pi = 0x1.921fb54442d18p+1;

// Taylor series from the last term that counts; angles lie within pi / 4, or, far out in frames of
// more than 2^25 samples, within pi / 2.
constexpr int seriesTerms = 10;

double cosineOf(double in_dAngle) {
    const double square = in_dAngle * in_dAngle;
    double sum = 1.0;
    for (int i = seriesTerms; i != 0; --i) {
        sum = 1.0 - square / static_cast<double>((2 * i - 1) * (2 * i)) * sum;
    }
    return sum;
}

double sineOf(double in_dAngle) {
    const double square = in_dAngle * in_dAngle;
    double sum = 1.0;
    for (int i = seriesTerms; i != 0; --i) {
        sum = 1.0 - square / static_cast<double>((2 * i) * (2 * i + 1)) * sum;
    }
    return in_dAngle * sum;
}

} // namespace

Sinusoid::Sinusoid(std::size_t in_uiSampleRate, double in_dFrequency)
    : m_dSampleRate(static_cast<double>(in_uiSampleRate)) {
    const double frequency = std::max(in_dFrequency, m_dSampleRate * 0x1p-64);
    // Each half has 26 bits, so that its product with a place in the frame is exact.
    const double spread = frequency * 134217729.0;
    m_dFrequencyHigh = spread - (spread - frequency);
    m_dFrequencyLow = frequency - m_dFrequencyHigh;
}

SinusoidValue Sinusoid::at(std::size_t in_uiHalfSamples) const {
    const auto halfSamples = static_cast<double>(in_uiHalfSamples);
    const double quarterTurn = 0.5 * m_dSampleRate;
    int quartersHigh = 0;
    int quartersLow = 0;
    const double high = std::remquo(m_dFrequencyHigh * halfSamples, quarterTurn, &quartersHigh);
    const double low = std::remquo(m_dFrequencyLow * halfSamples, quarterTurn, &quartersLow);
    const double angle = (high + low) / m_dSampleRate * pi;
    const double cosine = cosineOf(angle);
    const double sine = sineOf(angle);
    switch ((quartersHigh + quartersLow) & 3) {
    case 0:
        return {cosine, sine};
    case 1:
        return {-sine, cosine};
    case 2:
        return {-cosine, -sine};
    default:
        return {sine, -cosine};
    }
}

} // namespace Velmora::Math
