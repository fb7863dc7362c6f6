#pragma once

#include <velmora/Export.h>
#include <velmora/math/FeatureComputer.h>

namespace Velmora::Math {

/// A feature computer that reads named inputs, which a host sets before each frame.
class VELMORA_EXPORT FeatureComputerWithInputs : public virtual FeatureComputer {
public:
    /// Sets the input of that name for the frames to come. The vector is read, not copied, when
    /// the feature is computed, and must outlive that. Returns false if there is no such input.
    virtual bool setInput(const char* in_szName, const DoubleVector& in_vValue) = 0;
};

} // namespace Velmora::Math
