// Loads a second copy of the library into a process that is linked with the first, as two plugins
// of a host may do: its parameter is declared once, and its built-ins are registered once.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <dlfcn.h>

#include <velmora/ParameterInfoDB.h>
#include <velmora/math/xpr/Registry.h>

namespace {

std::vector<std::string> registeredNames() {
    std::vector<std::string> vNames;
    Velmora::Math::Xpr::Registry::getInstance().getNames(vNames);
    return vNames;
}

long declarations() {
    const auto vInfos = Velmora::ParameterInfoDB::getInstance().getParameters();
    return std::count_if(vInfos.begin(), vInfos.end(), [](const auto& in_info) {
        return in_info.key == "quillmark.math.xpr.scriptLoader.scriptsDir";
    });
}

int loadModes() {
#ifdef __SANITIZE_ADDRESS__
    return RTLD_NOW;
#else
    // The copy uses its own functions and variables; the sanitizer can't work with that.
    return RTLD_NOW | RTLD_DEEPBIND;
#endif
}

} // namespace

int main(int in_iCount, char** in_vszArguments) {
    if (in_iCount != 3) {
        std::fputs("usage: loadTwice LIBRARY COPY\n", stderr);
        return 2;
    }
    const std::vector<std::string> vNames = registeredNames();
    if (declarations() != 1) {
        std::fprintf(stderr, "%ld declarations before the copy\n", declarations());
        return 1;
    }

    std::filesystem::copy_file(in_vszArguments[1], in_vszArguments[2],
                               std::filesystem::copy_options::overwrite_existing);
    if (dlopen(in_vszArguments[2], loadModes()) == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    if (dlopen(in_vszArguments[2], RTLD_NOW | RTLD_NOLOAD) ==
        dlopen(in_vszArguments[1], RTLD_NOW | RTLD_NOLOAD)) {
        std::fputs("the copy is the library itself\n", stderr);
        return 1;
    }

    if (declarations() != 1 || registeredNames() != vNames) {
        std::fputs("the copy has changed what the process knows\n", stderr);
        return 1;
    }
    return 0;
}
