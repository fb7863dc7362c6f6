#pragma once

#include <velmora/Object.h>
#include <velmora/ParameterValue.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Velmora {

/// What is known of a declared configuration parameter.
struct VELMORA_EXPORT ParameterInfo {
    /// The name of the parameter.
    std::string key;
    /// The tag of its values.
    int kind = ParameterValue::EmptyTag;
    /// Empty if there is none.
    ParameterValue defaultValue;
    /// False: whoever reads the parameter fails without it.
    bool optional = false;

    /// For the documentation: not shown to users; not to be used any more.
    bool hidden = false;
    bool deprecated = false;

    /// What the parameter is for.
    std::string description;
};

/// The process-wide table of declared configuration parameters, for documentation and for hosts
/// that validate what they pass.
///
/// Libraries declare their parameters while they load. Thread-safe.
class VELMORA_EXPORT ParameterInfoDB : public virtual Object {
public:
    /// The one table of the process.
    static const ParameterInfoDB& getInstance();
    static ParameterInfoDB& getNonConstInstance();

    ParameterInfoDB(const ParameterInfoDB&) = delete;
    ParameterInfoDB& operator=(const ParameterInfoDB&) = delete;
    ~ParameterInfoDB() override;

    /// Declares a parameter; a null default is none. Repeating a declaration word for word does
    /// nothing, as two copies of a library in a process do.
    /// Throws an `Exception`, and leaves the table alone, if the key is null or empty or was
    /// declared otherwise.
    virtual void declareParameter(const char* in_szKey, int in_iKind,
                                  const ParameterValue* in_pDefault, bool in_bOptional,
                                  bool in_bHidden, bool in_bDeprecated,
                                  const char* in_szDescription);

    /// Whether the key is declared; if so, `out_info` tells the rest.
    bool findParameter(const char* in_szKey, ParameterInfo& out_info) const;

    /// Every declared parameter, sorted by key.
    std::vector<ParameterInfo> getParameters() const;

private:
    ParameterInfoDB();

    mutable std::mutex m_mutex;
    std::map<std::string, ParameterInfo> m_mapInfos;
};

} // namespace Velmora
