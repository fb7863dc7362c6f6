#include <velmora/math/FeatureComputer.h>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/FeatureComputerWithInputs.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace Velmora::Math {
namespace {

/// The engine's shape: the interface with inputs and an implementation of the plain one meet.
class PlainComputer : public virtual FeatureComputer {
public:
    bool computeFeatures(DoubleVector& out_vFeature) override {
        out_vFeature = m_vInput;
        return true;
    }
    bool reset() override {
        m_vInput.clear();
        return true;
    }

protected:
    DoubleVector m_vInput;
};

class ComputerWithInput : public virtual FeatureComputerWithInputs, public PlainComputer {
public:
    bool setInput(const char* in_szName, const DoubleVector& in_vValue) override {
        m_vInput = in_vValue;
        return std::string(in_szName) == "frame";
    }
};

TEST(FeatureComputerTest, InterfacesAreAbstractAndShareOneBase) {
    static_assert(std::is_abstract_v<FeatureComputer>);
    static_assert(std::is_abstract_v<FeatureComputerWithInputs>);
    const std::unique_ptr<FeatureComputer> computer = std::make_unique<ComputerWithInput>();
    auto* const withInputs = dynamic_cast<FeatureComputerWithInputs*>(computer.get());
    ASSERT_NE(withInputs, nullptr);
    EXPECT_EQ(static_cast<FeatureComputer*>(withInputs), computer.get());

    EXPECT_TRUE(withInputs->setInput("frame", DoubleVector{1.0, 2.0}));
    EXPECT_FALSE(withInputs->setInput("other", DoubleVector{3.0}));
    DoubleVector feature;
    EXPECT_TRUE(computer->computeFeatures(feature));
    EXPECT_EQ(feature.size(), 1u);
    Resettable& resettable = *computer;
    EXPECT_TRUE(resettable.reset());
    EXPECT_TRUE(computer->computeFeatures(feature));
    EXPECT_TRUE(feature.empty());
}

} // namespace
} // namespace Velmora::Math
