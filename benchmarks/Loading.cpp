#include "Loading.h"

#include <algorithm>
#include <ctime>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>

#include "Host.h"

namespace Velmora::Benchmarks {

namespace {

using namespace Math::Xpr;

void require(bool in_bDone, const char* in_szStage) {
    if (!in_bDone) {
        throw WrongResult(std::string("loading failed: ") + in_szStage);
    }
}

} // namespace

double getProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

double Samples::getMedian() const {
    std::vector<double> vTimes(m_vTimes);
    const auto middle = vTimes.begin() + static_cast<std::ptrdiff_t>(vTimes.size() / 2);
    std::nth_element(vTimes.begin(), middle, vTimes.end());
    return *middle;
}

LoadedScript::LoadedScript(const std::string& in_strScript, std::size_t in_uiDefinitions,
                           StageSamples& inout_Samples)
    : m_Expressions("optimized") {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", ParameterValue("."));
    const Handle<ScriptLoader> pLoader(new ScriptLoaderVFS(TSHandle<VirtualFileSystem>()));
    require(pLoader->configure(configuration), "configuration of the loader");
    Linker linker;
    require(linker.configure(configuration, pLoader), "configuration of the linker");
    Optimizer optimizer;
    require(optimizer.configure(configuration), "configuration of the optimizer");

    Dictionnary raw("raw");
    inout_Samples.m_Parse.time([&] {
        std::istringstream script(in_strScript);
        require(pLoader->run(script, "s", raw), "parse");
    });
    Dictionnary linked("linked");
    inout_Samples.m_Link.time([&] {
        require(linker.run(raw, linked), "link");
        raw.clear();
    });
    inout_Samples.m_Optimize.time([&] {
        require(optimizer.run(linked, m_Expressions), "optimise");
        linked.clear();
    });
    m_pInput = m_Expressions.findVariable("s.v0");
    m_pLast = m_Expressions.findExpression(("s.v" + std::to_string(in_uiDefinitions)).c_str());
    require(!m_pInput.isNull() && !m_pLast.isNull(), "look-up");
    inout_Samples.m_FirstFrame.time([&] {
        m_pInput->setValue(m_vFirstInput);
        evaluateOrThrow(*m_pLast);
    });
}

} // namespace Velmora::Benchmarks
