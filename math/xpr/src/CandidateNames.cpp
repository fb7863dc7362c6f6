#include "CandidateNames.h"

namespace Velmora::Math::Xpr {

CandidateNames::CandidateNames(const char* in_szName) : m_strName(in_szName) {
    const std::size_t uiPoint = m_strName.find('.');
    if (uiPoint != std::string::npos) {
        m_uiRest = uiPoint + 1;
        const bool bTwoParts = m_strName.find('.', m_uiRest) == std::string::npos;
        m_eNext = bTwoParts ? Form::Whole : Form::Rest;
    }
}

bool CandidateNames::next(std::string& out_strCandidate) {
    switch (m_eNext) {
    case Form::Whole:
        out_strCandidate = m_strName;
        m_eNext = Form::Twice;
        return true;
    case Form::Twice:
        out_strCandidate.assign(m_strName, m_uiRest).append(1, '.').append(m_strName, m_uiRest);
        m_eNext = Form::Rest;
        return true;
    case Form::Rest:
        out_strCandidate.assign(m_strName, m_uiRest);
        m_eNext = Form::None;
        return true;
    case Form::None:
        break;
    }
    return false;
}

} // namespace Velmora::Math::Xpr
