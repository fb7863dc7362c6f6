#pragma once

#include <velmora/Export.h>

#include <mutex>
#include <string>
#include <vector>

namespace Velmora {

/// The process-wide table of named singletons.
///
/// When several copies of a library in one process make a singleton of the same name, the first one
/// wins and all use it. The instances are destroyed at process end, in the reverse order of their
/// registration; nothing may use one afterwards. Thread-safe.
class VELMORA_EXPORT SingletonRegistry {
public:
    /// Destroys an instance at process end.
    using Deleter = void (*)(void*);

    /// The one registry of the process.
    static SingletonRegistry& getInstance();

    SingletonRegistry(const SingletonRegistry&) = delete;
    SingletonRegistry& operator=(const SingletonRegistry&) = delete;

    /// The instance that stands under the name after the call. The registry owns `in_pInstance` if
    /// that is what it returns; otherwise the caller keeps it. A null instance is never stored, so
    /// it asks what stands there. A null deleter leaves the instance alone at process end. The last
    /// argument is 0.
    void* registerInstance(const char* in_szName, void* in_pInstance, Deleter in_pDeleter,
                           int in_iFlags);

private:
    struct Entry {
        std::string m_strName;
        void* m_pInstance;
        Deleter m_pDeleter;
    };
    struct Teardown;

    SingletonRegistry() = default;
    ~SingletonRegistry() = default;

    void destroyAll();

    std::mutex m_mutex;
    std::vector<Entry> m_vEntries;
};

} // namespace Velmora
