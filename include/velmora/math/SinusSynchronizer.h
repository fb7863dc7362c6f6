#pragma once

#include <velmora/Export.h>
#include <velmora/math/SinusCorrelator.h>

namespace Velmora::Math {

/// A SinusCorrelator under the name by which detectors of tones hold theirs; it adds nothing.
class VELMORA_EXPORT SinusSynchronizer : public SinusCorrelator {};

} // namespace Velmora::Math
