#include <algorithm>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/math/xpr/Registry.h>

#include "BuiltIn.h"

namespace Velmora::Testing {
namespace {

using Names = std::vector<std::string>;
using ::testing::ElementsAreArray;

struct Signature {
    const char* name;
    Names arguments;
    Names parameters;
};

/// In the order of registration.
const std::vector<Signature> Signatures = {
    {"sizeOf", {"x"}, {}},
    {"sum", {"x"}, {}},
    {"abs", {"x"}, {}},
    {"min", {"x"}, {}},
    {"max", {"x"}, {}},
    {"indexOfMax", {"x"}, {}},
    {"log", {"x"}, {}},
    {"delta", {"x"}, {}},
    {"energy", {"x"}, {"signalfeature.SampleRate"}},
    {"slidingWindow", {"x"}, {"slidingwindow.WindowSize"}},
    {"tappedDelay",
     {"x"},
     {"tappeddelay.TapeSize", "tappeddelay.IncludeUsedTapeSizeInOutput",
      "tappeddelay.PaddingValues"}},
    {"debounce", {"x"}, {"debounce.DebounceValue"}},
    {"debounceOnOff", {"x"}, {"debounceonoff.DebounceOnValue", "debounceonoff.DebounceOffValue"}},
    {"averagePower", {"x"}, {}},
    {"centralFrequency", {"1indexOfPeak", "2spectrum"}, {}},
    {"amDemodulate", {"x"}, {"sampleRate", "freq"}},
    {"sinusCorrelate", {"x"}, {"sampleRate", "frequency"}},
    {"isGreater", {"x", "y"}, {}},
    {"vad", {"x"}, {"minimumEnergyDBm", "sensitivity"}},
};

void PrintTo(const Signature& in_signature, std::ostream* out_pStream) {
    *out_pStream << in_signature.name;
}

TEST(RegisteredBuiltInsTest, AreRegisteredWhileTheLibraryLoadsInTheirOrder) {
    Names expected;
    for (const Signature& signature : Signatures) {
        expected.push_back(signature.name);
    }
    EXPECT_EQ(registeredNames(), expected);
}

TEST(RegisteredBuiltInsTest, EachHasASettingForTheTests) {
    ASSERT_EQ(builtInSettings().size(), Signatures.size());
    for (std::size_t i = 0; i < Signatures.size(); ++i) {
        EXPECT_EQ(builtInSettings()[i].name, Signatures[i].name);
    }
}

class RegisteredBuiltInTest : public ::testing::TestWithParam<Signature> {};

TEST_P(RegisteredBuiltInTest, HasItsNameArgumentsAndParameters) {
    const BuiltIn builtIn(GetParam().name);
    EXPECT_STREQ(builtIn.node()->getName(), GetParam().name);
    EXPECT_THAT(builtIn.argumentNames(), ElementsAreArray(GetParam().arguments));
    EXPECT_THAT(builtIn.parameterNames(), ElementsAreArray(GetParam().parameters));
}

TEST_P(RegisteredBuiltInTest, SaysInOneLineWhatItReturns) {
    const std::string strDescription =
        Math::Xpr::Registry::getInstance().getDescription(GetParam().name);
    EXPECT_FALSE(strDescription.empty());
    EXPECT_EQ(strDescription.find('\n'), std::string::npos);
}

TEST_P(RegisteredBuiltInTest, IsADistinctNodeAtEachUse) {
    const BuiltIn first(GetParam().name);
    const BuiltIn second(GetParam().name);
    EXPECT_NE(first.node().get(), second.node().get());
    EXPECT_NE(first.node()->getId(), second.node()->getId());
}

// What a host's `reconfigureExpressions` does to the prototype of a script function, whose
// parameters have no value.
TEST_P(RegisteredBuiltInTest, IsConfiguredWithoutParametersUnlessItMustHaveThem) {
    const std::string strName = GetParam().name;
    EXPECT_EQ(BuiltIn(strName).configure(), strName != "vad" && strName != "amDemodulate");
}

INSTANTIATE_TEST_SUITE_P(EachBuiltIn, RegisteredBuiltInTest, ::testing::ValuesIn(Signatures),
                         [](const auto& in_info) { return in_info.param.name; });

} // namespace
} // namespace Velmora::Testing
