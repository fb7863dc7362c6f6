#include "DeadParent.h"

namespace Velmora::Math::Xpr {

namespace {

class DeadParent : public ExpressionBaseImpl {
public:
    const char* getName() const override { return "dead parent"; }

protected:
    bool configure_i(const TSHandle<VirtualFileSystem>&) override { return true; }
    bool evaluate_i(LimitedObjPtr<DoubleVector>&) override { return false; }
    bool reset_i() override { return true; }
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier&) const override {
        return Handle<ExpressionBaseImpl>();
    }
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override { return false; }
};

} // namespace

ExpressionBaseImpl& deadParent() {
    // Never destroyed: nodes may outlive every static object.
    static ExpressionBaseImpl* const s_pDeadParent = new DeadParent;
    return *s_pDeadParent;
}

} // namespace Velmora::Math::Xpr
