#include "OptimizerExpressionDataSpecializer.h"

#include <sstream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "ExpressionComplexity.h"
#include "OptimizerExpressionDataImpl.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.OptimizerExpressionDataSpecializer");

namespace {

/// A leaf is equal to itself only, whatever its value.
OptimizerKeyTable::Number makeLeafKey(OptimizerExpressionDataImpl& inout_Data) {
    return inout_Data.getKeys().insert("#" + std::to_string(inout_Data.getExpression()->getId()),
                                       {});
}

void writeParameter(std::ostream& out_Stream, const ParameterImpl& in_Parameter) {
    const ParameterImpl& leaf = in_Parameter.getLeafChild();
    out_Stream << '&' << in_Parameter.getName() << '%';
    if (leaf.hasDirectValue()) {
        out_Stream << leaf.getValue();
    } else {
        out_Stream << "paramId: " << leaf.getId();
    }
}

} // namespace

bool areKeysLogged() {
    return detail::isSiteEnabled(fileLogger(), ::log4cplus::DEBUG_LOG_LEVEL);
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
    return makeLeafKey(*m_pData);
}

template <>
OptimizerKeyTable::Number
OptimizerExpressionDataSpecializerImpl<DomainValueNoCopyImpl>::makeKeyNumber() {
    return makeLeafKey(*m_pData);
}

template <>
OptimizerKeyTable::Number OptimizerExpressionDataSpecializerImpl<VariableImpl>::makeKeyNumber() {
    const Handle<VariableImpl> pVar(m_pData->getExpression());
    if (pVar.isNull()) {
        VELMORA_ASSERT_FAIL("!pVar.isNull()");
        return makeLeafKey(*m_pData);
    }
    if (pVar->getValue().isNull()) {
        return m_pData->getKeys().insert(std::string("#") + pVar->getName(), {});
    }
    return m_pData->getKeyNumberOf(*pVar->getValue());
}

template <>
OptimizerKeyTable::Number
OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl>::makeKeyNumber() {
    const Handle<FunctionBaseImpl> pFunc(m_pData->getExpression());
    if (pFunc.isNull()) {
        VELMORA_ASSERT_FAIL("!pFunc.isNull()");
        return makeLeafKey(*m_pData);
    }
    std::string strHead = std::string("#") + pFunc->getName();
    if (pFunc->getParameterCount() != 0) {
        std::ostringstream stream;
        for (auto ite = pFunc->getParameterBegin(); ite != pFunc->getParameterEnd(); ++ite) {
            writeParameter(stream, *(*ite).second);
        }
        strHead += stream.str();
    }
    std::vector<OptimizerKeyTable::Number> vRest;
    for (auto ite = m_pData->getChildBegin(); ite != m_pData->getChildEnd(); ++ite) {
        vRest.push_back((*ite)->getKeyNumber());
    }
    return m_pData->getKeys().insert(std::move(strHead), std::move(vRest));
}

template class OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl>;
template class OptimizerExpressionDataSpecializerImpl<VariableImpl>;
template class OptimizerExpressionDataSpecializerImpl<ConstantImpl>;
template class OptimizerExpressionDataSpecializerImpl<DomainValueNoCopyImpl>;

} // namespace Velmora::Math::Xpr
