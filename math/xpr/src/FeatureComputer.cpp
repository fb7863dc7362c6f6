#include <velmora/math/xpr/FeatureComputer.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/OS.h>
#include <velmora/ParameterTrie.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.FeatureComputer");

FeatureComputer::FeatureComputer() : FeatureComputer("") {}

FeatureComputer::FeatureComputer(const char* in_szFeatureName)
    : m_strFeatureName(in_szFeatureName == nullptr ? "" : in_szFeatureName) {
    setLogger(CachedLLLogger(fileLogger()));
    if (in_szFeatureName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "in_szFeatureName");
    }
}

FeatureComputer::~FeatureComputer() = default;

bool FeatureComputer::setXprFilename(const char* in_szFileName,
                                     const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    if (!m_bSharedEvaluator && !m_pEvaluator.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "m_bSharedEvaluator || (!m_bSharedEvaluator && "
                                           "m_pEvaluator.isNull())");
        return false;
    }
    if (in_szFileName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "in_szFileName");
        return false;
    }
    m_strXprFilename = in_szFileName;
    if (m_bSharedEvaluator && m_pEvaluator.isNull()) {
        m_pFileSystem = in_pFileSystem;
        return true;
    }
    if (m_pEvaluator.isNull() && !makeEvaluator(in_pFileSystem)) {
        return false;
    }
    return setupEvaluator();
}

bool FeatureComputer::makeEvaluator(const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    VELMORA_LOG_DEBUG(getLogger(), "Creating evaluator for Xpr::FeatureComputer");
    m_pOwnedEvaluator = Handle<Evaluator>(new Evaluator);
    if (m_pOwnedEvaluator.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pOwnedEvaluator.isNull()");
        return false;
    }
    m_pEvaluator = m_pOwnedEvaluator;
    ParameterTrie config;
    config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", ParameterValue("."));
    return m_pEvaluator->configure(config, in_pFileSystem);
}

bool FeatureComputer::setEvaluator(const LimitedObjPtr<Evaluator>& in_pEvaluator) {
    if (!m_pEvaluator.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "m_pEvaluator.isNull()");
        return false;
    }
    m_pOwnedEvaluator = Handle<Evaluator>();
    m_pEvaluator = in_pEvaluator;
    m_bSharedEvaluator = true;
    if (m_strXprFilename.empty()) {
        return true;
    }
    const std::string strXprFilename(m_strXprFilename);
    const bool bResult = setXprFilename(strXprFilename.c_str(), m_pFileSystem);
    m_pFileSystem = TSHandle<VirtualFileSystem>();
    return bResult;
}

bool FeatureComputer::setupEvaluator() {
    if (!m_pEvaluator->addScript(m_strXprFilename.c_str())) {
        return false;
    }
    if (m_bSharedEvaluator) {
        return true;
    }
    const bool bLinked = m_pEvaluator->link(true);
    return m_pEvaluator->reconfigureExpressions() && bLinked;
}

bool FeatureComputer::findExpression() {
    std::string strScriptName;
    if (!OS::stripPathAndExtension(m_strXprFilename.c_str(), strScriptName)) {
        VELMORA_LOG_ERROR(getLogger(),
                          "Could not extract XPR script name from filename " << m_strXprFilename);
        return false;
    }
    const std::string strKey = strScriptName + '.' + m_strFeatureName;
    if (!m_pEvaluator.isNull()) {
        m_pExpressionPtr = m_pEvaluator->getExpression(strKey.c_str());
    }
    if (m_pExpressionPtr.isNull()) {
        VELMORA_LOG_ERROR(getLogger(), strKey << " is not a valid expression in this evaluator");
        VELMORA_ASSERT_FAIL_L(getLogger(), "false");
        return false;
    }
    return true;
}

bool FeatureComputer::computeFeatures(DoubleVector& out_vFeature) {
    if (m_pExpressionPtr.isNull() && !findExpression()) {
        return false;
    }
    if (!m_pExpressionPtr->evaluate(out_vFeature)) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "m_pExpressionPtr->evaluate(out_vFeature)");
        return false;
    }
    VELMORA_LOG_DEBUG(getLogger(),
                      "XprFeatureComputer: Feature " << m_strFeatureName << "=" << out_vFeature);
    return true;
}

bool FeatureComputer::reset() {
    return m_pExpressionPtr.isNull() || m_pExpressionPtr->reset();
}

void FeatureComputer::forget() {
    m_pFileSystem = TSHandle<VirtualFileSystem>();
    m_pEvaluator = nullptr;
    m_pExpressionPtr = Handle<Expression>();
    // Assigning an empty text would keep the memory.
    std::string().swap(m_strXprFilename);
    std::string().swap(m_strFeatureName);
    m_pOwnedEvaluator = Handle<Evaluator>();
    m_bSharedEvaluator = false;
}

} // namespace Velmora::Math::Xpr
