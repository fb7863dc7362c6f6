#include <velmora/math/xpr/InvalidExpression.h>

namespace Velmora::Math::Xpr {

std::ostream& InvalidExpression::write(std::ostream& out_Stream) const {
    return out_Stream;
}

bool InvalidExpression::configure(const TSHandle<VirtualFileSystem>&) {
    return false;
}

bool InvalidExpression::evaluate(DoubleVector&) {
    return false;
}

bool InvalidExpression::evaluate(LimitedObjPtr<DoubleVector>&) {
    return false;
}

bool InvalidExpression::dump(const char*) const {
    return false;
}

bool InvalidExpression::reset() {
    return false;
}

} // namespace Velmora::Math::Xpr
