#include "OptimizerExpressionDataImpl.h"

#include <ostream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "OptimizerKeys.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.OptimizerExpressionData");

namespace {

OptimizerExpressionDataSpecializer* newSpecializer(const OptimizerExpressionDataImpl& in_Data,
                                                   OptimizerExpressionKind in_Kind) {
    switch (in_Kind) {
    case OptimizerExpressionKind::Function:
        return new OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl>(in_Data);
    case OptimizerExpressionKind::Variable:
        return new OptimizerExpressionDataSpecializerImpl<VariableImpl>(in_Data);
    case OptimizerExpressionKind::Constant:
        return new OptimizerExpressionDataSpecializerImpl<ConstantImpl>(in_Data);
    case OptimizerExpressionKind::DomainValue:
        return new OptimizerExpressionDataSpecializerImpl<DomainValueNoCopyImpl>(in_Data);
    case OptimizerExpressionKind::Unknown:
        break;
    }
    return nullptr;
}

} // namespace

OptimizerExpressionDataImpl::OptimizerExpressionDataImpl(
    OptimizerExpressionDataContainer& inout_Container,
    const Handle<ExpressionBaseImpl>& in_pExpression)
    : m_Container(inout_Container), m_pExpression(in_pExpression) {
    if (!m_pExpression.isNull()) {
        m_eKind = m_Container.getKinds().of(*m_pExpression);
    }
    if (m_eKind == OptimizerExpressionKind::Unknown) {
        VELMORA_ASSERT_FAIL("false && \"Unknown expression type\"");
        return;
    }
    getSpecializer();
}

OptimizerExpressionDataImpl::OptimizerExpressionDataImpl(
    OptimizerExpressionDataContainer& inout_Container,
    const Handle<ExpressionBaseImpl>& in_pExpression, OptimizerExpressionKind in_eKind)
    : m_Container(inout_Container), m_pExpression(in_pExpression), m_eKind(in_eKind) {}

bool OptimizerExpressionDataImpl::operator==(const OptimizerExpressionData& in_Other) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::operator==");
    return hash() == in_Other.hash() && getKeyNumber() == in_Other.getKeyNumber();
}

bool OptimizerExpressionDataImpl::operator!=(const OptimizerExpressionData& in_Other) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::operator!=");
    const OptimizerExpressionData& data = *this;
    return !(data == in_Other);
}

unsigned long OptimizerExpressionDataImpl::getComplexity() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getComplexity");
    OptimizerExpressionDataSpecializer* const pSpecializer = getSpecializer();
    return pSpecializer == nullptr ? 0 : pSpecializer->getComplexity();
}

const std::string& OptimizerExpressionDataImpl::key() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::key");
    if (!m_bKeySet) {
        OptimizerExpressionDataSpecializer* const pSpecializer = getSpecializer();
        m_strKey = pSpecializer == nullptr ? getKeys().text(getKeyNumber()) : pSpecializer->key();
        m_bKeySet = true;
    }
    return m_strKey;
}

std::size_t OptimizerExpressionDataImpl::hash() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::hash");
    if (!m_Hash.isValid()) {
        m_Hash = getKeys().hash(getKeyNumber());
    }
    return m_Hash;
}

bool OptimizerExpressionDataImpl::isValid() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::isValid");
    return m_bIsValid;
}

void OptimizerExpressionDataImpl::invalidate() {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::invalidate");
    if (!m_bIsValid) {
        return;
    }
    for (auto ite = getParentBegin(); ite != getParentEnd(); ++ite) {
        const CountedObjPtr<OptimizerExpressionData>& pParent = *ite;
        if (!pParent.isNull() && pParent->isValid()) {
            return;
        }
    }
    m_bIsValid = false;
    for (auto ite = getChildBegin(); ite != getChildEnd(); ++ite) {
        const CountedObjPtr<OptimizerExpressionData>& pChild = *ite;
        if (!pChild.isNull()) {
            pChild->invalidate();
        }
    }
}

const Handle<ExpressionBaseImpl>& OptimizerExpressionDataImpl::getExpression() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getExpression");
    return m_pExpression;
}

OptimizerKeyTable::Number OptimizerExpressionDataImpl::getKeyNumber() const {
    if (!m_KeyNumber.isValid()) {
        // Another visit of the same expression may have made the key before.
        const CountedObjPtr<OptimizerExpressionData>& pFirst = m_Container.get(*m_pExpression);
        m_KeyNumber =
            pFirst.isNull() || &*pFirst == this ? makeKeyNumber() : pFirst->getKeyNumber();
    }
    return m_KeyNumber;
}

OptimizerKeyTable::Number OptimizerExpressionDataImpl::makeKeyNumber() const {
    OptimizerExpressionDataSpecializer* const pSpecializer = getSpecializer();
    // Of an unknown kind nothing can be said but that it is equal to itself.
    return pSpecializer == nullptr ? insertLeafKey(getKeys(), *m_pExpression)
                                   : pSpecializer->makeKeyNumber();
}

OptimizerExpressionDataSpecializer* OptimizerExpressionDataImpl::getSpecializer() const {
    if (m_pSpecializer.isNull()) {
        m_pSpecializer = newSpecializer(*this, m_eKind);
    }
    return m_pSpecializer.get();
}

OptimizerKeyTable::Number
OptimizerExpressionDataImpl::getKeyNumberOf(const ExpressionBaseImpl& in_Expression) const {
    return m_Container.get(in_Expression)->getKeyNumber();
}

std::ostream& OptimizerExpressionDataImpl::write(std::ostream& out_Stream) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::write");
    if (m_pExpression.isNull()) {
        return out_Stream << "null";
    }
    return out_Stream << *m_pExpression;
}

OptimizerExpressionDataImpl::ChildIterator OptimizerExpressionDataImpl::getChildBegin() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getChildBegin");
    return ChildIterator(m_pExpression->getChildBegin(), m_Container);
}

OptimizerExpressionDataImpl::ChildIterator OptimizerExpressionDataImpl::getChildEnd() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getChildEnd");
    return ChildIterator(m_pExpression->getChildEnd(), m_Container);
}

OptimizerExpressionDataImpl::ParentIterator OptimizerExpressionDataImpl::getParentBegin() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getParentBegin");
    return ParentIterator(m_pExpression->getParentBegin(), m_Container);
}

OptimizerExpressionDataImpl::ParentIterator OptimizerExpressionDataImpl::getParentEnd() const {
    VELMORA_TRACE_SCOPE(fileLogger(), "OptimizerExpressionDataImpl::getParentEnd");
    return ParentIterator(m_pExpression->getParentEnd(), m_Container);
}

} // namespace Velmora::Math::Xpr
