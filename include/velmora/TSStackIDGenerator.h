#pragma once

#include <velmora/IDGenerator.h>

#include <atomic>

namespace Velmora {

/// The thread-safe generator: 1, 2, 3 and so on. It never repeats a number, not even one that was
/// given back, so that an identifier in a log names one node only. Takes no lock.
class VELMORA_EXPORT TSStackIDGenerator : public IDGenerator {
public:
    TSStackIDGenerator() = default;
    TSStackIDGenerator(const TSStackIDGenerator&) = delete;
    TSStackIDGenerator& operator=(const TSStackIDGenerator&) = delete;
    ~TSStackIDGenerator() override;

    unsigned long generateId() override;

    /// Does nothing.
    void releaseId(unsigned long in_uiId) override;

private:
    std::atomic<unsigned long> m_uiNext{1};
};

} // namespace Velmora
