#pragma once

#include <velmora/Object.h>

#include <iosfwd>

namespace Velmora {

/// An object that writes itself as text, in log lines and in dumps.
class VELMORA_EXPORT OutputStreamable : public virtual Object {
public:
    /// Writes the object and returns `inout_stream`.
    virtual std::ostream& write(std::ostream& inout_stream) const = 0;
};

/// Writes the object through `write` and returns the stream.
VELMORA_EXPORT std::ostream& operator<<(std::ostream& inout_stream,
                                        const OutputStreamable& in_object);

} // namespace Velmora
