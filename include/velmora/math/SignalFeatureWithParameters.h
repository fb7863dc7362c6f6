#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora {
class ROConfiguration;
}

namespace Velmora::Math {

/// A feature that is configured by parameters.
///
/// Computes nothing before all its sizes, counts or rates have been configured: compute then
/// returns false.
class VELMORA_EXPORT SignalFeatureWithParameters : public virtual SignalFeature {
public:
    /// Reads the feature's parameters. One that isn't defined leaves what the feature had, so that
    /// parameters may also come in several calls. Returns false if a value can't be used: the
    /// feature then keeps the whole configuration that it had.
    virtual bool configure(const ROConfiguration& in_config) = 0;
};

} // namespace Velmora::Math
