#include <velmora/OutputStreamable.h>

#include <ostream>

namespace Velmora {

std::ostream& operator<<(std::ostream& inout_stream, const OutputStreamable& in_object) {
    in_object.write(inout_stream);
    return inout_stream;
}

} // namespace Velmora
