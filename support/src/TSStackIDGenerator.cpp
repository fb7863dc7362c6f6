#include <velmora/TSStackIDGenerator.h>

namespace Velmora {

TSStackIDGenerator::~TSStackIDGenerator() = default;

unsigned long TSStackIDGenerator::generateId() {
    return m_uiNext.fetch_add(1, std::memory_order_relaxed);
}

void TSStackIDGenerator::releaseId(unsigned long) {}

} // namespace Velmora
