#include "FrameSize.h"

#include "Failure.h"
#include "NumberText.h"

#include <cmath>
#include <optional>

namespace Vxpr {

namespace {

bool endsWith(const std::string& in_strText, const std::string& in_strEnd) {
    return in_strText.size() > in_strEnd.size() &&
           in_strText.compare(in_strText.size() - in_strEnd.size(), in_strEnd.size(), in_strEnd) ==
               0;
}

} // namespace

FrameSize FrameSize::parse(const char* in_szOption, const std::string& in_strText) {
    FrameSize size;
    size.m_szOption = in_szOption;
    size.m_strText = in_strText;
    double dUnit = 0.0;
    std::size_t uiUnitLength = 0;
    if (endsWith(in_strText, "ms")) {
        dUnit = 1000.0;
        uiUnitLength = 2;
    } else if (endsWith(in_strText, "s")) {
        dUnit = 1.0;
        uiUnitLength = 1;
    }
    size.m_bTime = uiUnitLength != 0;
    std::optional<double> value;
    const std::string strNumber = in_strText.substr(0, in_strText.size() - uiUnitLength);
    if (size.m_bTime) {
        value = readNumber(strNumber);
        size.m_dValue = value.value_or(0.0) / dUnit;
    } else if (const auto uiSamples = readWholeNumber(strNumber)) {
        value = static_cast<double>(*uiSamples);
        size.m_dValue = *value;
    }
    if (!value || !std::isfinite(*value) || *value <= 0.0) {
        throw Failure::ofCommandLine(std::string(in_szOption) + " " + in_strText +
                                     " can't be used: give a time above 0, such as 20ms or 0.5s, "
                                     "or a whole number of samples above 0, such as 160");
    }
    return size;
}

FrameSize FrameSize::ofMilliseconds(const char* in_szOption, double in_dMilliseconds) {
    return parse(in_szOption, toText(in_dMilliseconds) + "ms");
}

std::size_t FrameSize::getSamples(int in_iSampleRate, std::size_t in_uiMaximum) const {
    const double dSamples = m_bTime ? std::round(m_dValue * in_iSampleRate) : m_dValue;
    if (dSamples < 1.0 || dSamples > static_cast<double>(in_uiMaximum)) {
        throw Failure::ofCommandLine(std::string(m_szOption) + " " + m_strText + " comes to " +
                                     toText(dSamples) + " samples at " +
                                     std::to_string(in_iSampleRate) + " Hz: choose between 1 and " +
                                     std::to_string(in_uiMaximum) + " samples");
    }
    return static_cast<std::size_t>(dSamples);
}

} // namespace Vxpr
