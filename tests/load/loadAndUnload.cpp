// A host that isn't linked with the library: its threads load a module that is, use it, and unload
// it, while others do the same. The library itself stays, with all that it has made to last.

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include <dlfcn.h>

#if defined(__SANITIZE_THREAD__)
// The loader has locks of its own, which the sanitizer doesn't see.
extern "C" const char* __tsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier)
    return "called_from_lib:ld-linux\n";
}
#endif

namespace {

constexpr int Threads = 4;
constexpr int Rounds = 15;

bool useModule(const char* in_szModule, double in_dNumber) {
    void* const pModule = dlopen(in_szModule, RTLD_NOW | RTLD_LOCAL);
    if (pModule == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return false;
    }
    using Function = double (*)(double);
    const auto pFunction = reinterpret_cast<Function>(dlsym(pModule, "runPlugin"));
    const double dResult = pFunction == nullptr ? -1.0 : pFunction(in_dNumber);
    const bool bRight = dResult == 4 * in_dNumber;
    if (!bRight) {
        std::fprintf(stderr, "%g gives %g\n", in_dNumber, dResult);
    }
    return dlclose(pModule) == 0 && bRight;
}

} // namespace

int main(int in_iCount, char** in_vszArguments) {
    if (in_iCount != 3) {
        std::fputs("usage: loadAndUnload MODULE LIBRARY\n", stderr);
        return 2;
    }
    const char* const szModule = in_vszArguments[1];
    // Once alone: from here on nobody holds the module.
    if (!useModule(szModule, 1.0)) {
        return 1;
    }
    std::atomic<int> iFailures{0};
    std::vector<std::thread> vThreads;
    for (int iThread = 0; iThread != Threads; ++iThread) {
        vThreads.emplace_back([szModule, iThread, &iFailures] {
            for (int iRound = 0; iRound != Rounds; ++iRound) {
                iFailures += useModule(szModule, iThread * Rounds + iRound) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__)
    // Where less is inlined, the library may use templates of the module, and hold it.
    if (dlopen(szModule, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        std::fputs("the module is still loaded\n", stderr);
        return 1;
    }
#endif
    if (dlopen(in_vszArguments[2], RTLD_NOW | RTLD_NOLOAD) == nullptr) {
        std::fputs("the library has been unloaded\n", stderr);
        return 1;
    }
    return iFailures == 0 ? 0 : 1;
}
