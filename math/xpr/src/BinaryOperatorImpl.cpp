#include <velmora/math/xpr/BinaryOperatorImpl.h>

#include <ostream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/InvalidVariable.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

BinaryOperatorImplNoT::BinaryOperatorImplNoT() {
    initArguments();
}

BinaryOperatorImplNoT::BinaryOperatorImplNoT(const char* in_szName) : FunctionBaseImpl(in_szName) {
    initArguments();
}

BinaryOperatorImplNoT::~BinaryOperatorImplNoT() {
    if (!isSealed()) {
        return;
    }
    for (const auto* ppChild : {&m_pLeftChild, &m_pRightChild}) {
        if (!ppChild->isNull()) {
            unregisterFrom(**ppChild);
        }
    }
    for (const auto* ppChild : {&m_pLeftChild, &m_pRightChild}) {
        if (!ppChild->isNull()) {
            retireFrom(**ppChild);
        }
    }
}

void BinaryOperatorImplNoT::initArguments() {
    addArgument("Left");
    addArgument("Right");
}

const Handle<Variable>& BinaryOperatorImplNoT::getInvalidVariable() const {
    if (m_pInvalidVariable == nullptr) {
        m_pInvalidVariable = std::make_unique<Handle<Variable>>(new InvalidVariable);
    }
    return *m_pInvalidVariable;
}

const Handle<Variable>& BinaryOperatorImplNoT::getLeftArgument() const {
    if (m_pLeftArgument.isNull()) {
        const Function& function = *this;
        m_pLeftArgument = function.getArgument("Left");
    }
    if (!m_pLeftArgument.isNull()) {
        return m_pLeftArgument;
    }
    VELMORA_LOG_ERROR(fileLogger(), "Can't get left argument. Make sure it was successfully set "
                                    "before calling this method.");
    return getInvalidVariable();
}

const Handle<Variable>& BinaryOperatorImplNoT::getRightArgument() const {
    if (m_pRightArgument.isNull()) {
        const Function& function = *this;
        m_pRightArgument = function.getArgument("Right");
    }
    if (!m_pRightArgument.isNull()) {
        return m_pRightArgument;
    }
    VELMORA_LOG_ERROR(fileLogger(), "Can't get right argument. Make sure it was successfully set "
                                    "before calling this method.");
    return getInvalidVariable();
}

bool BinaryOperatorImplNoT::configure_i(const ROConfiguration&,
                                        const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool BinaryOperatorImplNoT::reset_i() {
    return true;
}

bool BinaryOperatorImplNoT::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

bool BinaryOperatorImplNoT::evaluateSides() {
    Expression& left = *getLeftArgument();
    if (!left.evaluate(m_pLeftValue)) {
        VELMORA_LOG_ERROR(fileLogger(), "Failed to evaluate left expression");
        return false;
    }
    Expression& right = *getRightArgument();
    if (!right.evaluate(m_pRightValue)) {
        VELMORA_LOG_ERROR(fileLogger(), "Failed to evaluate right expression");
        return false;
    }
    return true;
}

bool BinaryOperatorImplNoT::readSealedSides() {
    if (m_pLeftChild.isNull() || m_pRightChild.isNull()) {
        return reportNoValue();
    }
    readValue(*m_pLeftChild, m_pLeftValue);
    readValue(*m_pRightChild, m_pRightValue);
    return true;
}

bool BinaryOperatorImplNoT::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    if (isSealed() ? !readSealedSides() : !evaluateSides()) {
        return false;
    }
    if (m_pLeftValue.isNull() || m_pRightValue.isNull()) {
        return reportNoValue();
    }
    out = &m_Result;
    return calculate(*m_pLeftValue, *m_pRightValue, m_Result);
}

void BinaryOperatorImplNoT::seal_i() {
    const Handle<ExpressionBaseImpl> pFormerLeft(m_pLeftChild);
    const Handle<ExpressionBaseImpl> pFormerRight(m_pRightChild);
    m_pLeftChild = getYoungerChild(Handle<ExpressionBaseImpl>(getLeftArgument()));
    m_pRightChild = getYoungerChild(Handle<ExpressionBaseImpl>(getRightArgument()));
    for (const auto* ppChild : {&m_pLeftChild, &m_pRightChild}) {
        if (!ppChild->isNull()) {
            (*ppChild)->addParent(this);
        }
    }
    for (const auto* ppFormer : {&pFormerLeft, &pFormerRight}) {
        if (!ppFormer->isNull() && *ppFormer != m_pLeftChild && *ppFormer != m_pRightChild) {
            retireFrom(**ppFormer);
        }
    }
    forgetOtherValue(m_pLeftChild, m_pLeftValue);
    forgetOtherValue(m_pRightChild, m_pRightValue);
}

void BinaryOperatorImplNoT::forgetOtherValue(const Handle<ExpressionBaseImpl>& in_pChild,
                                             LimitedObjPtr<DoubleVector>& inout_pValue) {
    // A pointer into a node that computed the side before may outlive that node.
    if (in_pChild.isNull() || !isValueOf(*in_pChild, inout_pValue)) {
        inout_pValue = nullptr;
    }
}

Handle<ExpressionBaseImpl> BinaryOperatorImplNoT::copy_i(ExpressionImplCopier& inout_Copier) const {
    const Handle<BinaryOperatorImplNoT> pCopy = createNew();
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

std::ostream& BinaryOperatorImplNoT::write(std::ostream& out_Stream) const {
    return FunctionBaseImpl::write(out_Stream);
}

bool BinaryOperatorImplNoT::getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const {
    if (m_pLeftChild.isNull() || m_pRightChild.isNull()) {
        return false;
    }
    out_vInputs.push_back(&*m_pLeftChild);
    out_vInputs.push_back(&*m_pRightChild);
    return true;
}

} // namespace Velmora::Math::Xpr
