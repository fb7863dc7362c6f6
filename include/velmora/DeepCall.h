#pragma once

#include <memory>
#include <type_traits>

#include <velmora/Export.h>

namespace Velmora {

/// Lets a recursion go deeper than the stack of its thread: calls that find little stack left go on
/// on a fresh one, of the same thread.
///
/// A recursive function tests once per level, at its top. Whatever lies between two tests must get
/// by with the reserve. A thread keeps one fresh stack for its next use, so that the steady state
/// maps no memory.
class VELMORA_EXPORT DeepCall {
public:
    /// Is less than the reserve left on the stack that is in use?
    static bool isStackLow() noexcept;

    /// Calls the function and returns its result: here if enough stack is left, otherwise on a
    /// fresh stack. An exception comes through. Throws std::bad_alloc when there is no memory for a
    /// stack.
    template <class F>
    static auto run(F&& in_Function) {
        return isStackLow() ? runDeep(in_Function) : in_Function();
    }

private:
    template <class F>
    static auto runDeep(F& in_Function) {
        using Result = decltype(in_Function());
        if constexpr (std::is_void_v<Result>) {
            call([](void* in_pCall) { (*static_cast<F*>(in_pCall))(); },
                 std::addressof(in_Function));
        } else {
            struct Call {
                F* m_pFunction;
                Result m_Result;
            };
            Call deepCall{std::addressof(in_Function), Result()};
            call(
                [](void* in_pCall) {
                    Call& running = *static_cast<Call*>(in_pCall);
                    running.m_Result = (*running.m_pFunction)();
                },
                &deepCall);
            return deepCall.m_Result;
        }
    }

    static void call(void (*in_pFunction)(void*), void* in_pArgument);
};

} // namespace Velmora
