#pragma once

#include <velmora/Export.h>
#include <velmora/Object.h>

namespace Velmora {

/// The mutex-protected counter that the thread-safe handles of one object share.
///
/// What it consists of is the library's own business; handles reach it through these operations.
/// Counters stand under the account "TSReferenceCount". The object is destroyed while the counter
/// is locked, so its destructor must not touch a handle to itself.
class VELMORA_EXPORT TSReferenceCount {
public:
    TSReferenceCount(const TSReferenceCount&) = delete;
    TSReferenceCount& operator=(const TSReferenceCount&) = delete;

    /// A new counter set to 1, or null when memory is exhausted.
    static TSReferenceCount* create() noexcept;

    /// Adds one; ignores null.
    static void increment(TSReferenceCount* in_pCount) noexcept;

    /// Takes one away; ignores null. The last one destroys the object, which may be null, and the
    /// counter.
    static void release(TSReferenceCount* in_pCount, const Object* in_pObject) noexcept;

    /// Takes one away and returns false; but if the count is 1, destroys the object, which may be
    /// null, leaves the count at 1 and returns true.
    static bool dropObject(TSReferenceCount* in_pCount, const Object* in_pObject) noexcept;

    /// The count; 0 for null.
    static int get(TSReferenceCount* in_pCount) noexcept;

protected:
    TSReferenceCount() = default;
    ~TSReferenceCount() = default;
};

} // namespace Velmora
