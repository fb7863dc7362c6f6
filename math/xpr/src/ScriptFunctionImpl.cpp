#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <ostream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "GraphvizNodes.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.xpr.ExpressionImpl");

namespace {

/// The name's address, which identifies a variable or a function. Null for leaves: their names are
/// made of values, which nobody has asked to be read.
const char* nameOf(const ExpressionBaseImpl& in_Expression) {
    const bool bNamed = dynamic_cast<const VariableImpl*>(&in_Expression) != nullptr ||
                        dynamic_cast<const FunctionBaseImpl*>(&in_Expression) != nullptr;
    return bNamed ? in_Expression.getName() : nullptr;
}

} // namespace

ScriptFunctionImpl::ScriptFunctionImpl(const char* in_szName) : FunctionBaseImpl(in_szName) {}

bool ScriptFunctionImpl::setImplementation(const Handle<Expression>& in_pImplementation) {
    if (in_pImplementation.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't set a null implementation");
        return false;
    }
    const Handle<ExpressionBaseImpl> pImplementation(in_pImplementation);
    if (pImplementation.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Must use same implementation base for all expressions.");
        return false;
    }
    addChild(pImplementation, true);
    m_pImplementation = pImplementation;
    return true;
}

bool ScriptFunctionImpl::configure_i(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool ScriptFunctionImpl::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    if (m_pImplementation.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "setImplementation() must be called before evaluate()");
        return false;
    }
    readValue(*m_pImplementation, out);
    return true;
}

bool ScriptFunctionImpl::reset_i() {
    return true;
}

void ScriptFunctionImpl::seal_i() {}

void ScriptFunctionImpl::replaceChild_i(ExpressionBaseImpl& in_OldChild,
                                        const Handle<ExpressionBaseImpl>& in_pNewChild) {
    if (m_pImplementation.isNull() || &*m_pImplementation != &in_OldChild) {
        return;
    }
    if (isValid()) {
        keepFormer(m_pImplementation, m_vFormerImplementations);
    } else {
        forgetValue();
        m_vFormerImplementations.clear();
    }
    m_pImplementation = in_pNewChild;
}

Handle<ExpressionBaseImpl> ScriptFunctionImpl::copy_i(ExpressionImplCopier& inout_Copier) const {
    Handle<ScriptFunctionImpl> pCopy(new ScriptFunctionImpl(""));
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

void ScriptFunctionImpl::fill(const ScriptFunctionImpl& in_Source,
                              ExpressionImplCopier& inout_Copier) {
    FunctionBaseImpl::fill(in_Source, inout_Copier);
    if (!in_Source.m_pImplementation.isNull()) {
        setImplementation(Handle<Expression>(in_Source.m_pImplementation->copy(inout_Copier)));
    }
}

bool ScriptFunctionImpl::isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const {
    const char* szName = nameOf(*in_pExpression);
    if (szName == nullptr) {
        return false;
    }
    if (szName == getName()) {
        return true;
    }
    // No two nodes have the same name, so that only the node itself can be the child.
    const auto* pFunction = dynamic_cast<const ScriptFunctionImpl*>(&*in_pExpression);
    return pFunction != nullptr && !pFunction->m_pImplementation.isNull() &&
           &*pFunction->m_pImplementation == this && isChild(*pFunction);
}

std::ostream& ScriptFunctionImpl::write(std::ostream& out_Stream) const {
    FunctionBaseImpl::write(out_Stream);
    if (!m_pImplementation.isNull()) {
        out_Stream << getDotName() << " -> { " << m_pImplementation->getDotName() << " }\n";
        GraphvizNodes::write(out_Stream, *m_pImplementation);
    }
    return out_Stream;
}

bool ScriptFunctionImpl::getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const {
    if (!m_pImplementation.isNull()) {
        out_vInputs.push_back(&*m_pImplementation);
    }
    return true;
}

const ScriptFunctionImpl::FormerNodes*
ScriptFunctionImpl::getFormer(Handle<ExpressionBaseImpl>& out_pPassedOn) const {
    if (m_pImplementation.isNull()) {
        return nullptr;
    }
    out_pPassedOn = m_pImplementation;
    return &m_vFormerImplementations;
}

} // namespace Velmora::Math::Xpr
