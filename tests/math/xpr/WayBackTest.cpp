#include "math/xpr/src/WayBack.h"

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::RecordingNode;

TEST(WayBackTest, OfManyChildrenTheFirstFewAreLookedAt) {
    const Handle<ExpressionBaseImpl> pNode(new RecordingNode);
    const Handle<ExpressionBaseImpl> pChild(new RecordingNode);
    std::vector<Handle<ExpressionBaseImpl>> vChilds(static_cast<std::size_t>(MaxFetchedChilds),
                                                    pChild);
    // Whoever goes on to these follows a null.
    vChilds.resize(vChilds.size() + 100);
    std::vector<std::size_t> vPlaces;
    fetchWayBack<AllLines>(2000, 3, [&](std::size_t in_ui) {
        vPlaces.push_back(in_ui);
        return PlaceOnPath{pNode.get(), vChilds.data(), vChilds.data() + vChilds.size()};
    });
    EXPECT_EQ(vPlaces, (std::vector<std::size_t>{1978, 1981, 1984, 1987, 1990, 1993, 1996}));
}

TEST(WayBackTest, NothingIsFetchedOnAShortPath) {
    fetchWayBack<AllLines>(999, 3, [](std::size_t) {
        ADD_FAILURE();
        return PlaceOnPath{nullptr, nullptr, nullptr};
    });
}

} // namespace

} // namespace Velmora::Math::Xpr
