#pragma once

#include <string>
#include <vector>

#include "BuiltIn.h"

namespace Velmora::Testing {

/// How far a result may be off.
struct Tolerance {
    enum class Kind { Exact, Absolute, Relative, Rms };

    /// Empty if the result is as expected, otherwise what is wrong with it.
    std::string compare(const Values& in_expected, const Math::DoubleVector& in_result) const;

    Kind kind = Kind::Exact;
    double bound = 0.0;
    /// The values at either end that the root of the mean square leaves out.
    std::size_t skipped = 0;

private:
    std::string compareRms(const Values& in_expected, const Math::DoubleVector& in_result) const;
    bool isEqual(double in_dExpected, double in_dResult) const;
};

/// Feeds a table of tests/golden to the built-in of its name; tests/golden/golden_table.py tells
/// what the lines of a table are.
class GoldenTable {
public:
    explicit GoldenTable(std::string in_strFunction);

    /// What is wrong, each with its line of the table; empty if all results are as expected.
    std::vector<std::string> run();

    /// How many results were compared.
    std::size_t count() const { return m_uiCount; }

private:
    void runLine(const std::string& in_strLine);
    void compareResult(std::istream& in_words);

    std::string m_strFunction;
    std::vector<BuiltIn> m_function;
    bool m_bConfigured = false;
    Tolerance m_tolerance;
    std::vector<Values> m_arguments;
    std::size_t m_uiLine = 0;
    std::size_t m_uiCount = 0;
    std::vector<std::string> m_faults;
};

/// The numbers that are left in a line.
Values readValues(std::istream& inout_words);

/// The path of a file of tests/golden.
std::string goldenPath(const std::string& in_strFileName);

} // namespace Velmora::Testing
