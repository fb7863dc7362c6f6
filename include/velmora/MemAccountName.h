#pragma once

#include <velmora/Export.h>

#include <atomic>

namespace Velmora {

struct AccountCounters;

/// The name of an account, for a place that allocates often: the account is looked up at the first
/// allocation and remembered.
///
/// The text lives as long as the object, which is meant to be static. Thread-safe.
class VELMORA_EXPORT MemAccountName {
public:
    /// The account isn't opened yet.
    constexpr explicit MemAccountName(const char* in_szName) noexcept : m_szName(in_szName) {}
    MemAccountName(const MemAccountName&) = delete;
    MemAccountName& operator=(const MemAccountName&) = delete;

    /// The text that it was made with.
    const char* getName() const noexcept { return m_szName; }

private:
    friend class AccountTable;

    const char* const m_szName;
    std::atomic<AccountCounters*> m_pCounters{nullptr};
};

} // namespace Velmora
