// A host may call the operations of a script loader in any order, on a loader, a copy or a clone,
// and with null where a pointer goes in: an assertion says what is wrong, and nothing else happens.

#include <memory>
#include <sstream>
#include <type_traits>
#include <vector>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using namespace Math::Xpr;
using namespace CallOrder;

struct FileLoader : public ScriptLoaderStdIO {
    using Base = ScriptLoaderStdIO;
    FileLoader() = default;
    explicit FileLoader(const Base& in_Other) : Base(in_Other) {}
};

struct TextLoader : public ScriptLoaderVFS {
    using Base = ScriptLoaderVFS;
    TextLoader() : ScriptLoaderVFS(newFiles()) {}
    explicit TextLoader(const Base& in_Other) : Base(in_Other) {}
};

struct LoaderWithoutFiles : public ScriptLoaderVFS {
    using Base = ScriptLoaderVFS;
    LoaderWithoutFiles() : ScriptLoaderVFS(TSHandle<VirtualFileSystem>()) {}
    explicit LoaderWithoutFiles(const Base& in_Other) : Base(in_Other) {}
};

/// Whether a loader of that kind finds the script once it is configured.
template <class Loader>
constexpr bool FindsScripts = std::is_same_v<Loader, TextLoader>;

/// The machine's files are looked for where there are none.
template <class Loader>
constexpr const char* Directory = FindsScripts<Loader> ? "." : "there-is-no-such-directory";

template <class Loader>
struct LoaderSubject : TellingSubject {
    struct State {
        bool m_bConfigured = false;
    };

    bool run(Loader& inout_Loader, const char* in_szName, bool in_bReport = true) {
        ScriptLoader& loader = inout_Loader;
        return loader.run(in_szName, m_Dictionnary, in_bReport);
    }
    bool runStream(Loader& inout_Loader, const char* in_szName) {
        std::istringstream stream(Script);
        ScriptLoader& loader = inout_Loader;
        return loader.run(stream, in_szName, m_Dictionnary);
    }
    /// What `clone` gives, as the class that it is.
    std::unique_ptr<Loader> clone() const {
        const std::unique_ptr<Cloneable> pClone(m_Loader.clone());
        // The classes of the test don't override it.
        const auto* const pBase = dynamic_cast<const typename Loader::Base*>(pClone.get());
        return pBase == nullptr ? nullptr : std::make_unique<Loader>(*pBase);
    }

    Loader m_Loader;
    Dictionnary m_Dictionnary{"d"};
};

template <class Loader>
class LoaderCallOrderTest : public testing::Test {};

using Loaders = testing::Types<FileLoader, TextLoader, LoaderWithoutFiles>;
TYPED_TEST_SUITE(LoaderCallOrderTest, Loaders);

TYPED_TEST(LoaderCallOrderTest, ScriptLoader) {
    using Loader = TypeParam;
    using Subject = LoaderSubject<Loader>;
    using State = typename Subject::State;
    const auto always = [](const char* in_szCondition) {
        return [=](State&) { return refusedWith(in_szCondition); };
    };
    const auto given = [](bool in_bResult) { return [=](State&) { return resultIs(in_bResult); }; };
    const auto found = [](State& inout_State) {
        return resultIs(inout_State.m_bConfigured && FindsScripts<Loader>);
    };
    const char* const NoName = "0 != in_szScriptName";
    const char* const NoPath = "OS::stripFileName( in_szFilePath, strFileDirectory )";
    const std::vector<Operation<Subject>> vOperations{
        {"configure", [](auto& s) { s.tell(s.m_Loader.configure(scriptsIn(Directory<Loader>))); },
         [](auto& st) {
             st.m_bConfigured = true;
             return Conditions();
         }},
        {"configure without directories",
         [](auto& s) { s.tell(s.m_Loader.configure(ParameterTrie())); }, given(false)},
        {"run", [](auto& s) { s.tell(s.run(s.m_Loader, "s")); }, found},
        {"run of an unknown name", [](auto& s) { s.tell(s.run(s.m_Loader, "unknown", false)); },
         given(false)},
        {"run without a name", [](auto& s) { s.tell(s.run(s.m_Loader, nullptr)); }, always(NoName)},
        {"run of a stream", [](auto& s) { s.tell(s.runStream(s.m_Loader, "s")); }, given(true)},
        {"run of a stream without a name",
         [](auto& s) { s.tell(s.runStream(s.m_Loader, nullptr)); }, always(NoPath)},
        {"run of a stream with an empty name", [](auto& s) { s.tell(s.runStream(s.m_Loader, "")); },
         always("OS::stripPathAndExtension( in_szScriptName, m_strScriptName )")},
        {"run of no stream",
         [](auto& s) {
             std::istream stream(nullptr);
             ScriptLoader& loader = s.m_Loader;
             s.tell(loader.run(stream, "s", s.m_Dictionnary));
         },
         given(true)},
        {"run of a copy",
         [](auto& s) {
             Loader copy(s.m_Loader);
             s.tell(s.run(copy, "s"));
         },
         found},
        {"run of a clone", [](auto& s) { s.tell(s.run(*s.clone(), "s")); }, found},
        {"run of a clone of a copy without a name",
         [](auto& s) {
             const Loader copy(s.m_Loader);
             const std::unique_ptr<Cloneable> pClone(copy.clone());
             auto& clone = dynamic_cast<ScriptLoader&>(*pClone);
             s.tell(clone.run(nullptr, s.m_Dictionnary, true));
         },
         always(NoName)},
        {"configuration of a clone",
         [](auto& s) { s.tell(s.clone()->configure(scriptsIn(Directory<Loader>))); }, given(true)},
        {"assignment of itself",
         [](auto& s) {
             const Loader& self = s.m_Loader;
             s.m_Loader = self;
         },
         nothing<State>},
        {"assignment of a clone", [](auto& s) { s.m_Loader = *s.clone(); }, nothing<State>},
        {"assignment of a fresh one", [](auto& s) { s.m_Loader = Loader(); },
         [](auto& st) {
             st.m_bConfigured = false;
             return Conditions();
         }},
    };
    report("a loader", callPairs(vOperations, {"configure", "run", "assignment of a clone"}));
}

} // namespace

} // namespace Velmora::Testing
