#include "BuiltIn.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include <velmora/math/xpr/Registry.h>

namespace Velmora::Testing {

using Math::DoubleVector;
using Math::Xpr::FunctionBaseImpl;
using Math::Xpr::Registry;

namespace {

/// Reads the names ahead of the first test.
class NamesAtStart : public ::testing::Environment {
public:
    void SetUp() override { Registry::getInstance().getNames(names()); }

    static std::vector<std::string>& names() {
        static std::vector<std::string> s_vNames;
        return s_vNames;
    }
};

[[maybe_unused]] const ::testing::Environment* const s_pNamesAtStart =
    ::testing::AddGlobalTestEnvironment(new NamesAtStart);

} // namespace

BuiltIn::BuiltIn(const std::string& in_strName)
    : BuiltIn(Handle<FunctionBaseImpl>(Handle<Math::Xpr::Expression>(
          Registry::getInstance().newExpression(in_strName.c_str())))) {}

BuiltIn::BuiltIn(Handle<FunctionBaseImpl> in_pNode) : m_pNode(std::move(in_pNode)) {
    if (m_pNode.isNull()) {
        throw std::invalid_argument("no such function");
    }
    m_inputs.resize(m_pNode->getArgumentCount());
}

BuiltIn& BuiltIn::set(const std::string& in_strKey, const ParameterValue& in_value) {
    const Handle<Math::Xpr::Parameter> pParameter = m_pNode->getParameter(in_strKey.c_str());
    if (pParameter.isNull() || !pParameter->setValue(in_value)) {
        throw std::invalid_argument("no such parameter: " + in_strKey);
    }
    return *this;
}

bool BuiltIn::configure() {
    return m_pNode->configure(TSHandle<VirtualFileSystem>());
}

void BuiltIn::feed(const std::vector<Values>& in_arguments) {
    for (std::size_t i = 0; i < in_arguments.size(); ++i) {
        m_inputs.at(i).resize(in_arguments[i].size());
        std::copy(in_arguments[i].begin(), in_arguments[i].end(), m_inputs[i].begin());
        m_pNode->getArgument(i)->setValue(m_inputs[i]);
    }
}

std::string BuiltIn::operator()(const std::vector<Values>& in_arguments) {
    feed(in_arguments);
    const DoubleVector* const pResult = evaluate();
    if (pResult == nullptr) {
        return "no result";
    }
    std::ostringstream stream;
    stream << *pResult;
    return stream.str();
}

const DoubleVector* BuiltIn::evaluate() {
    LimitedObjPtr<DoubleVector> pResult;
    return m_pNode->evaluate(pResult) ? pResult.get() : nullptr;
}

BuiltIn BuiltIn::copy() const {
    return BuiltIn(Handle<FunctionBaseImpl>(m_pNode->copy()));
}

std::vector<std::string> BuiltIn::argumentNames() const {
    std::vector<std::string> vNames;
    for (auto ite = m_pNode->getArgumentBegin(); ite != m_pNode->getArgumentEnd(); ++ite) {
        vNames.push_back((*ite).first);
    }
    return vNames;
}

std::vector<std::string> BuiltIn::parameterNames() const {
    std::vector<std::string> vNames;
    for (auto ite = m_pNode->getParameterBegin(); ite != m_pNode->getParameterEnd(); ++ite) {
        vNames.push_back((*ite).first);
    }
    return vNames;
}

BuiltIn BuiltInSetting::make() const {
    BuiltIn builtIn(name);
    for (const auto& parameter : parameters) {
        builtIn.set(parameter.first, parameter.second);
    }
    if (!builtIn.configure()) {
        throw std::invalid_argument("can't be configured: " + name);
    }
    return builtIn;
}

std::ostream& operator<<(std::ostream& inout_stream, const BuiltInSetting& in_setting) {
    return inout_stream << in_setting.name;
}

const std::vector<BuiltInSetting>& builtInSettings() {
    static const std::vector<BuiltInSetting> s_vSettings = {
        {"sizeOf", {}},
        {"sum", {}},
        {"abs", {}},
        {"min", {}},
        {"max", {}},
        {"indexOfMax", {}},
        {"log", {}},
        {"delta", {}},
        {"energy", {{"signalfeature.SampleRate", 8000}}},
        {"slidingWindow", {{"slidingwindow.WindowSize", 100}}},
        {"tappedDelay",
         {{"tappeddelay.TapeSize", 100},
          {"tappeddelay.IncludeUsedTapeSizeInOutput", 0},
          {"tappeddelay.PaddingValues", ""}}},
        {"debounce", {{"debounce.DebounceValue", 2}}},
        {"debounceOnOff",
         {{"debounceonoff.DebounceOnValue", 1}, {"debounceonoff.DebounceOffValue", 2}}},
        {"averagePower", {}},
        {"centralFrequency", {}},
        {"amDemodulate", {{"sampleRate", 8000}, {"freq", 1000}}},
        {"sinusCorrelate", {{"sampleRate", 8000}, {"frequency", 440.0F}}},
        {"isGreater", {}},
        {"vad", {{"minimumEnergyDBm", -35.0F}, {"sensitivity", 2}}},
    };
    return s_vSettings;
}

const std::vector<std::string>& registeredNames() {
    return NamesAtStart::names();
}

} // namespace Velmora::Testing
