#pragma once

#include <cstddef>
#include <string>

namespace Vxpr {

/// A stretch of sound as the command line gives it: samples, as in `160`, or time, as in `20ms` and
/// `0.02s`.
class FrameSize {
public:
    /// Throws a Failure that names the option in_szOption unless in_strText is a size above zero.
    static FrameSize parse(const char* in_szOption, const std::string& in_strText);

    static FrameSize ofMilliseconds(const char* in_szOption, double in_dMilliseconds);

    /// The size in samples; a time is rounded to the nearest number of them. Throws a Failure if
    /// that is none, or more than in_uiMaximum.
    std::size_t getSamples(int in_iSampleRate, std::size_t in_uiMaximum) const;

    /// Whether the size is a time, and so has a meaning without a sample rate.
    bool isTime() const { return m_bTime; }

    /// The time in seconds; isTime() must hold.
    double getSeconds() const { return m_dValue; }

private:
    std::string m_strText;
    const char* m_szOption = "";
    double m_dValue = 0.0;
    bool m_bTime = false;
};

} // namespace Vxpr
