#pragma once

#include <string>
#include <vector>

namespace Velmora::Testing {

/// What the reference page of the built-ins says of one function.
struct BuiltInSection {
    std::string name;
    /// `name<parameters>(arguments)`.
    std::string signature;
    std::string description;
    /// The keys of the table of parameters, in its order.
    std::vector<std::string> parameters;
    /// The first words of these rows: a result such as "[0]", or "no result".
    std::string emptyInput;
    std::string nan;
    std::string memory;
};

/// The reference page of the built-ins, taken apart.
struct BuiltInsPage {
    /// Reads docs/built-ins.md.
    BuiltInsPage();

    std::vector<BuiltInSection> sections;
    /// The scripts of the page, each under the name of its section or "introduction".
    std::vector<std::pair<std::string, std::string>> scripts;

private:
    void readLine(const std::string& in_strLine);
    void readRow(const std::string& in_strLine);

    bool m_bInScript = false;
};

} // namespace Velmora::Testing
