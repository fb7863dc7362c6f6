#include <velmora/ParameterTrie.h>

namespace Velmora {

ParameterTrie::ParameterTrie() = default;
ParameterTrie::~ParameterTrie() = default;

bool ParameterTrie::getParameter(const char* in_szKey, ParameterValue& out_value) const {
    if (in_szKey == nullptr) {
        return false;
    }
    const auto it = m_mapParameters.find(in_szKey);
    if (it == m_mapParameters.end() || it->second.isEmpty()) {
        return false;
    }
    out_value = it->second;
    return true;
}

bool ParameterTrie::setParameter(const char* in_szKey, const ParameterValue& in_value) {
    if (in_szKey == nullptr) {
        return false;
    }
    m_mapParameters[in_szKey] = in_value;
    return true;
}

} // namespace Velmora
