#pragma once

namespace Velmora::Xpr {

/// What each copy of the library does while it is loaded: declares the parameters, unless another
/// copy has done so.
void declareParametersAtLoad();

} // namespace Velmora::Xpr
