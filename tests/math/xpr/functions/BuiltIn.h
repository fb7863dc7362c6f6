#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/ParameterValue.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Testing {

using Values = std::vector<double>;

/// A node of a built-in function, fed by hand.
class BuiltIn {
public:
    /// A new node from the registry. The name has to be registered.
    explicit BuiltIn(const std::string& in_strName);
    explicit BuiltIn(Handle<Math::Xpr::FunctionBaseImpl> in_pNode);

    // The arguments point at the vectors that it holds.
    BuiltIn(const BuiltIn&) = delete;
    BuiltIn(BuiltIn&&) = default;
    BuiltIn& operator=(const BuiltIn&) = delete;

    /// Sets a parameter, by its key.
    BuiltIn& set(const std::string& in_strKey, const ParameterValue& in_value);

    /// Reads the parameters, as a host does before the first frame.
    bool configure();

    /// Gives the arguments values, in their order, without evaluating. Allocates nothing for sizes
    /// that were there before.
    void feed(const std::vector<Values>& in_arguments);

    /// Feeds and evaluates. The result as text, such as "[1 -0 nan]" with each value in the
    /// shortest form that reads back as the same double, or "no result".
    std::string operator()(const std::vector<Values>& in_arguments);

    /// Evaluates as it stands; null for no result.
    const Math::DoubleVector* evaluate();

    /// A copy of the graph of the node, with arguments to be fed anew.
    BuiltIn copy() const;

    bool reset() { return m_pNode->reset(); }
    std::vector<std::string> argumentNames() const;
    std::vector<std::string> parameterNames() const;
    const Handle<Math::Xpr::FunctionBaseImpl>& node() const { return m_pNode; }

private:
    std::vector<Math::DoubleVector> m_inputs;
    Handle<Math::Xpr::FunctionBaseImpl> m_pNode;
};

/// A setting with which a built-in can be used.
struct BuiltInSetting {
    std::string name;
    std::vector<std::pair<std::string, ParameterValue>> parameters;

    /// A node with these parameters, configured.
    BuiltIn make() const;
};

/// Prints the name, in the names of tests.
std::ostream& operator<<(std::ostream& inout_stream, const BuiltInSetting& in_setting);

/// One setting for each of the library's built-ins, in the order of their registration.
const std::vector<BuiltInSetting>& builtInSettings();

/// The names that were in the registry when the library had loaded, in its order; tests may have
/// registered more since.
const std::vector<std::string>& registeredNames();

} // namespace Velmora::Testing
