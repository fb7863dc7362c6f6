#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <algorithm>
#include <fstream>
#include <locale>

#include <velmora/DeepCall.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "DeferredRelease.h"
#include "GraphWalk.h"
#include "GraphvizFrame.h"
#include "GraphvizNodes.h"
#include "IdGenerators.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

ExpressionBaseImpl::ExpressionBaseImpl() : m_id(expressionIdGenerator().generateId()) {}

ExpressionBaseImpl::~ExpressionBaseImpl() {
    for (std::size_t uiChild = 0; uiChild != m_Childs.size(); ++uiChild) {
        const Handle<ExpressionBaseImpl> pChild(m_Childs[uiChild]);
        pChild->eraseParent(this);
    }
    if (m_pPlan != nullptr && m_uiPlanIndex != SealedPlan::PassedOver) {
        m_pPlan->noteDeath(m_uiPlanIndex);
    }
    releaseDeferred(m_Childs);
}

std::ostream& ExpressionBaseImpl::write(std::ostream& out_Stream) const {
    return out_Stream;
}

bool ExpressionBaseImpl::configure(const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    const GraphWalk::Outermost outermost;
    if (outermost && !GraphWalk::isShort(*this)) {
        return GraphWalk().configureRest(*this, in_pFileSystem);
    }
    if (!configure_i(in_pFileSystem)) {
        return false;
    }
    return std::all_of(m_Childs.begin(), m_Childs.end(), [&](const auto& in_pChild) {
        return DeepCall::run([&] { return in_pChild->configure(in_pFileSystem); });
    });
}

bool ExpressionBaseImpl::dump(const char* in_szFileName) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionBaseImpl::dump");
    if (in_szFileName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szFileName");
        return true;
    }
    std::ofstream file(in_szFileName, std::ios::out | std::ios::trunc);
    if (file.is_open()) {
        file.imbue(std::locale::classic());
        writeGraphvizHead(file);
        GraphvizNodes nodes(GraphWalk::isShort(*this));
        file << *this;
        nodes.writePending(file);
        writeGraphvizLegend(file, GraphvizLegend::WithParameter);
    }
    return true;
}

bool ExpressionBaseImpl::reset() {
    const GraphWalk::Outermost outermost;
    if (outermost && !GraphWalk::isShort(*this)) {
        for (ExpressionBaseImpl* pNode : GraphWalk().collect(*this)) {
            pNode->invalidate();
            if (!pNode->reset_i()) {
                return false;
            }
        }
        return true;
    }
    invalidate();
    if (!reset_i()) {
        return false;
    }
    return std::all_of(m_Childs.begin(), m_Childs.end(), [](const auto& in_pChild) {
        Expression& child = *in_pChild;
        return DeepCall::run([&] { return child.reset(); });
    });
}

void ExpressionBaseImpl::setType(const char* in_szType) {
    if (in_szType == nullptr) {
        VELMORA_ASSERT_FAIL("in_szType");
        return;
    }
    labels().m_strType = in_szType;
}

ExpressionBaseImpl::Labels& ExpressionBaseImpl::labels() const {
    if (m_pLabels == nullptr) {
        m_pLabels = std::make_unique<Labels>();
    }
    return *m_pLabels;
}

const char* ExpressionBaseImpl::getSourceInfo() const {
    if (m_Position.isSet() && labels().m_strSourceInfo.empty()) {
        labels().m_strSourceInfo = m_Position.getText();
    }
    return m_pLabels == nullptr ? "" : m_pLabels->m_strSourceInfo.c_str();
}

bool ExpressionBaseImpl::hasSourceInfo() const {
    return m_Position.isSet() || (m_pLabels != nullptr && !m_pLabels->m_strSourceInfo.empty());
}

void ExpressionBaseImpl::setSourceInfo(const char* in_szSourceInfo) {
    // It may be this node's own.
    std::string strSourceInfo(in_szSourceInfo == nullptr ? "" : in_szSourceInfo);
    if (!strSourceInfo.empty()) {
        labels();
    }
    setSourceInfo(SourcePosition());
    if (!strSourceInfo.empty()) {
        m_pLabels->m_strSourceInfo.swap(strSourceInfo);
    }
}

void ExpressionBaseImpl::setSourceInfo(const SourcePosition& in_Position) {
    m_Position = in_Position;
    if (m_pLabels != nullptr) {
        m_pLabels->m_strSourceInfo.clear();
    }
}

void ExpressionBaseImpl::copySourceInfo(const ExpressionBaseImpl& in_Source) {
    if (in_Source.m_Position.isSet()) {
        setSourceInfo(in_Source.m_Position);
    } else {
        setSourceInfo(in_Source.getSourceInfo());
    }
}

const char* ExpressionBaseImpl::getDotName() const {
    std::string& strDotName = labels().m_strDotName;
    makeDotName(getName(), m_id, strDotName);
    return strDotName.c_str();
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::copy() const {
    ExpressionImplCopier copier;
    return copy(copier);
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::copy(ExpressionImplCopier& inout_Copier) const {
    Handle<ExpressionBaseImpl> pCopy = inout_Copier.getCopy(*this);
    if (!pCopy.isNull()) {
        return pCopy;
    }
    pCopy = DeepCall::run([&] { return copy_i(inout_Copier); });
    if (pCopy.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Failed to copy the expression: " << *this);
        return pCopy;
    }
    if (!inout_Copier.registerCopy(*this, pCopy)) {
        VELMORA_ASSERT_FAIL("in_Copier.registerCopy( *this, pCopy )");
    }
    pCopy->fill(*this, inout_Copier);
    return pCopy;
}

void ExpressionBaseImpl::fill(const ExpressionBaseImpl& in_Source, ExpressionImplCopier&) {
    if (*in_Source.getType() != '\0' || *getType() != '\0') {
        labels().m_strType = in_Source.getType();
    }
    copySourceInfo(in_Source);
    *m_pValid = 0;
}

} // namespace Velmora::Math::Xpr
