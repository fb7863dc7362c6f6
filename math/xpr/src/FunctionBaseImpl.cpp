#include <velmora/math/xpr/FunctionBaseImpl.h>

#include <iterator>
#include <ostream>
#include <typeinfo>

#include <velmora/DeepCall.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "GraphvizNodes.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

FunctionBaseImpl::FunctionBaseImpl() : FunctionBaseImpl("unamed") {}

FunctionBaseImpl::FunctionBaseImpl(const char* in_szName) : m_strName("unamed") {
    setName(in_szName);
}

FunctionBaseImpl::~FunctionBaseImpl() {
    if (m_pParameters != nullptr) {
        *m_pParameters->m_pFunction = nullptr;
    }
}

FunctionBaseImpl::Parameters& FunctionBaseImpl::makeParameters() {
    if (m_pParameters == nullptr) {
        auto pParameters = std::make_unique<Parameters>();
        pParameters->m_pFunction = std::make_shared<LimitedObjPtr<FunctionBaseImpl>>(this);
        m_pParameters = std::move(pParameters);
    }
    return *m_pParameters;
}

const FunctionBaseImpl::ParameterMap& FunctionBaseImpl::parameters() const {
    // Never destroyed: a function may outlive what was initialised behind this library.
    static const ParameterMap& s_none = *new ParameterMap;
    return m_pParameters == nullptr ? s_none : m_pParameters->m_mapParameters;
}

void FunctionBaseImpl::setName(const char* in_szName) {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szName");
        return;
    }
    m_strName = in_szName;
}

Handle<Variable> FunctionBaseImpl::getArgument(std::size_t in_uiIndex) const {
    if (in_uiIndex >= getArgumentCount()) {
        VELMORA_LOG_ERROR(fileLogger(), "Argument " << in_uiIndex << " does not exist for function "
                                                    << m_strName << ".  This function expects "
                                                    << getArgumentCount() << " argument(s).");
        return Handle<Variable>();
    }
    const auto iteArgument = std::next(getArgumentBegin(), static_cast<std::ptrdiff_t>(in_uiIndex));
    return Handle<Variable>(getChildAt(static_cast<long>((*iteArgument).second)));
}

Handle<Parameter> FunctionBaseImpl::getParameter(std::size_t in_uiIndex) const {
    if (in_uiIndex >= getParameterCount()) {
        VELMORA_LOG_ERROR(fileLogger(), "Parameter " << in_uiIndex
                                                     << " does not exist for function " << m_strName
                                                     << ".  This function expects "
                                                     << getParameterCount() << " parameter(s).");
        return Handle<Parameter>();
    }
    const auto iteParameter =
        std::next(getParameterBegin(), static_cast<std::ptrdiff_t>(in_uiIndex));
    return Handle<Parameter>((*iteParameter).second);
}

Handle<Variable> FunctionBaseImpl::getArgument(const char* in_szArgumentName) const {
    if (in_szArgumentName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szArgumentName");
        return Handle<Variable>();
    }
    if (getArgumentCount() == 1) {
        return getArgument(std::size_t(0));
    }
    const auto iteArgument = m_Arguments.find(in_szArgumentName);
    return iteArgument == m_Arguments.end() ? Handle<Variable>()
                                            : Handle<Variable>(getArgument(iteArgument));
}

Handle<Parameter> FunctionBaseImpl::getParameter(const char* in_szName) const {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szName");
        return Handle<Parameter>();
    }
    const auto iteParameter = parameters().find(in_szName);
    if (iteParameter == parameters().end()) {
        VELMORA_LOG_ERROR(fileLogger(), "Unknown parameter name: " << in_szName);
        return Handle<Parameter>();
    }
    return Handle<Parameter>((*iteParameter).second);
}

Handle<VariableImpl> FunctionBaseImpl::getArgument(const ArgumentIterator& in_iteArgument) const {
    const Handle<ExpressionBaseImpl> pChild(
        getChildAt(static_cast<long>((*in_iteArgument).second)));
    VariableImpl* const pVar = pChild.isNull() ? nullptr : pChild->asVariable();
    if (pVar == nullptr) {
        VELMORA_ASSERT_FAIL("!pVar.isNull()");
    }
    return Handle<VariableImpl>(pVar, pChild);
}

bool FunctionBaseImpl::addArgument(const char* in_szArgumentName) {
    if (in_szArgumentName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szArgumentName");
        return false;
    }
    return addArgument(in_szArgumentName, Handle<VariableImpl>(new Argument));
}

bool FunctionBaseImpl::addArgument(const char* in_szArgumentName,
                                   Handle<VariableImpl> in_pArgument) {
    if (in_szArgumentName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szArgumentName");
        return false;
    }
    if (in_pArgument.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pArgument.isNull()");
        return false;
    }
    const std::string strKey(in_szArgumentName);
    std::string strName(strKey);
    strName += '&';
    strName += std::to_string(getId());
    in_pArgument->setName(strName.c_str());
    const auto iteArgument = m_Arguments.find(strKey);
    if (iteArgument == m_Arguments.end()) {
        m_Arguments.insert(strKey, addChild(Handle<ExpressionBaseImpl>(in_pArgument), true));
    } else if (const Handle<VariableImpl> pExisting = getArgument(iteArgument);
               !pExisting.isNull()) {
        replaceChild(*pExisting, Handle<ExpressionBaseImpl>(in_pArgument), true);
    }
    return true;
}

bool FunctionBaseImpl::addParameter(const char* in_szParameterName) {
    if (in_szParameterName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szParameterName");
        return false;
    }
    return addParameter(in_szParameterName, Handle<ParameterImpl>(new ParameterImpl));
}

bool FunctionBaseImpl::addParameter(const char* in_szParameterName,
                                    const Handle<ParameterImpl>& in_pParameter) {
    if (in_szParameterName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szParameterName");
        return false;
    }
    if (in_pParameter.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pParam.isNull()");
        return false;
    }
    in_pParameter->setParentFunction(this);
    in_pParameter->setName(in_szParameterName);
    if (!makeParameters().m_mapParameters.insert(in_szParameterName, in_pParameter).second) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't add the parameter. The function "
                                            << m_strName << "already had one parameter named: "
                                            << in_szParameterName);
        return false;
    }
    m_bConfigured = false;
    return true;
}

bool FunctionBaseImpl::configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    invalidate();
    ParameterTrie config;
    for (const auto& entry : parameters()) {
        const Handle<Parameter> pParam(entry.second);
        if (pParam.isNull()) {
            VELMORA_ASSERT_FAIL("!pParam.isNull()");
            return false;
        }
        if (!config.setParameter(pParam->getName(), pParam->getValue())) {
            VELMORA_ASSERT_FAIL("Config.setParameter( pParam->getName(), pParam->getValue() )");
            return false;
        }
    }
    if (!configure_i(config, in_pFileSystem)) {
        VELMORA_LOG_ERROR(fileLogger(), "failed to configure function: " << m_strName);
        return false;
    }
    return true;
}

bool FunctionBaseImpl::replace(const Handle<ExpressionBaseImpl>& in_pNewExpression) {
    const Handle<ExpressionBaseImpl> pThis = holdByParent();
    if (!ExpressionBaseImpl::replace(in_pNewExpression)) {
        return false;
    }
    const Handle<FunctionBaseImpl> pFunction(in_pNewExpression);
    if (pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!pFunction.isNull()");
        return false;
    }
    for (const auto& entry : parameters()) {
        const Handle<ParameterImpl> pParameter(entry.second);
        const Function& function = *pFunction;
        pParameter->replace(Handle<ParameterImpl>(function.getParameter(pParameter->getName())));
    }
    return true;
}

void FunctionBaseImpl::fill(const FunctionBaseImpl& in_Source, ExpressionImplCopier& inout_Copier) {
    setName(in_Source.getName());
    m_bConfigured = true;
    for (auto iteArgument = in_Source.getArgumentBegin(); iteArgument != in_Source.getArgumentEnd();
         ++iteArgument) {
        const Handle<VariableImpl> pArgument = in_Source.getArgument(iteArgument);
        if (!pArgument.isNull() && !copyToOwnArgument(iteArgument, *pArgument, inout_Copier)) {
            addArgument((*iteArgument).first.c_str(),
                        Handle<VariableImpl>(pArgument->copy(inout_Copier)));
        }
    }
    for (const auto& entry : in_Source.parameters()) {
        addParameter(entry.second->getName(), entry.second->copy(inout_Copier));
    }
    ExpressionBaseImpl::fill(in_Source, inout_Copier);
}

bool FunctionBaseImpl::copyToOwnArgument(const ArgumentIterator& in_iteSource,
                                         const VariableImpl& in_Source,
                                         ExpressionImplCopier& inout_Copier) {
    // Operators make their arguments themselves, and to put copies in their place would double the
    // work of every copy of a graph.
    const auto iteOwn = m_Arguments.find((*in_iteSource).first);
    if (iteOwn == m_Arguments.end() || typeid(in_Source) != typeid(Argument)) {
        return false;
    }
    const Handle<ExpressionBaseImpl> pOwn(getChildAt(static_cast<long>((*iteOwn).second)));
    if (pOwn.isNull()) {
        return false;
    }
    ExpressionBaseImpl& child = *pOwn;
    if (typeid(child) != typeid(Argument) || child.getChildBegin() != child.getChildEnd() ||
        !inout_Copier.getCopy(in_Source).isNull()) {
        return false;
    }
    auto& own = static_cast<Argument&>(child);
    DeepCall::run([&] { own.becomeCopyOf(static_cast<const Argument&>(in_Source), inout_Copier); });
    if (!inout_Copier.registerCopy(in_Source, pOwn)) {
        VELMORA_ASSERT_FAIL("in_Copier.registerCopy( *this, pCopy )");
    }
    return true;
}

std::ostream& FunctionBaseImpl::write(std::ostream& out_Stream) const {
    ExpressionBaseImpl::write(out_Stream);
    out_Stream << "subgraph cluster" << getId() << "{\n"
               << getDotName() << " [shape=oval]\n"
               << "{rank=same; ";
    for (const auto& entry : parameters()) {
        out_Stream << entry.second->getDotName() << ' ';
    }
    out_Stream << "}\n"
               << "{rank=same; ";
    for (const auto& entry : m_Arguments) {
        const auto pArgument = getChildAt(static_cast<long>(entry.second));
        if (!pArgument.isNull()) {
            out_Stream << pArgument->getDotName() << ' ';
        }
    }
    out_Stream << "}\n"
               << "}\n";
    for (const auto& entry : m_Arguments) {
        const auto pArgument = getChildAt(static_cast<long>(entry.second));
        if (pArgument.isNull()) {
            out_Stream << "null";
        } else {
            GraphvizNodes::write(out_Stream, *pArgument);
        }
    }
    for (const auto& entry : parameters()) {
        out_Stream << *entry.second;
    }
    return out_Stream;
}

} // namespace Velmora::Math::Xpr
