#include <velmora/math/xpr/ParameterImpl.h>

#include <algorithm>
#include <iterator>
#include <ostream>

#include <velmora/DeepCall.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

#include "GraphvizFrame.h"
#include "IdGenerators.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.xpr.ExpressionImpl");

ParameterImpl::ParameterImpl() : m_id(parameterIdGenerator().generateId()) {}

ParameterImpl::ParameterImpl(const ParameterImpl& in_Other) = default;

ParameterImpl::~ParameterImpl() {
    if (m_pChild.isNull()) {
        return;
    }
    m_pChild->removeParent(this);
    // What only this chain holds goes link by link, so that a long chain needs no deep stack.
    Handle<ParameterImpl> pLink(std::move(m_pChild));
    while (!pLink.isNull() && pLink.getReferenceCount() == 1) {
        Handle<ParameterImpl> pNext(std::move(pLink->m_pChild));
        if (!pNext.isNull()) {
            pNext->removeParent(&*pLink);
        }
        pLink = std::move(pNext);
    }
}

void ParameterImpl::setName(const char* in_szName) {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL("in_szName");
        return;
    }
    m_strName = in_szName;
}

bool ParameterImpl::setValue(const ParameterValue& in_Value) {
    if (FunctionBaseImpl* const pFunction = getParentFunction()) {
        pFunction->invalidateConfig();
    }
    m_Value = in_Value;
    return true;
}

bool ParameterImpl::setValue(const Handle<Parameter>& in_pParameter) {
    if (!m_pChild.isNull()) {
        m_pChild->removeParent(this);
    }
    const Handle<ParameterImpl> pParameter(in_pParameter);
    if (!in_pParameter.isNull() && pParameter.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Must use same implementation base for all parameters.");
        return false;
    }
    setChild(pParameter);
    FunctionBaseImpl* const pFunction = getParentFunction();
    if (pFunction == nullptr) {
        VELMORA_ASSERT_FAIL("!m_pParentFunction.isNull()");
        return true;
    }
    pFunction->invalidateConfig();
    return true;
}

const ParameterValue& ParameterImpl::getValue() const {
    return getLeafChild().m_Value;
}

const ParameterImpl& ParameterImpl::getLeafChild() const {
    const ParameterImpl* pLeaf = this;
    while (!pLeaf->m_pChild.isNull()) {
        pLeaf = &*pLeaf->m_pChild;
    }
    return *pLeaf;
}

bool ParameterImpl::setParentFunction(const LimitedObjPtr<FunctionBaseImpl>& in_pFunction) {
    if (in_pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunc.isNull()");
        return false;
    }
    m_pParentFunction = in_pFunction->makeParameters().m_pFunction;
    return true;
}

FunctionBaseImpl* ParameterImpl::getParentFunction() const {
    return m_pParentFunction == nullptr ? nullptr : m_pParentFunction->get();
}

void ParameterImpl::copyValue(ParameterImpl& out_Destination) const {
    if (hasDirectValue()) {
        out_Destination.setValue(getValue());
    } else {
        out_Destination.setValue(Handle<Parameter>(m_pChild));
    }
}

Handle<ParameterImpl> ParameterImpl::copy(ExpressionImplCopier& inout_Copier) const {
    Handle<ParameterImpl> pCopy = inout_Copier.getParameterCopy(*this);
    if (!pCopy.isNull()) {
        return pCopy;
    }
    pCopy = Handle<ParameterImpl>(new ParameterImpl);
    if (pCopy.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Failed to copy the parameter: " << *this);
        return pCopy;
    }
    pCopy->setName(getName());
    if (hasDirectValue()) {
        Parameter& parameter = *pCopy;
        parameter.setValue(getValue());
    } else if (!m_pChild.isNull()) {
        pCopy->setChild(DeepCall::run([&] { return m_pChild->copy(inout_Copier); }));
    }
    if (!inout_Copier.registerParameter(*this, pCopy)) {
        VELMORA_ASSERT_FAIL("in_Copier.registerParameter( *this, pCopy )");
    }
    return pCopy;
}

bool ParameterImpl::replace(const Handle<ParameterImpl>& in_pNewParameter) {
    if (!in_pNewParameter.isNull() && &*in_pNewParameter == this) {
        VELMORA_ASSERT_FAIL("in_pNewParameter != this");
        return false;
    }
    // The parents may hold the last handle of this parameter.
    Handle<ParameterImpl> pThis;
    for (auto iteParent = m_Parents.begin(); iteParent != m_Parents.end();) {
        ParameterImpl& parent = **iteParent;
        ++iteParent;
        if (!parent.m_pChild.isNull() && &*parent.m_pChild == this) {
            pThis = parent.m_pChild;
        }
        parent.setChild(in_pNewParameter);
    }
    return true;
}

const char* ParameterImpl::getDotName() const {
    makeDotName(getName(), m_id, m_strDotName);
    return m_strDotName.c_str();
}

std::ostream& ParameterImpl::write(std::ostream& out_Stream) const {
    out_Stream << getDotName() << " [shape=note";
    if (hasDirectValue()) {
        out_Stream << " label=\"" << getDotName() << " \\n" << getValue() << '"';
    }
    out_Stream << "]\n"
                  "edge [style=invis,color=green]\n";
    for (const auto& pParent : m_Parents) {
        out_Stream << getDotName() << " -> {" << pParent->getDotName() << " }\n";
    }
    if (!m_pChild.isNull()) {
        out_Stream << "edge [style=solid,color=green]\n"
                   << getDotName() << " -> {" << m_pChild->getDotName() << " }\n";
    }
    return out_Stream << "edge [style=solid,color=blue]\n";
}

void ParameterImpl::addParent(const LimitedObjPtr<ParameterImpl>& in_pParent) {
    m_Parents.push_back(in_pParent);
}

bool ParameterImpl::removeParent(const LimitedObjPtr<ParameterImpl>& in_pParent) {
    const auto iteParent =
        std::find_if(m_Parents.begin(), m_Parents.end(),
                     [&](const auto& in_pEntry) { return &*in_pEntry == &*in_pParent; });
    if (iteParent == m_Parents.end()) {
        VELMORA_LOG_ERROR(fileLogger(), "Specified parameter is not a valid parent");
        return false;
    }
    m_Parents.erase(iteParent);
    return true;
}

bool ParameterImpl::setChild(const Handle<ParameterImpl>& in_pChild) {
    if (!m_pChild.isNull()) {
        m_pChild->removeParent(this);
    }
    m_pChild = in_pChild;
    if (!m_pChild.isNull()) {
        m_pChild->addParent(this);
    }
    return true;
}

} // namespace Velmora::Math::Xpr
