#include "GoldenTable.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Velmora::Testing {

using Math::DoubleVector;

std::string goldenPath(const std::string& in_strFileName) {
    return std::string(VELMORA_SOURCE_DIR) + "/tests/golden/" + in_strFileName;
}

Values readValues(std::istream& inout_words) {
    Values values;
    for (std::string strWord; inout_words >> strWord;) {
        values.push_back(std::strtod(strWord.c_str(), nullptr));
    }
    return values;
}

bool Tolerance::isEqual(double in_dExpected, double in_dResult) const {
    if (std::isnan(in_dExpected) || std::isnan(in_dResult)) {
        return std::isnan(in_dExpected) && std::isnan(in_dResult);
    }
    if (kind == Kind::Exact) {
        return std::memcmp(&in_dExpected, &in_dResult, sizeof(double)) == 0;
    }
    const double dScale = kind == Kind::Relative ? std::fabs(in_dExpected) : 1.0;
    return in_dExpected == in_dResult || std::fabs(in_dExpected - in_dResult) <= bound * dScale;
}

std::string Tolerance::compareRms(const Values& in_expected, const DoubleVector& in_result) const {
    double dSum = 0.0;
    const std::size_t uiEnd = in_expected.size() - skipped;
    for (std::size_t i = skipped; i < uiEnd; ++i) {
        dSum += std::pow(in_result[i] - in_expected[i], 2);
    }
    const double dError = std::sqrt(dSum / static_cast<double>(uiEnd - skipped));
    return dError <= bound ? "" : "an RMS error of " + std::to_string(dError);
}

std::string Tolerance::compare(const Values& in_expected, const DoubleVector& in_result) const {
    if (in_expected.size() != in_result.size()) {
        return std::to_string(in_result.size()) + " values instead of " +
               std::to_string(in_expected.size());
    }
    if (kind == Kind::Rms) {
        return compareRms(in_expected, in_result);
    }
    for (std::size_t i = 0; i < in_expected.size(); ++i) {
        if (!isEqual(in_expected[i], in_result[i])) {
            std::ostringstream message;
            message.precision(17);
            message << in_result[i] << " instead of " << in_expected[i] << " at " << i;
            return message.str();
        }
    }
    return "";
}

GoldenTable::GoldenTable(std::string in_strFunction) : m_strFunction(std::move(in_strFunction)) {}

std::vector<std::string> GoldenTable::run() {
    std::ifstream file(goldenPath(m_strFunction + ".txt"));
    for (std::string strLine; std::getline(file, strLine);) {
        ++m_uiLine;
        runLine(strLine);
    }
    return m_faults;
}

void GoldenTable::runLine(const std::string& in_strLine) {
    std::istringstream words(in_strLine);
    std::string strWord;
    words >> strWord;
    if (strWord == "case") {
        m_function.clear();
        m_function.emplace_back(m_strFunction);
        m_bConfigured = false;
        m_tolerance = Tolerance();
    } else if (strWord == "parameter") {
        std::string strKey;
        std::string strKind;
        std::string strText;
        words >> strKey >> strKind;
        std::getline(words >> std::ws, strText);
        m_function.at(0).set(strKey, strKind == "int"     ? ParameterValue(std::stoi(strText))
                                     : strKind == "float" ? ParameterValue(std::stof(strText))
                                                          : ParameterValue(strText.c_str()));
    } else if (strWord == "tolerance") {
        std::string strKind;
        words >> strKind >> m_tolerance.bound >> m_tolerance.skipped;
        m_tolerance.kind = strKind == "exact"      ? Tolerance::Kind::Exact
                           : strKind == "absolute" ? Tolerance::Kind::Absolute
                           : strKind == "relative" ? Tolerance::Kind::Relative
                           : strKind == "rms"      ? Tolerance::Kind::Rms
                                                   : throw std::invalid_argument(in_strLine);
    } else if (strWord == "argument") {
        m_arguments.push_back(readValues(words));
    } else if (strWord == "result") {
        compareResult(words);
    } else if (strWord == "reset") {
        m_function.at(0).reset();
    } else if (strWord != "#") {
        throw std::invalid_argument(in_strLine);
    }
}

void GoldenTable::compareResult(std::istream& in_words) {
    std::string strText;
    std::getline(in_words >> std::ws, strText);
    BuiltIn& function = m_function.at(0);
    // A setting that the function refuses gives no result either.
    if (!m_bConfigured) {
        function.configure();
        m_bConfigured = true;
    }
    function.feed(m_arguments);
    m_arguments.clear();
    ++m_uiCount;
    const DoubleVector* const pResult = function.evaluate();
    const bool bNone = strText == "none";
    std::string strFault;
    if (bNone != (pResult == nullptr)) {
        strFault = bNone ? "a result instead of none" : "no result";
    } else if (!bNone) {
        std::istringstream values(strText);
        strFault = m_tolerance.compare(readValues(values), *pResult);
    }
    if (!strFault.empty()) {
        m_faults.push_back("line " + std::to_string(m_uiLine) + ": " + strFault);
    }
}

} // namespace Velmora::Testing
