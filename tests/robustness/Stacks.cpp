#include "Stacks.h"

#include <cstddef>
#include <limits>
#include <new>

namespace {

constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

thread_local std::size_t t_uiCount = 0;
thread_local std::size_t t_uiFirstRefused = Never;

} // namespace

extern "C" {

// The names that the linker's option gives them: Velmora::DeepCall::call.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
void __real__ZN7Velmora8DeepCall4callEPFvPvES1_(void (*in_pFunction)(void*), void* in_pArgument);

void __wrap__ZN7Velmora8DeepCall4callEPFvPvES1_(void (*in_pFunction)(void*), void* in_pArgument) {
    if (t_uiCount++ >= t_uiFirstRefused) {
        throw std::bad_alloc();
    }
    __real__ZN7Velmora8DeepCall4callEPFvPvES1_(in_pFunction, in_pArgument);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

} // extern "C"

namespace Velmora::Testing {

std::size_t Stacks::getCount() {
    return t_uiCount;
}

void Stacks::refuseBehind(std::size_t in_uiOthers) {
    t_uiFirstRefused = t_uiCount + in_uiOthers;
}

void Stacks::allow() {
    t_uiFirstRefused = Never;
}

} // namespace Velmora::Testing
