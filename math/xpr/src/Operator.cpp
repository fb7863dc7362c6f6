#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Operator");

namespace {

bool isEmpty(const DoubleVector& in_vValue) {
    return in_vValue.size() == 0;
}

/// Addition and subtraction accept the same operands and complain in the same words.
bool checkElementWise(const char* in_szOperation, const DoubleVector& in_Left,
                      const DoubleVector& in_Right) {
    if (in_Left.size() != in_Right.size()) {
        VELMORA_LOG_ERROR(fileLogger(),
                          "Can't do the " << in_szOperation
                                          << " operation because argument's sizes are differents");
        return false;
    }
    if (isEmpty(in_Left)) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't do the "
                                            << in_szOperation
                                            << ", the left argument does not contain data");
        return false;
    }
    if (isEmpty(in_Right)) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't do the "
                                            << in_szOperation
                                            << ", the right argument does not contain data");
        return false;
    }
    return true;
}

/// Multiplication and division need data on both sides.
bool checkData(const char* in_szOperation, const DoubleVector& in_Left,
               const DoubleVector& in_Right) {
    if (isEmpty(in_Left) || isEmpty(in_Right)) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't do the " << in_szOperation << ", the "
                                                        << (isEmpty(in_Left) ? "left" : "right")
                                                        << " argument does not contain data");
        return false;
    }
    return true;
}

} // namespace

OperatorPlus::OperatorPlus() : BinaryOperatorImpl("add") {}

OperatorPlus::OperatorPlus(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

bool OperatorPlus::calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                             DoubleVector& out) {
    if (!checkElementWise("addition", in_Left, in_Right)) {
        return false;
    }
    out.setSum(in_Left, in_Right);
    return true;
}

OperatorMinus::OperatorMinus() : BinaryOperatorImpl("sub") {}

OperatorMinus::OperatorMinus(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

bool OperatorMinus::calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                              DoubleVector& out) {
    if (!checkElementWise("substraction", in_Left, in_Right)) {
        return false;
    }
    out.setDifference(in_Left, in_Right);
    return true;
}

OperatorMultiply::OperatorMultiply() : BinaryOperatorImpl("mult") {}

OperatorMultiply::OperatorMultiply(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

bool OperatorMultiply::calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                                 DoubleVector& out) {
    if (!checkData("multiplication", in_Left, in_Right)) {
        return false;
    }
    const bool bLeftIsScalar = in_Left.size() == 1;
    if (!bLeftIsScalar && in_Right.size() != 1) {
        VELMORA_LOG_ERROR(fileLogger(),
                          "Can't do the multiplication. One of the argument must have a size of "
                          "one. Only scalar multiplication a one dimension vector is supported.");
        return false;
    }
    const DoubleVector& vector = bLeftIsScalar ? in_Right : in_Left;
    out.setProduct(vector, bLeftIsScalar ? *in_Left.begin() : *in_Right.begin());
    return true;
}

OperatorDivide::OperatorDivide() : BinaryOperatorImpl("div") {}

OperatorDivide::OperatorDivide(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

bool OperatorDivide::calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                               DoubleVector& out) {
    if (!checkData("division", in_Left, in_Right)) {
        return false;
    }
    if (in_Right.size() > 1) {
        VELMORA_LOG_ERROR(fileLogger(),
                          "Can't do the division. The right argument must have a size of one. Only "
                          "scalar division on a one dimension vector is supported.");
        return false;
    }
    const double dDivisor = *in_Right.begin();
    if (dDivisor == 0.0) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't do the division. Tried to divide by '0'.");
        return false;
    }
    out.setQuotient(in_Left, dDivisor);
    return true;
}

OperatorSlice::OperatorSlice() : BinaryOperatorImpl("Slice") {}

OperatorSlice::OperatorSlice(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

bool OperatorSlice::calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                              DoubleVector& out) {
    out.clear();
    const double dSize = static_cast<double>(in_Left.size());
    for (const double dIndex : in_Right) {
        // Written so that a NaN is out of range as well; only what is in range can be converted.
        // Above -1, an index is cut off to 0, which an empty vector hasn't got.
        if (!(dIndex > -1.0 && std::max(dIndex, 0.0) < dSize)) {
            VELMORA_ASSERT_FAIL("uiIndex < in_Left.size()");
            return false;
        }
        const auto uiIndex = static_cast<std::size_t>(std::max(dIndex, 0.0));
        out.push_back(in_Left.begin()[uiIndex]);
    }
    return true;
}

OperatorConcatenate::OperatorConcatenate() = default;

OperatorConcatenate::OperatorConcatenate(const char* in_szName) : XaryFunction(in_szName) {}

const char* OperatorConcatenate::getNameStatic() {
    return "concat";
}

bool OperatorConcatenate::calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                                    DoubleVector& out) {
    if (inout_vInputs.empty() || inout_vInputs.front().isNull()) {
        return reportNoValue();
    }
    if (!inout_vInputs.front()->evaluate(out)) {
        return false;
    }
    for (std::size_t uiInput = 1; uiInput != inout_vInputs.size(); ++uiInput) {
        if (inout_vInputs[uiInput].isNull()) {
            return reportNoValue();
        }
        LimitedObjPtr<DoubleVector> pValue;
        if (!inout_vInputs[uiInput]->evaluate(pValue)) {
            return false;
        }
        if (!checkValue(pValue)) {
            return false;
        }
        if (out.size() + pValue->size() > MaxConcatenation) {
            VELMORA_LOG_ERROR(fileLogger(), getSourceInfo()
                                                << ":the concatenation has more elements than the "
                                                   "limit of "
                                                << MaxConcatenation);
            return false;
        }
        if (pValue->size() == 1) {
            out.push_back(*pValue->begin());
        } else {
            out.insert(out.end(), pValue->begin(), pValue->end());
        }
    }
    return true;
}

bool OperatorConcatenate::getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const {
    for (const auto& pInput : getInputs()) {
        if (pInput.isNull()) {
            return false;
        }
        out_vInputs.push_back(&*pInput);
    }
    return !getInputs().empty();
}

OperatorIf::OperatorIf() : XaryFunction("if") {}

OperatorIf::OperatorIf(const char* in_szName) : XaryFunction(in_szName) {}

const char* OperatorIf::getNameStatic() {
    return "if";
}

bool OperatorIf::calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                           DoubleVector& out) {
    if (inout_vInputs.size() < 3 || inout_vInputs[0].isNull()) {
        return reportNoValue();
    }
    LimitedObjPtr<DoubleVector> pCondition;
    if (!inout_vInputs[0]->evaluate(pCondition)) {
        return false;
    }
    if (pCondition.isNull() || isEmpty(*pCondition)) {
        return reportNoValue();
    }
    const Handle<ExpressionBaseImpl>& pBranch =
        *pCondition->begin() == 0.0 ? inout_vInputs[2] : inout_vInputs[1];
    if (pBranch.isNull()) {
        return reportNoValue();
    }
    pBranch->evaluate(out);
    return true;
}

} // namespace Velmora::Math::Xpr
