#include <velmora/math/xpr/SourcePosition.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <velmora/math/xpr/VariableImpl.h>

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;

SourcePosition place(std::size_t in_uiLine) {
    return SourcePosition(std::make_shared<const std::string>("dir/s.xpr"), in_uiLine, 12);
}

TEST(SourcePositionTest, IsWrittenAsFileLineAndColumn) {
    EXPECT_TRUE(place(3).isSet());
    EXPECT_EQ(place(3).getText(),
              "<file_position fileName=\"dir/s.xpr\" line=\"3\" column=\"12\"/>");
    EXPECT_FALSE(SourcePosition().isSet());
    EXPECT_EQ(SourcePosition().getText(), "");
}

TEST(SourcePositionTest, NodeTellsWhatWasSetLast) {
    const Handle<VariableImpl> pNode(new VariableImpl);
    EXPECT_FALSE(pNode->hasSourceInfo());
    EXPECT_STREQ(pNode->getSourceInfo(), "");
    pNode->setSourceInfo(place(3));
    EXPECT_TRUE(pNode->hasSourceInfo());
    EXPECT_EQ(pNode->getSourceInfo(), place(3).getText());
    pNode->setSourceInfo("by hand");
    EXPECT_STREQ(pNode->getSourceInfo(), "by hand");
    EXPECT_TRUE(pNode->hasSourceInfo());
    pNode->setSourceInfo(place(4));
    EXPECT_EQ(pNode->getSourceInfo(), place(4).getText());
    pNode->setSourceInfo(nullptr);
    EXPECT_FALSE(pNode->hasSourceInfo());
    EXPECT_STREQ(pNode->getSourceInfo(), "");
}

TEST(SourcePositionTest, NodeMayBeGivenItsOwnText) {
    const Handle<VariableImpl> pNode(new VariableImpl);
    pNode->setSourceInfo("by hand");
    pNode->setSourceInfo(pNode->getSourceInfo());
    EXPECT_STREQ(pNode->getSourceInfo(), "by hand");
    pNode->setSourceInfo(pNode->getSourceInfo() + 3);
    EXPECT_STREQ(pNode->getSourceInfo(), "hand");
    pNode->copySourceInfo(*pNode);
    EXPECT_STREQ(pNode->getSourceInfo(), "hand");
    pNode->setSourceInfo(place(3));
    pNode->copySourceInfo(*pNode);
    EXPECT_EQ(pNode->getSourceInfo(), place(3).getText());
}

TEST(SourcePositionTest, OutlivesTheNodeThatItWasCopiedFrom) {
    const Handle<VariableImpl> pCopy(new VariableImpl);
    const Handle<VariableImpl> pOther(new VariableImpl);
    {
        const Handle<VariableImpl> pNode(new VariableImpl);
        pNode->setSourceInfo(place(7));
        pCopy->copySourceInfo(*pNode);
        pNode->setSourceInfo("by hand");
        pOther->setSourceInfo(place(8));
        pOther->copySourceInfo(*pNode);
    }
    EXPECT_EQ(pCopy->getSourceInfo(), place(7).getText());
    EXPECT_STREQ(pOther->getSourceInfo(), "by hand");
}

} // namespace
