#include "DeferredRelease.h"

#include <iterator>
#include <new>

namespace Velmora::Math::Xpr {

namespace {

using Handles = boost::container::small_vector_base<Handle<ExpressionBaseImpl>>;

/// The list of the outermost call on this thread. A plain pointer, since nodes may still die when
/// the thread's own objects are gone.
thread_local Handles* t_pPending = nullptr;

void moveTo(Handles& out_vPending, Handles& inout_vHandles) noexcept {
    try {
        out_vPending.insert(out_vPending.end(), std::make_move_iterator(inout_vHandles.begin()),
                            std::make_move_iterator(inout_vHandles.end()));
    } catch (const std::bad_alloc&) {
        // Without memory for the list the handles are released where they stand.
    }
    inout_vHandles.clear();
}

} // namespace

void releaseDeferred(Handles& inout_vHandles) noexcept {
    if (t_pPending != nullptr) {
        moveTo(*t_pPending, inout_vHandles);
        return;
    }
    boost::container::small_vector<Handle<ExpressionBaseImpl>, 64> vPending;
    t_pPending = &vPending;
    moveTo(vPending, inout_vHandles);
    while (!vPending.empty()) {
        const Handle<ExpressionBaseImpl> pLast(std::move(vPending.back()));
        vPending.pop_back();
    }
    t_pPending = nullptr;
}

} // namespace Velmora::Math::Xpr
