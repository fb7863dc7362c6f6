#include "OptimizerExpressionDataSpecializer.h"

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "ExpressionComplexity.h"
#include "OptimizerExpressionDataImpl.h"
#include "OptimizerKeys.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.OptimizerExpressionDataSpecializer");
VELMORA_FILE_LOGGER(dataLogger, "quillmark.math.xpr.OptimizerExpressionData");

bool areKeysLogged() {
    return detail::isSiteEnabled(fileLogger(), ::log4cplus::DEBUG_LOG_LEVEL) ||
           detail::isSiteEnabled(dataLogger(), ::log4cplus::TRACE_LOG_LEVEL);
}

template <class T>
const std::string& OptimizerExpressionDataSpecializerImpl<T>::key() {
    m_strKey = m_pData->getKeys().text(m_pData->getKeyNumber());
    VELMORA_LOG_DEBUG(fileLogger(), m_strKey);
    return m_strKey;
}

template <class T>
unsigned long OptimizerExpressionDataSpecializerImpl<T>::getComplexity() {
    return ExpressionComplexity().of(*m_pData->getExpression());
}

template <>
OptimizerKeyTable::Number OptimizerExpressionDataSpecializerImpl<ConstantImpl>::makeKeyNumber() {
    return insertLeafKey(m_pData->getKeys(), *m_pData->getExpression());
}

template <>
OptimizerKeyTable::Number
OptimizerExpressionDataSpecializerImpl<DomainValueNoCopyImpl>::makeKeyNumber() {
    return insertLeafKey(m_pData->getKeys(), *m_pData->getExpression());
}

template <>
OptimizerKeyTable::Number OptimizerExpressionDataSpecializerImpl<VariableImpl>::makeKeyNumber() {
    const Handle<VariableImpl> pVar(m_pData->getExpression());
    if (pVar.isNull()) {
        VELMORA_ASSERT_FAIL("!pVar.isNull()");
        return insertLeafKey(m_pData->getKeys(), *m_pData->getExpression());
    }
    if (pVar->getValue().isNull()) {
        return insertNameKey(m_pData->getKeys(), *pVar);
    }
    return m_pData->getKeyNumberOf(*pVar->getValue());
}

template <>
OptimizerKeyTable::Number
OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl>::makeKeyNumber() {
    const Handle<FunctionBaseImpl> pFunc(m_pData->getExpression());
    if (pFunc.isNull()) {
        VELMORA_ASSERT_FAIL("!pFunc.isNull()");
        return insertLeafKey(m_pData->getKeys(), *m_pData->getExpression());
    }
    OptimizerKeyTable::Numbers vChilds;
    for (auto ite = m_pData->getChildBegin(); ite != m_pData->getChildEnd(); ++ite) {
        vChilds.push_back((*ite)->getKeyNumber());
    }
    return insertFunctionKey(m_pData->getKeys(), *pFunc, vChilds);
}

template class OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl>;
template class OptimizerExpressionDataSpecializerImpl<VariableImpl>;
template class OptimizerExpressionDataSpecializerImpl<ConstantImpl>;
template class OptimizerExpressionDataSpecializerImpl<DomainValueNoCopyImpl>;

} // namespace Velmora::Math::Xpr
