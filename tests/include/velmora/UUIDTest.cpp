#include <velmora/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Velmora {
namespace {

TEST(UUIDTest, TheTextHasTheUsualFormOfVersion4) {
    for (int i = 0; i < 20; ++i) {
        EXPECT_THAT(std::string(UUID()),
                    testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                                          "[0-9a-f]{12}"));
    }
}

TEST(UUIDTest, EachNewOneDiffers) {
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i) {
        texts.insert(UUID());
    }
    EXPECT_EQ(1000u, texts.size());
}

TEST(UUIDTest, ACopyIsTheSame) {
    const UUID uuid;
    const UUID copy(uuid);
    EXPECT_EQ(uuid, copy);
    EXPECT_EQ(std::string(uuid), std::string(copy));
    EXPECT_NE(uuid, UUID());
}

} // namespace
} // namespace Velmora
