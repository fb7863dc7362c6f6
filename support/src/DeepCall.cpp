#include <velmora/DeepCall.h>

#include <pthread.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <utility>

#include "Sanitizers.h"

#if defined(VELMORA_ADDRESS_SANITIZER)
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(VELMORA_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>
#endif

namespace Velmora {

namespace {

#if defined(VELMORA_ADDRESS_SANITIZER) || defined(VELMORA_THREAD_SANITIZER) ||                     \
    !defined(__OPTIMIZE__)
constexpr std::size_t Reserve = std::size_t(160) * 1024;
#else
constexpr std::size_t Reserve = std::size_t(64) * 1024;
#endif

/// What is taken to be left where the size of a stack can't be told.
constexpr std::size_t Little = std::size_t(8) * 1024;

/// Taken from the system page by page as it is used.
#if defined(VELMORA_THREAD_SANITIZER)
// The sanitizer follows 65,536 calls on one stack.
constexpr std::size_t FreshSize = std::size_t(4) * 1024 * 1024;
#else
constexpr std::size_t FreshSize = std::size_t(64) * 1024 * 1024;
#endif

/// The lowest address at which the stack in use isn't low; null until the thread first asks.
__attribute__((tls_model("initial-exec"))) thread_local const char* t_pLowMark = nullptr;

const char* findLowMark() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        // For the main thread that reads a file, and may fail. A little is left in any case.
        return static_cast<const char*>(__builtin_frame_address(0)) - Little;
    }
    void* pLowest = nullptr;
    std::size_t uiSize = 0;
    pthread_attr_getstack(&attributes, &pLowest, &uiSize);
    pthread_attr_destroy(&attributes);
    return static_cast<const char*>(pLowest) + Reserve;
}

/// A block of memory for a stack, with a page at its low end that can't be touched.
class Stack {
public:
    Stack() noexcept = default;
    ~Stack() { release(); }
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    /// Makes sure that there is memory.
    void map() {
        if (m_pMemory != nullptr) {
            return;
        }
        void* pMemory = mmap(nullptr, FreshSize, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
        if (pMemory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        if (mprotect(pMemory, GuardSize, PROT_NONE) != 0) {
            munmap(pMemory, FreshSize);
            throw std::bad_alloc();
        }
        m_pMemory = static_cast<char*>(pMemory);
    }

    void swap(Stack& inout_Other) noexcept { std::swap(m_pMemory, inout_Other.m_pMemory); }
    bool isMapped() const noexcept { return m_pMemory != nullptr; }
    char* lowest() const noexcept { return m_pMemory + GuardSize; }
    std::size_t size() const noexcept { return FreshSize - GuardSize; }

private:
    static constexpr std::size_t GuardSize = std::size_t(64) * 1024;

    void release() noexcept {
        if (m_pMemory != nullptr) {
            munmap(m_pMemory, FreshSize);
        }
    }

    char* m_pMemory = nullptr;
};

/// The stack that the thread keeps for its next deep call.
thread_local Stack t_Spare;

/// What the sanitizers are told when the stack changes.
struct Switch {
    void leave([[maybe_unused]] const void* in_pLowest, [[maybe_unused]] std::size_t in_uiSize) {
#if defined(VELMORA_ADDRESS_SANITIZER)
        __sanitizer_start_switch_fiber(&m_pFakeStack, in_pLowest, in_uiSize);
#endif
    }
    void arrive() {
#if defined(VELMORA_ADDRESS_SANITIZER)
        __sanitizer_finish_switch_fiber(m_pFakeStack, nullptr, nullptr);
#endif
    }
    void* m_pFakeStack = nullptr;
};

struct Call {
    void (*m_pFunction)(void*);
    void* m_pArgument;
    std::exception_ptr m_pException;
    ucontext_t m_Caller;
    ucontext_t m_Deep;
    const void* m_pCallerLowest = nullptr;
    std::size_t m_uiCallerSize = 0;
#if defined(VELMORA_THREAD_SANITIZER)
    void* m_pCallerFiber = nullptr;
#endif
};

void enter(unsigned int in_uiHigh, unsigned int in_uiLow) {
    const auto uiAddress = (static_cast<std::uintptr_t>(in_uiHigh) << 32) | in_uiLow;
    Call& call = *reinterpret_cast<Call*>(uiAddress);
#if defined(VELMORA_ADDRESS_SANITIZER)
    __sanitizer_finish_switch_fiber(nullptr, &call.m_pCallerLowest, &call.m_uiCallerSize);
#endif
    try {
        call.m_pFunction(call.m_pArgument);
    } catch (...) {
        call.m_pException = std::current_exception();
    }
#if defined(VELMORA_ADDRESS_SANITIZER)
    // Null: this stack doesn't come back.
    __sanitizer_start_switch_fiber(nullptr, call.m_pCallerLowest, call.m_uiCallerSize);
#endif
#if defined(VELMORA_THREAD_SANITIZER)
    __tsan_switch_to_fiber(call.m_pCallerFiber, 0);
#endif
    setcontext(&call.m_Caller);
}

} // namespace

bool DeepCall::isStackLow() noexcept {
    if (t_pLowMark == nullptr) {
        t_pLowMark = findLowMark();
    }
    return static_cast<const char*>(__builtin_frame_address(0)) < t_pLowMark;
}

void DeepCall::call(void (*in_pFunction)(void*), void* in_pArgument) {
    Stack stack;
    stack.swap(t_Spare);
    stack.map();

    Call deepCall{};
    deepCall.m_pFunction = in_pFunction;
    deepCall.m_pArgument = in_pArgument;
    getcontext(&deepCall.m_Deep);
    deepCall.m_Deep.uc_stack.ss_sp = stack.lowest();
    deepCall.m_Deep.uc_stack.ss_size = stack.size();
    deepCall.m_Deep.uc_link = nullptr;
    const auto uiAddress = reinterpret_cast<std::uintptr_t>(&deepCall);
    makecontext(&deepCall.m_Deep, reinterpret_cast<void (*)()>(enter), 2,
                static_cast<unsigned int>(uiAddress >> 32), static_cast<unsigned int>(uiAddress));

    const char* const pLowMark = std::exchange(t_pLowMark, stack.lowest() + Reserve);
    Switch toDeep;
    toDeep.leave(stack.lowest(), stack.size());
#if defined(VELMORA_THREAD_SANITIZER)
    deepCall.m_pCallerFiber = __tsan_get_current_fiber();
    void* const pFiber = __tsan_create_fiber(0);
    __tsan_switch_to_fiber(pFiber, 0);
#endif
    swapcontext(&deepCall.m_Caller, &deepCall.m_Deep);
    toDeep.arrive();
#if defined(VELMORA_THREAD_SANITIZER)
    __tsan_destroy_fiber(pFiber);
#endif
    t_pLowMark = pLowMark;

    if (!t_Spare.isMapped()) {
        stack.swap(t_Spare);
    }
    if (deepCall.m_pException) {
        std::rethrow_exception(std::move(deepCall.m_pException));
    }
}

} // namespace Velmora
