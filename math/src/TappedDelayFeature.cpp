#include <velmora/math/TappedDelayFeature.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

#include "FeatureParameters.h"
#include "Room.h"

namespace Velmora::Math {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.TappedDelayFeature");

namespace {

/// The longest tape with padding, which gives all its places from the first frame on.
constexpr std::size_t MaxPaddedTapeSize = std::size_t(1) << 22;

} // namespace

TappedDelayFeature::TappedDelayFeature() {
    SlidingWindowFeature::reset();
}

Cloneable* TappedDelayFeature::clone() const {
    return new TappedDelayFeature(*this);
}

bool TappedDelayFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (m_windowSize == 0) {
        return false;
    }
    const std::size_t leading = m_bIncludeUsedTapeSizeInOutput ? 1 : 0;
    const std::size_t filled = m_window.size() + in_vInput.size();
    makeRoom(out_vResult,
             leading + (m_vPaddingValues.empty() ? std::min(filled, m_windowSize) : m_windowSize));
    slide_i(in_vInput);

    const std::size_t used = m_window.size();
    const std::size_t padded = m_vPaddingValues.empty() ? 0 : m_windowSize - used;
    out_vResult.resize(leading + padded + used);
    if (m_bIncludeUsedTapeSizeInOutput) {
        out_vResult[0] = static_cast<double>(used);
    }
    for (std::size_t i = 0, padding = 0; i < padded; ++i) {
        out_vResult[leading + i] = m_vPaddingValues[padding];
        padding = padding + 1 == m_vPaddingValues.size() ? 0 : padding + 1;
    }
    copyWindow_i(out_vResult.begin() + leading + padded);
    return true;
}

bool TappedDelayFeature::configure(const ROConfiguration& in_config) {
    std::size_t tapeSize = m_windowSize;
    bool includeUsedTapeSize = m_bIncludeUsedTapeSizeInOutput;
    DoubleVector paddingValues(m_vPaddingValues);
    if (!readSize(in_config, featureParameterKey(TappedDelay, "TapeSize"), tapeSize) ||
        !readFlag(in_config, featureParameterKey(TappedDelay, "IncludeUsedTapeSizeInOutput"),
                  includeUsedTapeSize) ||
        !readNumbers(in_config, featureParameterKey(TappedDelay, "PaddingValues"), paddingValues)) {
        return false;
    }
    if (!paddingValues.empty() && tapeSize > MaxPaddedTapeSize) {
        VELMORA_LOG_ERROR(fileLogger(), "a padded tape of "
                                            << tapeSize << " places is longer than the limit of "
                                            << MaxPaddedTapeSize);
        return false;
    }
    m_bIncludeUsedTapeSizeInOutput = includeUsedTapeSize;
    m_vPaddingValues = std::move(paddingValues);
    setWindowSize_i(tapeSize);
    return true;
}

} // namespace Velmora::Math
