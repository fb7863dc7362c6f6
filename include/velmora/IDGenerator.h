#pragma once

#include <velmora/Export.h>

namespace Velmora {

/// A source of identifiers, each unique among those in use.
class VELMORA_EXPORT IDGenerator {
public:
    virtual ~IDGenerator() = default;

    /// A new identifier.
    virtual unsigned long generateId() = 0;

    /// Gives back an identifier that is no longer in use; the generator may hand it out again.
    virtual void releaseId(unsigned long in_uiId) = 0;

protected:
    IDGenerator() = default;
    IDGenerator(const IDGenerator&) = default;
    IDGenerator& operator=(const IDGenerator&) = default;
};

} // namespace Velmora
