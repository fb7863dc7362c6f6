#include <velmora/TSReferenceCount.h>

#include <velmora/DefaultStaticMemAllocator.h>

#include <ace/Guard_T.h>
#include <ace/Thread_Mutex.h>

#include <new>

namespace Velmora {

namespace {

constexpr const char* Account = "TSReferenceCount";

struct Counter : TSReferenceCount {
    ACE_Thread_Mutex m_mutex;
    int m_iCount = 1;
    bool m_bLocked = false;
};

/// Holds the counter's mutex for one operation on the count.
class Lock {
public:
    explicit Lock(Counter& inout_counter) : m_counter(inout_counter) {
        m_counter.m_mutex.acquire();
        m_counter.m_bLocked = true;
    }
    ~Lock() {
        m_counter.m_bLocked = false;
        m_counter.m_mutex.release();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    Counter& m_counter;
};

Counter& counter(TSReferenceCount* in_pCount) {
    return *static_cast<Counter*>(in_pCount);
}

} // namespace

TSReferenceCount* TSReferenceCount::create() noexcept {
    void* pBlock = DefaultStaticMemAllocator::allocate(sizeof(Counter), Account);
    return pBlock == nullptr ? nullptr : ::new (pBlock) Counter;
}

void TSReferenceCount::increment(TSReferenceCount* in_pCount) noexcept {
    if (in_pCount != nullptr) {
        const Lock lock(counter(in_pCount));
        ++counter(in_pCount).m_iCount;
    }
}

bool TSReferenceCount::dropObject(TSReferenceCount* in_pCount, const Object* in_pObject) noexcept {
    const Lock lock(counter(in_pCount));
    if (counter(in_pCount).m_iCount != 1) {
        --counter(in_pCount).m_iCount;
        return false;
    }
    delete in_pObject;
    return true;
}

void TSReferenceCount::release(TSReferenceCount* in_pCount, const Object* in_pObject) noexcept {
    if (in_pCount != nullptr && dropObject(in_pCount, in_pObject)) {
        counter(in_pCount).~Counter();
        DefaultStaticMemAllocator::deallocate(&counter(in_pCount), sizeof(Counter), Account);
    }
}

int TSReferenceCount::get(TSReferenceCount* in_pCount) noexcept {
    if (in_pCount == nullptr) {
        return 0;
    }
    const Lock lock(counter(in_pCount));
    return counter(in_pCount).m_iCount;
}

} // namespace Velmora
