#include "SoakDetectors.h"

#include <algorithm>
#include <cstring>

#include <velmora/DiskFileSystem.h>
#include <velmora/ParameterTrie.h>

#include "Host.h"

namespace Velmora::Benchmarks {

namespace {

struct Script {
    std::string m_strName;
    std::vector<std::string> m_vFeatures;
    std::size_t m_uiEverySteps;
};

const std::vector<Script>& listScripts() {
    static const std::vector<Script> scripts{
        {"vad", {"speech"}, 2},
        {"endpointer", {"speech", "smooth"}, 2},
        {"dtmf", {"key"}, 1},
        {"progress", {"dial", "busy", "ringback"}, 2},
        {"envelope", {"strength", "depth"}, 2},
    };
    return scripts;
}

std::uint64_t mix(std::uint64_t in_uiDigest, double in_dValue) {
    std::uint64_t uiBits = 0;
    std::memcpy(&uiBits, &in_dValue, sizeof uiBits);
    in_uiDigest = (in_uiDigest ^ uiBits) * 0x9e3779b97f4a7c15U;
    return in_uiDigest ^ (in_uiDigest >> 32);
}

void check(bool in_bGood, const std::string& in_strWhat) {
    if (!in_bGood) {
        throw WrongResult(in_strWhat);
    }
}

} // namespace

SoakDetectors::SoakDetectors() {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               ParameterValue(VELMORA_SOURCE_DIR "/examples/scripts"));
    check(m_Evaluator.configure(configuration, TSHandle<VirtualFileSystem>(new DiskFileSystem)),
          "the evaluator refuses its configuration");
    for (const Script& script : listScripts()) {
        check(m_Evaluator.addScript(script.m_strName.c_str()), script.m_strName + " doesn't load");
    }
    check(m_Evaluator.link(true), "the scripts don't link");
    check(m_Evaluator.reconfigureExpressions(), "a script can't be configured");
    for (const Script& script : listScripts()) {
        Detector detector;
        detector.m_pFrame = m_Evaluator.getVariable((script.m_strName + ".frame").c_str());
        check(!detector.m_pFrame.isNull(), script.m_strName + " has no frame");
        detector.m_uiEverySteps = script.m_uiEverySteps;
        for (const std::string& strFeature : script.m_vFeatures) {
            Feature feature;
            feature.m_strName = script.m_strName + '.' + strFeature;
            feature.m_pExpression = m_Evaluator.getExpression(feature.m_strName.c_str());
            check(!feature.m_pExpression.isNull(), "there is no " + feature.m_strName);
            detector.m_vFeatures.push_back(std::move(feature));
        }
        m_vDetectors.push_back(std::move(detector));
    }
    restart();
}

void SoakDetectors::restart() {
    m_vFrame.clear();
    m_vFrame.resize(2 * Hop);
    std::fill(m_vFrame.begin(), m_vFrame.end(), 0.0);
    m_uiSteps = 0;
    m_uiDigest = 0;
}

void SoakDetectors::step(const short* in_pSamples) {
    std::copy(m_vFrame.begin() + Hop, m_vFrame.end(), m_vFrame.begin());
    std::transform(in_pSamples, in_pSamples + Hop, m_vFrame.begin() + Hop,
                   [](short in_iSample) { return in_iSample / 32768.0; });
    ++m_uiSteps;
    for (Detector& detector : m_vDetectors) {
        if (m_uiSteps % detector.m_uiEverySteps != 0) {
            continue;
        }
        detector.m_pFrame->setValue(m_vFrame);
        for (Feature& feature : detector.m_vFeatures) {
            const Math::DoubleVector& vValue = evaluateOrThrow(*feature.m_pExpression);
            check(vValue.size() == 1, feature.m_strName + " isn't one number");
            feature.m_uiActive += vValue[0] != 0.0 ? 1 : 0;
            m_uiDigest = mix(m_uiDigest, vValue[0]);
        }
    }
}

void SoakDetectors::reset() {
    for (const Detector& detector : m_vDetectors) {
        for (const Feature& feature : detector.m_vFeatures) {
            check(feature.m_pExpression->reset(), feature.m_strName + " can't be reset");
        }
    }
    restart();
}

std::uint64_t SoakDetectors::takeDigest() {
    const std::uint64_t uiDigest = m_uiDigest;
    m_uiDigest = 0;
    return uiDigest;
}

std::string SoakDetectors::describeActivity() const {
    std::string strText;
    for (const Detector& detector : m_vDetectors) {
        for (const Feature& feature : detector.m_vFeatures) {
            strText += (strText.empty() ? "" : ", ") + feature.m_strName + ' ' +
                       std::to_string(feature.m_uiActive);
        }
    }
    return strText;
}

} // namespace Velmora::Benchmarks
