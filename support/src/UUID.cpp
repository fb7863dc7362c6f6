#include <velmora/UUID.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>

namespace Velmora {

UUID::UUID() {
    // The system is asked for randomness once a thread: a list in a script takes one for each
    // element.
    thread_local boost::uuids::random_generator_mt19937 t_generator;
    const boost::uuids::uuid uuid = t_generator();
    std::copy(uuid.begin(), uuid.end(), m_bytes.begin());
}

UUID::operator std::string() const {
    boost::uuids::uuid uuid;
    std::copy(m_bytes.begin(), m_bytes.end(), uuid.begin());
    return boost::uuids::to_string(uuid);
}

} // namespace Velmora
