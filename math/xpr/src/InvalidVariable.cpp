#include <velmora/math/xpr/InvalidVariable.h>

namespace Velmora::Math::Xpr {

const char* InvalidVariable::getName() const {
    return "???InvalidVariable???";
}

bool InvalidVariable::setValue(const Handle<Expression>&) {
    return false;
}

bool InvalidVariable::setValue(const DoubleVector&) {
    return false;
}

} // namespace Velmora::Math::Xpr
