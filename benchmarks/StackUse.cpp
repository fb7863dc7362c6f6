#include "StackUse.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <pthread.h>

#include "Host.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t STACK = std::size_t{1} << 20;
constexpr std::size_t PAGE = 4096;
constexpr unsigned char UNTOUCHED = 0xa5;

void* call(void* in_pFunction) {
    (*static_cast<const std::function<void()>*>(in_pFunction))();
    return nullptr;
}

/// What the thread itself has touched by the time it has run the function.
std::size_t measure(const std::function<void()>& in_Function) {
    std::vector<unsigned char> vMemory(STACK + PAGE, UNTOUCHED);
    void* pStack = vMemory.data();
    std::size_t uiRoom = vMemory.size();
    pStack = std::align(PAGE, STACK, pStack, uiRoom);

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, pStack, STACK);
    pthread_t thread{};
    std::function<void()> function(in_Function);
    const bool bStarted = pthread_create(&thread, &attributes, call, &function) == 0;
    pthread_attr_destroy(&attributes);
    if (!bStarted) {
        throw WrongResult("no thread to measure the stack on");
    }
    pthread_join(thread, nullptr);

    const auto* const pFirst = static_cast<unsigned char*>(pStack);
    const auto* const pTouched =
        std::find_if(pFirst, pFirst + STACK, [](unsigned char in_c) { return in_c != UNTOUCHED; });
    return static_cast<std::size_t>(pFirst + STACK - pTouched);
}

} // namespace

std::size_t measureStackUse(const std::function<void()>& in_Function) {
    const std::size_t uiThread = measure([] {});
    const std::size_t uiAll = measure(in_Function);
    return uiAll - std::min(uiThread, uiAll);
}

} // namespace Velmora::Benchmarks
