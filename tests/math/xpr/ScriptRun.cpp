#include "ScriptRun.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Variable.h>

#include "RandomScript.h"

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

namespace {

bool haveSameBits(double in_dA, double in_dB) {
    return std::memcmp(&in_dA, &in_dB, sizeof(double)) == 0 ||
           (std::isnan(in_dA) && std::isnan(in_dB));
}

} // namespace

bool FeatureValue::operator==(const FeatureValue& in_Other) const {
    return m_bSuccess == in_Other.m_bSuccess &&
           std::equal(m_vElements.begin(), m_vElements.end(), in_Other.m_vElements.begin(),
                      in_Other.m_vElements.end(), haveSameBits);
}

ScriptRun::ScriptRun(const std::string& in_strText, const std::vector<std::string>& in_vFeatures,
                     bool in_bOptimize)
    : m_pEvaluator(std::make_unique<Evaluator>()), m_vFeatures(in_vFeatures) {
    ParameterTrie config;
    config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                        ParameterValue("/nonexistent"));
    std::istringstream stream(in_strText);
    m_bReady = m_pEvaluator->configure(config, TSHandle<VirtualFileSystem>()) &&
               m_pEvaluator->addScript(stream, "s") && m_pEvaluator->link(in_bOptimize) &&
               configureFeatures();
}

bool ScriptRun::configureFeatures() {
    return std::all_of(m_vFeatures.begin(), m_vFeatures.end(), [this](const auto& in_strName) {
        const Handle<Expression> pFeature =
            m_pEvaluator->getExpression(("s." + in_strName).c_str());
        return !pFeature.isNull() && pFeature->configure(TSHandle<VirtualFileSystem>());
    });
}

std::unique_ptr<ScriptRun> ScriptRun::clone() const {
    std::unique_ptr<ScriptRun> pCopy(new ScriptRun);
    pCopy->m_pEvaluator = std::make_unique<Evaluator>(*m_pEvaluator);
    pCopy->m_vFeatures = m_vFeatures;
    pCopy->m_bReady = m_bReady;
    return pCopy;
}

const std::vector<std::string>& ScriptRun::getInputNames() {
    static const std::vector<std::string> s_vNames{"left", "right", "scalar"};
    return s_vNames;
}

std::vector<DoubleVector> ScriptRun::makeInputs(std::size_t in_uiFrame) {
    std::mt19937_64 random(in_uiFrame + 1);
    const auto number = [&random] {
        return static_cast<double>(static_cast<std::int64_t>(random() % 2001) - 1000) / 250.0;
    };
    std::vector<DoubleVector> vInputs(3);
    for (std::size_t ui = 0; ui != RandomScript::FrameSize; ++ui) {
        vInputs[0].push_back(number());
        vInputs[1].push_back(number());
    }
    // Zero now and then, so that conditions change.
    vInputs[2].push_back(in_uiFrame % 3 == 0 ? 0.0 : number());
    return vInputs;
}

FrameValues ScriptRun::computeFrame(std::size_t in_uiFrame) {
    // The vectors of the frame before live until the last input has been set.
    std::vector<DoubleVector> vInputs = makeInputs(in_uiFrame);
    for (std::size_t ui = 0; ui != vInputs.size(); ++ui) {
        const std::string strName = "s." + getInputNames()[ui];
        m_pEvaluator->getVariable(strName.c_str())->setValue(vInputs[ui]);
    }
    m_vInputs.swap(vInputs);
    FrameValues vValues;
    for (const std::string& strName : m_vFeatures) {
        DoubleVector vValue;
        FeatureValue value;
        value.m_bSuccess = m_pEvaluator->getExpression(("s." + strName).c_str())->evaluate(vValue);
        value.m_vElements.assign(vValue.begin(), vValue.end());
        vValues.push_back(value);
    }
    return vValues;
}

std::vector<FrameValues> ScriptRun::computeFrames(std::size_t in_uiFirst, std::size_t in_uiLast) {
    std::vector<FrameValues> vFrames;
    for (std::size_t uiFrame = in_uiFirst; uiFrame != in_uiLast; ++uiFrame) {
        vFrames.push_back(computeFrame(uiFrame));
    }
    return vFrames;
}

bool ScriptRun::reset() {
    return std::all_of(m_vFeatures.begin(), m_vFeatures.end(), [this](const auto& in_strName) {
        return m_pEvaluator->getExpression(("s." + in_strName).c_str())->reset();
    });
}
