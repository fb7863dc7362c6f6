#include <velmora/math/xpr/XaryFunction.h>

#include <algorithm>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

namespace Velmora::Math::Xpr {

XaryFunctionNoT::XaryFunctionNoT() = default;

XaryFunctionNoT::XaryFunctionNoT(const char* in_szName) : FunctionBaseImpl(in_szName) {}

XaryFunctionNoT::~XaryFunctionNoT() {
    if (!isSealed()) {
        return;
    }
    for (const auto& pInput : m_Inputs) {
        if (!pInput.isNull()) {
            unregisterFrom(*pInput);
        }
    }
    for (const auto& pInput : m_Inputs) {
        if (!pInput.isNull()) {
            retireFrom(*pInput);
        }
    }
}

bool XaryFunctionNoT::configure_i(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool XaryFunctionNoT::reset_i() {
    return true;
}

bool XaryFunctionNoT::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

bool XaryFunctionNoT::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    if (!isSealed()) {
        m_Inputs.clear();
        for (auto iteArgument = getArgumentBegin(); iteArgument != getArgumentEnd();
             ++iteArgument) {
            m_Inputs.push_back(getChildAt(static_cast<long>((*iteArgument).second)));
        }
    }
    out = &m_Result;
    return calculate(m_Inputs, m_Result);
}

void XaryFunctionNoT::seal_i() {
    std::vector<Handle<ExpressionBaseImpl>> vFormerInputs;
    vFormerInputs.swap(m_Inputs);
    for (auto iteArgument = getArgumentBegin(); iteArgument != getArgumentEnd(); ++iteArgument) {
        const Handle<ExpressionBaseImpl> pExpr =
            getYoungerChild(getChildAt(static_cast<long>((*iteArgument).second)));
        if (pExpr.isNull()) {
            VELMORA_ASSERT_FAIL("!pExpr.isNull()");
        }
        m_Inputs.push_back(pExpr);
        if (!pExpr.isNull()) {
            pExpr->addParent(this);
        }
    }
    for (const auto& pFormer : vFormerInputs) {
        if (!pFormer.isNull() &&
            std::find(m_Inputs.begin(), m_Inputs.end(), pFormer) == m_Inputs.end()) {
            retireFrom(*pFormer);
        }
    }
}

Handle<ExpressionBaseImpl> XaryFunctionNoT::copy_i(ExpressionImplCopier& inout_Copier) const {
    const Handle<XaryFunctionNoT> pCopy = createNew();
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

} // namespace Velmora::Math::Xpr
