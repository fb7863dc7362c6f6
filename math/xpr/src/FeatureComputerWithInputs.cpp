#include <velmora/math/xpr/FeatureComputerWithInputs.h>

#include <algorithm>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

// Nothing is logged here, but a host finds a logger of every class when it sets levels.
VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.FeatureComputerWithInputs");

FeatureComputerWithInputs::FeatureComputerWithInputs() = default;

FeatureComputerWithInputs::FeatureComputerWithInputs(const char* in_szFeatureName)
    : FeatureComputer(in_szFeatureName) {}

bool FeatureComputerWithInputs::setInputNames(const std::vector<std::string>& in_vInputNames) {
    if (m_bSetUp) {
        return false;
    }
    m_vInputNames = in_vInputNames;
    return true;
}

bool FeatureComputerWithInputs::setupEvaluator() {
    m_bSetUp = true;
    if (std::find(m_vInputNames.begin(), m_vInputNames.end(), "") != m_vInputNames.end()) {
        VELMORA_LOG_ERROR(getLogger(), "an input of a feature computer must have a name");
        return false;
    }
    for (const std::string& strInputName : m_vInputNames) {
        auto* const pVariable = new VariableImpl;
        if (pVariable != nullptr) {
            pVariable->setName(strInputName.c_str());
        }
        getEvaluator()->addExpression(pVariable);
    }
    return FeatureComputer::setupEvaluator();
}

bool FeatureComputerWithInputs::setInput(const char* in_szName, const DoubleVector& in_vValue) {
    if (getEvaluator().isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pEvaluator.isNull()");
        return false;
    }
    const Handle<Variable> pVariable = getEvaluator()->getVariable(in_szName);
    return !pVariable.isNull() && pVariable->setValue(in_vValue);
}

} // namespace Velmora::Math::Xpr
