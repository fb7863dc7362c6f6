#pragma once

#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vxpr {

/// How nodes of the engine are called in a picture, in the terms of the script language.

/// `+`, `x[i]`, `if`, or the given name with its parameters, such as `debounceOnOff<3, 12>`.
std::string describeOperation(const Velmora::Math::Xpr::FunctionBaseImpl& in_Function,
                              const std::string& in_strName);

/// The values of the function's parameters, in their order, such as `3`, `0.5` or `"a"`.
std::vector<std::string>
describeParameters(const Velmora::Math::Xpr::FunctionBaseImpl& in_Function);

/// What a script function takes, such as `<n>(x, y)`.
std::string describeArguments(const Velmora::Math::Xpr::FunctionBaseImpl& in_Function);

/// A number, or the first elements of a vector.
std::string describeValue(const Velmora::Math::DoubleVector& in_vValue);

/// What the reader does with one of its sources, counted from 0: its number among several, or what
/// it is to a condition or a slice.
std::string describeRole(const Velmora::Math::Xpr::ExpressionBaseImpl& in_Reader,
                         std::size_t in_uiSource, std::size_t in_uiSources);

} // namespace Vxpr
