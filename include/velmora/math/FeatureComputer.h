#pragma once

#include <velmora/Export.h>
#include <velmora/Resettable.h>

namespace Velmora::Math {

class DoubleVector;

/// What computes a feature frame by frame, as a host sees it.
///
/// Abstract and without an archive key: archives that write and read pointers to this class need
/// the key of the concrete class and its cast to this base. One thread at a time uses a computer.
class VELMORA_EXPORT FeatureComputer : public virtual Resettable {
public:
    /// Computes the feature of the current frame into the output. Returns false if it can't be
    /// computed.
    virtual bool computeFeatures(DoubleVector& out_vFeature) = 0;
};

} // namespace Velmora::Math
