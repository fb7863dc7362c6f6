#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// A built-in function, as it describes itself.
struct Builtin {
    std::string m_strName;
    std::string m_strDescription;
    std::vector<std::string> m_vArguments;
    std::vector<std::string> m_vParameters;

    /// The way a script calls it, such as `energy<SampleRate>(x)`: of the parameters' keys the part
    /// that tells what they mean.
    std::string getCall() const;

    /// That part of the names of the parameters.
    std::vector<std::string> getShortParameters() const;
};

/// The built-in functions of the engine, in the order of their registration.
class Builtins {
public:
    static std::vector<std::string> getNames();
    static std::vector<Builtin> getAll();
    static std::optional<Builtin> find(const std::string& in_strName);

    /// Whether the built-in function of that name keeps something from frame to frame.
    static bool hasMemory(const std::string& in_strName);
};

} // namespace Vxpr
