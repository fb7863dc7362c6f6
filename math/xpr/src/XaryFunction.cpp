#include <velmora/math/xpr/XaryFunction.h>

#include <algorithm>
#include <unordered_set>

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
    retireFrom(m_Inputs);
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
    // Sealed once more over the same inputs it keeps all of them.
    if (vFormerInputs == m_Inputs) {
        return;
    }
    std::unordered_set<const ExpressionBaseImpl*> kept;
    for (const auto& pInput : m_Inputs) {
        kept.insert(pInput.get());
    }
    const auto isKept = [&](const auto& in_pFormer) { return kept.count(in_pFormer.get()) != 0; };
    vFormerInputs.erase(std::remove_if(vFormerInputs.begin(), vFormerInputs.end(), isKept),
                        vFormerInputs.end());
    retireFrom(vFormerInputs);
}

Handle<ExpressionBaseImpl> XaryFunctionNoT::copy_i(ExpressionImplCopier& inout_Copier) const {
    const Handle<XaryFunctionNoT> pCopy = createNew();
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

} // namespace Velmora::Math::Xpr
