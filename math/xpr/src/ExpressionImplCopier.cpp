#include <velmora/math/xpr/ExpressionImplCopier.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/ParameterImpl.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.ExpressionImplCopier");

namespace {

template <class Map, class Source>
typename Map::mapped_type find(const Map& in_mapCopies, const Source& in_Source) {
    if (in_mapCopies.empty()) {
        return {};
    }
    const auto iteCopy = in_mapCopies.find(in_Source.getId());
    return iteCopy == in_mapCopies.end() ? typename Map::mapped_type() : iteCopy->second;
}

} // namespace

ExpressionImplCopier::ExpressionImplCopier()
    : m_mapExpressions(&m_Memory), m_mapParameters(&m_Memory) {}

ExpressionImplCopier::ExpressionImplCopier(std::size_t in_uiNodes) : ExpressionImplCopier() {
    m_uiExpected = in_uiNodes;
}

ExpressionImplCopier::~ExpressionImplCopier() = default;

Handle<ExpressionBaseImpl>
ExpressionImplCopier::getCopy(const ExpressionBaseImpl& in_Source) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionImplCopier::getCopy");
    return find(m_mapExpressions, in_Source);
}

Handle<ParameterImpl> ExpressionImplCopier::getParameterCopy(const ParameterImpl& in_Source) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionImplCopier::getParameterCopy");
    return find(m_mapParameters, in_Source);
}

bool ExpressionImplCopier::registerCopy(const ExpressionBaseImpl& in_Source,
                                        const Handle<ExpressionBaseImpl>& in_pCopy) {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionImplCopier::registerCopy");
    if (in_pCopy.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pCopy.isNull()");
        return false;
    }
    if (m_uiExpected != 0 && m_mapExpressions.empty()) {
        m_mapExpressions.reserve(m_uiExpected);
    }
    if (!m_mapExpressions.emplace(in_Source.getId(), in_pCopy).second) {
        VELMORA_LOG_ERROR(fileLogger(), "Original expression Id is already in map, should not "
                                        "have tried to register its copy.");
        return false;
    }
    return true;
}

bool ExpressionImplCopier::registerParameter(const ParameterImpl& in_Source,
                                             const Handle<ParameterImpl>& in_pCopy) {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionImplCopier::registerParameter");
    if (in_pCopy.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pCopy.isNull()");
        return false;
    }
    if (!m_mapParameters.emplace(in_Source.getId(), in_pCopy).second) {
        VELMORA_LOG_ERROR(fileLogger(), "Original Parameter Id is already in map, should not have "
                                        "tried to register its copy.");
        return false;
    }
    return true;
}

} // namespace Velmora::Math::Xpr
