#pragma once

#include <atomic>
#include <thread>

namespace Velmora {

/// Held for a few instructions, by threads that build or destroy graphs; nothing computes under it.
class SpinLock {
public:
    explicit SpinLock(std::atomic_flag& inout_flag) noexcept : m_flag(inout_flag) {
        while (m_flag.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    ~SpinLock() { m_flag.clear(std::memory_order_release); }
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

private:
    std::atomic_flag& m_flag;
};

} // namespace Velmora
