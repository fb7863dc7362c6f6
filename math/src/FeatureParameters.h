#pragma once

#include <velmora/ROConfiguration.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SignalFeature.h>

#include <cstddef>
#include <string>

namespace Velmora::Math {

/// The key of a feature's parameter: the text of the type in lower case, ".", and the name.
std::string featureParameterKey(SignalFeature::FeatureType in_type, const char* in_szName);

// Each of the functions below reads one parameter. A parameter that isn't defined leaves the output
// alone and is no failure; a value that can't be used leaves the output alone and gives false.

/// A number of values: an integer above 0.
bool readSize(const ROConfiguration& in_config, const std::string& in_strKey,
              std::size_t& inout_uiSize);

/// A number of consecutive frames: an integer not below 0. To wait for no frame is to wait for the
/// one that is there, so 0 is read as 1, which leaves 0 to the feature for "not configured".
bool readFrameCount(const ROConfiguration& in_config, const std::string& in_strKey,
                    std::size_t& inout_uiCount);

/// An integer that isn't zero for true, or one of the texts "true" and "false".
bool readFlag(const ROConfiguration& in_config, const std::string& in_strKey, bool& inout_bFlag);

/// An integer or a float, finite and above 0.
bool readRate(const ROConfiguration& in_config, const std::string& in_strKey, double& inout_dRate);

/// A number, or a text of numbers with any mix of blanks and commas between and around them.
bool readNumbers(const ROConfiguration& in_config, const std::string& in_strKey,
                 DoubleVector& inout_vNumbers);

} // namespace Velmora::Math
