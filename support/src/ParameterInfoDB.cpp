#include <velmora/ParameterInfoDB.h>

#include <velmora/Exception.h>

#include <tuple>

namespace Velmora {

namespace {

bool isSame(const ParameterInfo& in_a, const ParameterInfo& in_b) {
    const auto parts = [](const ParameterInfo& in_info) {
        return std::tie(in_info.key, in_info.kind, in_info.defaultValue, in_info.optional,
                        in_info.hidden, in_info.deprecated, in_info.description);
    };
    return parts(in_a) == parts(in_b);
}

} // namespace

ParameterInfoDB::ParameterInfoDB() = default;
ParameterInfoDB::~ParameterInfoDB() = default;

const ParameterInfoDB& ParameterInfoDB::getInstance() {
    return getNonConstInstance();
}

ParameterInfoDB& ParameterInfoDB::getNonConstInstance() {
    // Never destroyed: libraries that are unloaded last may still ask.
    static ParameterInfoDB* const s_pInstance = new ParameterInfoDB;
    return *s_pInstance;
}

void ParameterInfoDB::declareParameter(const char* in_szKey, int in_iKind,
                                       const ParameterValue* in_pDefault, bool in_bOptional,
                                       bool in_bHidden, bool in_bDeprecated,
                                       const char* in_szDescription) {
    if (in_szKey == nullptr || *in_szKey == '\0') {
        throw ExceptionWithMsg("can't declare a parameter without a key");
    }
    ParameterInfo info;
    info.key = in_szKey;
    info.kind = in_iKind;
    if (in_pDefault != nullptr) {
        info.defaultValue = *in_pDefault;
    }
    info.optional = in_bOptional;
    info.hidden = in_bHidden;
    info.deprecated = in_bDeprecated;
    info.description = in_szDescription == nullptr ? "" : in_szDescription;

    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto inserted = m_mapInfos.emplace(info.key, info);
    if (!inserted.second && !isSame(inserted.first->second, info)) {
        throw ExceptionWithMsg("parameter is already declared in another way: " + info.key);
    }
}

bool ParameterInfoDB::findParameter(const char* in_szKey, ParameterInfo& out_info) const {
    if (in_szKey == nullptr) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_mapInfos.find(in_szKey);
    if (it == m_mapInfos.end()) {
        return false;
    }
    out_info = it->second;
    return true;
}

std::vector<ParameterInfo> ParameterInfoDB::getParameters() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<ParameterInfo> vInfos;
    vInfos.reserve(m_mapInfos.size());
    for (const auto& item : m_mapInfos) {
        vInfos.push_back(item.second);
    }
    return vInfos;
}

} // namespace Velmora
