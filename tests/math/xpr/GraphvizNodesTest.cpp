#include "math/xpr/src/GraphvizNodes.h"

#include "support/GraphTest.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class GraphvizNodesTest : public GraphTest {
protected:
    const Handle<ConstantImpl> m_pNode = constant({1.0});
    std::ostringstream m_Stream;
};

TEST_F(GraphvizNodesTest, NodeIsWrittenInPlaceWhereNothingElseIsAskedFor) {
    GraphvizNodes::write(m_Stream, *m_pNode);
    EXPECT_EQ(m_Stream.str(), textOf(*m_pNode));
}

TEST_F(GraphvizNodesTest, NodeThatIsPutOffIsWrittenOnceHoweverOftenItComes) {
    GraphvizNodes nodes(false);
    GraphvizNodes::write(m_Stream, *m_pNode);
    GraphvizNodes::write(m_Stream, *m_pNode);
    EXPECT_EQ(m_Stream.str(), "");
    nodes.writePending(m_Stream);
    EXPECT_EQ(m_Stream.str(), textOf(*m_pNode));
}

TEST_F(GraphvizNodesTest, OuterTextGoesOnInItsOwnWayBehindAnInnerOne) {
    GraphvizNodes outer(false);
    std::ostringstream inner;
    {
        const GraphvizNodes nodes(true);
        GraphvizNodes::write(inner, *m_pNode);
    }
    EXPECT_EQ(inner.str(), textOf(*m_pNode));
    GraphvizNodes::write(m_Stream, *m_pNode);
    EXPECT_EQ(m_Stream.str(), "");
    outer.writePending(m_Stream);
    EXPECT_EQ(m_Stream.str(), textOf(*m_pNode));
}

} // namespace

} // namespace Velmora::Math::Xpr
