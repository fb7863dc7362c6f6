#include <velmora/SingletonRegistry.h>

#include <algorithm>

namespace Velmora {

// The registry itself is never destroyed, so that a static destructor which runs behind the
// teardown finds an empty table and not a dead one.
struct SingletonRegistry::Teardown {
    SingletonRegistry* const m_pRegistry = new SingletonRegistry;

    Teardown() = default;
    ~Teardown() { m_pRegistry->destroyAll(); }
    Teardown(const Teardown&) = delete;
    Teardown& operator=(const Teardown&) = delete;
};

SingletonRegistry& SingletonRegistry::getInstance() {
    static Teardown s_teardown;
    return *s_teardown.m_pRegistry;
}

void* SingletonRegistry::registerInstance(const char* in_szName, void* in_pInstance,
                                          Deleter in_pDeleter, int) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto it =
        std::find_if(m_vEntries.begin(), m_vEntries.end(), [in_szName](const Entry& in_entry) {
            return in_entry.m_strName == in_szName;
        });
    if (it != m_vEntries.end()) {
        return it->m_pInstance;
    }
    if (in_pInstance != nullptr) {
        m_vEntries.push_back(Entry{in_szName, in_pInstance, in_pDeleter});
    }
    return in_pInstance;
}

void SingletonRegistry::destroyAll() {
    for (;;) {
        // Unlocked for the deletion, which may register or ask for another singleton.
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_vEntries.empty()) {
            return;
        }
        const Entry entry = m_vEntries.back();
        m_vEntries.pop_back();
        lock.unlock();
        if (entry.m_pDeleter != nullptr) {
            entry.m_pDeleter(entry.m_pInstance);
        }
    }
}

} // namespace Velmora
