#pragma once

#include <velmora/math/xpr/Expression.h>

namespace Velmora::Math::Xpr {

/// The null object, for places that must return a reference to an expression: writes nothing, and
/// each of its operations fails.
class VELMORA_EXPORT InvalidExpression : public virtual Expression {
public:
    std::ostream& write(std::ostream& out_Stream) const override;
    bool configure(const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate(DoubleVector& out) override;
    bool evaluate(LimitedObjPtr<DoubleVector>& out) override;
    bool dump(const char* in_szFileName) const override;
    bool reset() override;
};

} // namespace Velmora::Math::Xpr
