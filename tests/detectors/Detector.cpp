#include "Detector.h"

#include <gtest/gtest.h>

#include <velmora/DiskFileSystem.h>
#include <velmora/ParameterTrie.h>

namespace Velmora::Testing {

using namespace Math;
using namespace Math::Xpr;

Detector::Detector(const std::string& in_strName, const std::vector<std::string>& in_vFeatures,
                   const Framing& in_Framing)
    : m_Framing(in_Framing) {
    ParameterTrie config;
    config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                        ParameterValue(VELMORA_SOURCE_DIR "/examples/scripts"));
    EXPECT_TRUE(m_Evaluator.configure(config, TSHandle<VirtualFileSystem>(new DiskFileSystem)));
    EXPECT_TRUE(m_Evaluator.addScript(in_strName.c_str()));
    EXPECT_TRUE(m_Evaluator.link(true));
    m_pFrame = m_Evaluator.getVariable((in_strName + ".frame").c_str());
    for (const std::string& strFeature : in_vFeatures) {
        m_vFeatures.push_back(m_Evaluator.getExpression((in_strName + '.' + strFeature).c_str()));
        EXPECT_TRUE(m_vFeatures.back()->configure(TSHandle<VirtualFileSystem>())) << strFeature;
    }
}

std::vector<std::vector<double>> Detector::run(const Recordings::Signal& in_Signal) {
    for (const Handle<Expression>& pFeature : m_vFeatures) {
        EXPECT_TRUE(pFeature->reset());
    }
    const std::vector<short> vSamples = in_Signal.quantized();
    std::vector<std::vector<double>> vRows;
    DoubleVector vFrame;
    LimitedObjPtr<DoubleVector> pValue;
    for (std::size_t uiStart = 0; uiStart + m_Framing.m_uiSize <= vSamples.size();
         uiStart += m_Framing.m_uiHop) {
        vFrame.clear();
        for (std::size_t ui = uiStart; ui != uiStart + m_Framing.m_uiSize; ++ui) {
            vFrame.push_back(vSamples[ui] / 32768.0);
        }
        m_pFrame->setValue(vFrame);
        vRows.emplace_back();
        for (const Handle<Expression>& pFeature : m_vFeatures) {
            const bool bFound =
                pFeature->evaluate(pValue) && !pValue.isNull() && pValue->size() != 0;
            EXPECT_TRUE(bFound) << "frame at sample " << uiStart;
            vRows.back().push_back(bFound ? *pValue->begin() : 0.0);
        }
    }
    return vRows;
}

std::vector<double> Detector::runOne(const Recordings::Signal& in_Signal) {
    std::vector<double> vValues;
    for (const std::vector<double>& vRow : run(in_Signal)) {
        vValues.push_back(vRow.front());
    }
    return vValues;
}

} // namespace Velmora::Testing
