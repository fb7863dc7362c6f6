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

std::vector<Detector::Row> Detector::run(const Recordings::Signal& in_Signal) {
    for (const Handle<Expression>& pFeature : m_vFeatures) {
        EXPECT_TRUE(pFeature->reset());
    }
    const std::vector<short> vSamples = in_Signal.quantized();
    std::vector<Row> vRows;
    DoubleVector vFrame;
    for (std::size_t uiStart = 0; uiStart + m_Framing.m_uiSize <= vSamples.size();
         uiStart += m_Framing.m_uiHop) {
        vFrame.clear();
        for (std::size_t ui = uiStart; ui != uiStart + m_Framing.m_uiSize; ++ui) {
            vFrame.push_back(vSamples[ui] / 32768.0);
        }
        m_pFrame->setValue(vFrame);
        vRows.push_back(evaluate());
    }
    return vRows;
}

Detector::Row Detector::evaluate() {
    Row row;
    LimitedObjPtr<DoubleVector> pValue;
    for (const Handle<Expression>& pFeature : m_vFeatures) {
        if (pFeature->evaluate(pValue) && !pValue.isNull() && pValue->size() != 0) {
            row.emplace_back(pValue->begin(), pValue->end());
        } else {
            ADD_FAILURE() << "no value of feature " << row.size();
            row.emplace_back(1, 0.0);
        }
    }
    return row;
}

std::vector<double> Detector::runOne(const Recordings::Signal& in_Signal) {
    std::vector<double> vValues;
    for (const Row& row : run(in_Signal)) {
        vValues.push_back(row.front().front());
    }
    return vValues;
}

} // namespace Velmora::Testing
