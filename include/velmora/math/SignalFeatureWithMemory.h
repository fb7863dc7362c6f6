#pragma once

#include <velmora/Export.h>
#include <velmora/Resettable.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// A feature whose result depends on the frames before.
///
/// `reset` returns the memory to its state after construction, keeps the configuration and the
/// storage, and returns true.
class VELMORA_EXPORT SignalFeatureWithMemory : public virtual SignalFeature,
                                               public virtual Resettable {};

} // namespace Velmora::Math
