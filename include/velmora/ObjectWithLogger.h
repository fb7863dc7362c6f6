#pragma once

#include <velmora/CachedLLLogger.h>
#include <velmora/Export.h>

namespace Velmora {

/// A base class that gives an object a logger of its own, for long-lived classes.
///
/// The default form starts with an unnamed logger; the class sets its own with `setLogger`.
template <class L = CachedLLLogger>
class VELMORA_EXPORT ObjectWithLogger {
public:
    ObjectWithLogger() = default;

    /// Starts with a copy of that logger.
    explicit ObjectWithLogger(const L& in_logger) : m_logger(in_logger) {}
    ObjectWithLogger(const ObjectWithLogger&) = default;
    ObjectWithLogger& operator=(const ObjectWithLogger&) = default;

    /// The object's own logger. Setting it replaces it by a copy.
    const L& getLogger() const noexcept { return m_logger; }
    L& getLogger() noexcept { return m_logger; }
    void setLogger(const L& in_logger) { m_logger = in_logger; }

    /// Resets the logger.
    bool reset() { return m_logger.reset(); }

protected:
    ~ObjectWithLogger() = default;

private:
    L m_logger;
};

} // namespace Velmora
