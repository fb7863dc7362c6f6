#include <velmora/OutputStreamable.h>

#include <velmora/DeepCall.h>

#include <ostream>

namespace Velmora {

std::ostream& operator<<(std::ostream& inout_stream, const OutputStreamable& in_object) {
    // Objects write what hangs below them, to any depth.
    DeepCall::run([&] { in_object.write(inout_stream); });
    return inout_stream;
}

} // namespace Velmora
