#include "DeferredRelease.h"

#include <iterator>
#include <new>

namespace Velmora::Math::Xpr {

namespace {

using Handles = std::vector<Handle<ExpressionBaseImpl>>;

/// The list of the outermost call on this thread. A plain pointer, since nodes may still die when
/// the thread's own objects are gone.
thread_local Handles* t_pPending = nullptr;

} // namespace

void releaseDeferred(Handles& inout_vHandles) noexcept {
    if (t_pPending != nullptr) {
        try {
            t_pPending->insert(t_pPending->end(), std::make_move_iterator(inout_vHandles.begin()),
                               std::make_move_iterator(inout_vHandles.end()));
        } catch (const std::bad_alloc&) {
            // Without memory for the list the handles are released where they stand.
        }
        inout_vHandles.clear();
        return;
    }
    Handles vPending;
    vPending.swap(inout_vHandles);
    t_pPending = &vPending;
    while (!vPending.empty()) {
        const Handle<ExpressionBaseImpl> pLast(std::move(vPending.back()));
        vPending.pop_back();
    }
    t_pPending = nullptr;
}

} // namespace Velmora::Math::Xpr
