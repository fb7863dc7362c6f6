#include <velmora/Object.h>

namespace Velmora {

Object::~Object() = default;

} // namespace Velmora
