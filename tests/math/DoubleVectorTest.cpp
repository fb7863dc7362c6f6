#include <velmora/math/DoubleVector.h>

#include <velmora/MemAccounts.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/AllocationCounter.h"
#include "support/PunctuatedLocale.h"

namespace Velmora::Math {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr const char* account = "\"DoubleVector\"";

std::string textOf(const DoubleVector& in_vector) {
    std::ostringstream text;
    text << in_vector;
    return text.str();
}

DoubleVector countingTo(std::size_t in_uiCount) {
    DoubleVector result;
    result.resize(in_uiCount);
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        result[i] = static_cast<double>(i);
    }
    return result;
}

TEST(DoubleVectorTest, DefaultVectorIsThreeNullPointers) {
    const DoubleVector vector;
    EXPECT_EQ(vector.begin(), nullptr);
    EXPECT_EQ(vector.end(), nullptr);
    EXPECT_EQ(vector.size(), 0u);
    EXPECT_EQ(vector.capacity(), 0u);
    EXPECT_EQ(sizeof(vector), 3 * sizeof(double*));
}

TEST(DoubleVectorTest, PointersStandInTheOrderBeginEndCapacityEnd) {
    DoubleVector vector{1.0, 2.0, 3.0};
    vector.resize(1);
    const auto* const words = reinterpret_cast<double* const*>(&vector);
    EXPECT_EQ(words[0], vector.begin());
    EXPECT_EQ(words[1], vector.begin() + 1);
    EXPECT_EQ(words[2], vector.begin() + 3);
}

TEST(DoubleVectorTest, PushBackDoublesTheCapacityFromOneOn) {
    DoubleVector vector;
    std::vector<std::size_t> capacities;
    for (int i = 0; i < 6; ++i) {
        vector.push_back(i);
        capacities.push_back(vector.capacity());
    }
    EXPECT_THAT(capacities, ElementsAre(1u, 2u, 4u, 4u, 8u, 8u));
    EXPECT_THAT(vector, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(DoubleVectorTest, PushBackOnAFullVectorOfAnySizeDoublesIt) {
    DoubleVector vector{1.0, 2.0, 3.0};
    ASSERT_EQ(vector.capacity(), 3u);
    vector.push_back(4.0);
    EXPECT_EQ(vector.capacity(), 6u);
    EXPECT_THAT(vector, ElementsAre(1, 2, 3, 4));
}

TEST(DoubleVectorTest, PushBackOfAnElementOfTheFullVectorKeepsItsValue) {
    DoubleVector vector{7.0};
    vector.push_back(vector[0]);
    EXPECT_THAT(vector, ElementsAre(7, 7));
}

TEST(DoubleVectorTest, ClearKeepsTheBlockForTheNextPushBack) {
    DoubleVector vector{1.0, 2.0};
    const double* const block = vector.begin();
    vector.clear();
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(vector.capacity(), 2u);
    vector.push_back(3.0);
    EXPECT_EQ(vector.begin(), block);
    EXPECT_THAT(vector, ElementsAre(3));
}

TEST(DoubleVectorTest, ResizeWithinTheCapacityMovesTheEndOnly) {
    DoubleVector vector{1.0, 2.0, 3.0};
    const double* const block = vector.begin();
    vector.resize(1);
    EXPECT_EQ(vector.begin(), block);
    EXPECT_EQ(vector.size(), 1u);
    EXPECT_EQ(vector.capacity(), 3u);
    vector.resize(3);
    EXPECT_EQ(vector.begin(), block);
    EXPECT_THAT(vector, ElementsAre(1, 2, 3));
}

TEST(DoubleVectorTest, ResizeBeyondTheCapacityKeepsTheOldValues) {
    DoubleVector vector{1.0, 2.0, 3.0};
    vector.resize(100);
    EXPECT_EQ(vector.size(), 100u);
    EXPECT_EQ(vector.capacity(), 100u);
    EXPECT_EQ(vector[0], 1.0);
    EXPECT_EQ(vector[2], 3.0);
}

TEST(DoubleVectorTest, ResizingInSmallStepsAllocatesALogarithmicNumberOfTimes) {
    DoubleVector vector;
    const Testing::AllocationCounter counter;
    for (std::size_t size = 1; size <= 1000; ++size) {
        vector.resize(size);
    }
    EXPECT_LE(counter.allocations(), 12u);
}

TEST(DoubleVectorTest, DataLiesOnSixteenBytesAndTheByteBeforeSaysHowFarTheBlockIs) {
    for (std::size_t size = 1; size <= 70; ++size) {
        DoubleVector vector;
        vector.resize(size);
        const auto address = reinterpret_cast<std::uintptr_t>(vector.begin());
        EXPECT_EQ(address % 16, 0u);
        const unsigned offset = reinterpret_cast<const unsigned char*>(vector.begin())[-1];
        EXPECT_GE(offset, 2u);
        EXPECT_LE(offset, 17u);
        // The block itself comes from an allocator whose addresses are multiples of 16.
        EXPECT_EQ((address - offset) % 16, 0u);
        EXPECT_EQ(offset, 17 - ((address - offset + 1) & 15));
    }
}

TEST(DoubleVectorTest, BlocksAreAccountedWithSeventeenBytesMoreThanTheirValues) {
    const MemAccount before = MemAccounts::get(account);
    {
        const DoubleVector vector = countingTo(10);
        const MemAccount during = MemAccounts::get(account);
        EXPECT_EQ(during.liveBlocks, before.liveBlocks + 1);
        EXPECT_EQ(during.liveBytes, before.liveBytes + 10 * 8 + 17);
    }
    const MemAccount after = MemAccounts::get(account);
    EXPECT_EQ(after.liveBlocks, before.liveBlocks);
    EXPECT_EQ(after.liveBytes, before.liveBytes);
}

TEST(DoubleVectorTest, EveryOperationReleasesWhatItAllocated) {
    const MemAccount before = MemAccounts::get(account);
    {
        DoubleVector a{1.0, 2.0, 3.0};
        DoubleVector b(a);
        b.push_back(4.0);
        a = b;
        b = DoubleVector{5.0};
        DoubleVector c(std::move(a));
        a = c;
        c.insert(c.begin(), a.begin(), a.end());
        c.resize(50);
        c = DoubleVector();
        a = std::move(b);
    }
    EXPECT_EQ(MemAccounts::get(account).liveBlocks, before.liveBlocks);
    EXPECT_EQ(MemAccounts::get(account).liveBytes, before.liveBytes);
}

TEST(DoubleVectorTest, NothingIsAllocatedForNoValues) {
    const Testing::AllocationCounter counter;
    const DoubleVector empty;
    DoubleVector copy(empty);
    copy.resize(0);
    copy.clear();
    copy.insert(copy.end(), empty.begin(), empty.end());
    copy = empty;
    const DoubleVector listed(std::initializer_list<double>{});
    EXPECT_EQ(counter.allocations(), 0u);
    EXPECT_EQ(copy.begin(), nullptr);
    EXPECT_EQ(listed.begin(), nullptr);
}

TEST(DoubleVectorTest, CopyHasItsOwnStorageAndTheSizeAsCapacity) {
    DoubleVector source{1.0, 2.0};
    source.push_back(3.0);
    ASSERT_EQ(source.capacity(), 4u);
    const DoubleVector copy(source);
    source[0] = 9.0;
    EXPECT_THAT(copy, ElementsAre(1, 2, 3));
    EXPECT_EQ(copy.capacity(), 3u);
}

TEST(DoubleVectorTest, CopyOfAClearedVectorHasNoBlock) {
    DoubleVector source{1.0};
    source.clear();
    EXPECT_EQ(DoubleVector(source).begin(), nullptr);
}

TEST(DoubleVectorTest, AssignmentKeepsABlockThatIsLargeEnough) {
    DoubleVector target{1.0, 2.0, 3.0};
    const double* const block = target.begin();
    const DoubleVector empty;
    const DoubleVector source{4.0, 5.0};
    const Testing::AllocationCounter counter;
    target = empty;
    target = source;
    EXPECT_EQ(counter.allocations(), 0u);
    EXPECT_EQ(target.capacity(), 3u);
    EXPECT_EQ(target.begin(), block);
    EXPECT_THAT(target, ElementsAre(4, 5));
}

TEST(DoubleVectorTest, AssignmentOfALargerVectorTakesRoomForItsSize) {
    DoubleVector target{1.0};
    const DoubleVector source{4.0, 5.0, 6.0};
    target = source;
    EXPECT_EQ(target.capacity(), 3u);
    EXPECT_NE(target.begin(), source.begin());
    EXPECT_THAT(target, ElementsAre(4, 5, 6));
}

TEST(DoubleVectorTest, SelfAssignmentChangesNothing) {
    DoubleVector vector{1.0, 2.0};
    const double* const block = vector.begin();
    DoubleVector& same = vector;
    vector = same;
    EXPECT_THAT(vector, ElementsAre(1, 2));
    vector = std::move(same);
    EXPECT_THAT(vector, ElementsAre(1, 2));
    EXPECT_EQ(vector.begin(), block);
}

TEST(DoubleVectorTest, MovingTakesTheBlockOverAndLeavesTheSourceWithoutOne) {
    DoubleVector source{1.0, 2.0};
    const double* const block = source.begin();
    DoubleVector constructed(std::move(source));
    EXPECT_EQ(constructed.begin(), block);
    EXPECT_EQ(source.begin(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.capacity(), 0u);
    DoubleVector assigned{3.0};
    assigned = std::move(constructed);
    EXPECT_EQ(assigned.begin(), block);
    EXPECT_THAT(assigned, ElementsAre(1, 2));
    source.push_back(4.0);
    EXPECT_THAT(source, ElementsAre(4));
}

TEST(DoubleVectorTest, ArithmeticWorksElementByElement) {
    DoubleVector vector{1.0, -2.0, 0.5};
    vector += DoubleVector{1.0, 2.0, 3.0};
    EXPECT_THAT(vector, ElementsAre(2, 0, 3.5));
    vector -= DoubleVector{3.0, 0.5, -0.5};
    EXPECT_THAT(vector, ElementsAre(-1, -0.5, 4));
    vector *= -3.0;
    EXPECT_THAT(vector, ElementsAre(3, 1.5, -12));
    vector += vector;
    EXPECT_THAT(vector, ElementsAre(6, 3, -24));
    vector -= vector;
    EXPECT_THAT(vector, ElementsAre(0, 0, 0));
}

TEST(DoubleVectorTest, DivisionDividesAndDoesNotMultiplyByTheReciprocal) {
    DoubleVector vector{49.0, 5.0};
    vector /= 49.0;
    EXPECT_THAT(vector, ElementsAre(1.0, 5.0 / 49.0));
    ASSERT_NE(49.0 * (1.0 / 49.0), 1.0);
}

TEST(DoubleVectorTest, ArithmeticOfEmptyVectorsIsHarmless) {
    DoubleVector empty;
    empty += DoubleVector();
    empty -= DoubleVector();
    empty *= 2.0;
    empty /= 2.0;
    EXPECT_THAT(empty, IsEmpty());
}

TEST(DoubleVectorTest, InsertAppendsAtTheEndAndPutsBeforeAnyOtherPosition) {
    const std::vector<double> values{8.0, 9.0};
    DoubleVector vector;
    vector.insert(vector.end(), values.data(), values.data() + 2);
    EXPECT_THAT(vector, ElementsAre(8, 9));
    EXPECT_EQ(vector.capacity(), 2u);
    vector.insert(vector.begin(), values.data(), values.data() + 1);
    EXPECT_THAT(vector, ElementsAre(8, 8, 9));
    vector.insert(vector.begin() + 1, values.data() + 1, values.data() + 2);
    EXPECT_THAT(vector, ElementsAre(8, 9, 8, 9));
    vector.insert(vector.begin() + 2, values.data(), values.data());
    EXPECT_THAT(vector, ElementsAre(8, 9, 8, 9));
}

TEST(DoubleVectorTest, InsertWithinTheCapacityKeepsTheBlock) {
    DoubleVector vector{1.0, 2.0, 3.0, 4.0, 5.0};
    const double* const block = vector.begin();
    vector.resize(2);
    const std::vector<double> values{8.0, 9.0};
    vector.insert(vector.begin() + 1, values.data(), values.data() + 2);
    EXPECT_EQ(vector.begin(), block);
    EXPECT_THAT(vector, ElementsAre(1, 8, 9, 2));
}

// Every part of a vector inserted at every position of itself, with and without room.
TEST(DoubleVectorTest, InsertOfAPartOfTheVectorItselfCopiesTheValuesBefore) {
    constexpr std::size_t size = 5;
    for (const std::size_t capacity : {size, 4 * size}) {
        for (std::size_t position = 0; position <= size; ++position) {
            for (std::size_t first = 0; first <= size; ++first) {
                for (std::size_t last = first; last <= size; ++last) {
                    DoubleVector vector = countingTo(capacity);
                    vector.resize(size);
                    std::vector<double> expected(vector.begin(), vector.end());
                    const std::vector<double> part(vector.begin() + first, vector.begin() + last);
                    expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(position),
                                    part.begin(), part.end());
                    vector.insert(vector.begin() + position, vector.begin() + first,
                                  vector.begin() + last);
                    ASSERT_THAT(vector, ::testing::ElementsAreArray(expected))
                        << capacity << ": [" << first << ", " << last << ") before " << position;
                }
            }
        }
    }
}

TEST(DoubleVectorTest, AppendingAVectorToItselfDoublesIt) {
    DoubleVector vector{1.0, 2.0};
    vector.insert(vector.end(), vector.begin(), vector.end());
    EXPECT_THAT(vector, ElementsAre(1, 2, 1, 2));
}

TEST(DoubleVectorTest, SizesBeyondTheAddressSpaceThrowAndChangeNothing) {
    DoubleVector vector{1.0, 2.0};
    const double* const block = vector.begin();
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const std::size_t size : {most, most / 8, most / 8 - 1, most / 16, most / 16 + 1}) {
        EXPECT_THROW(vector.resize(size), std::bad_alloc) << size;
    }
    EXPECT_EQ(vector.begin(), block);
    EXPECT_THAT(vector, ElementsAre(1, 2));
}

// A sanitizer's allocator aborts on such a request instead of refusing it.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(DoubleVectorTest, AllocationThatFailsThrowsAndChangesNothing) {
    DoubleVector vector{1.0, 2.0};
    const double* const block = vector.begin();
    EXPECT_THROW(vector.resize(std::size_t{1} << 50), std::bad_alloc);
    EXPECT_EQ(vector.begin(), block);
    EXPECT_THAT(vector, ElementsAre(1, 2));
}
#endif

TEST(DoubleVectorTest, AtChecksTheIndex) {
    DoubleVector vector{1.0, 2.0};
    vector.at(1) = 5.0;
    EXPECT_EQ(std::as_const(vector).at(1), 5.0);
    for (const std::size_t index : {std::size_t{2}, std::numeric_limits<std::size_t>::max()}) {
        try {
            vector.at(index);
            FAIL() << index;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "vector");
        }
    }
    EXPECT_THROW(std::as_const(vector).at(2), std::out_of_range);
}

TEST(DoubleVectorTest, AtOfAnEmptyVectorThrows) {
    DoubleVector vector;
    try {
        vector.at(0);
        FAIL();
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "vector");
    }
}

TEST(DoubleVectorTest, AverageAndAveragePowerOfAFewValues) {
    const DoubleVector vector{1.0, -2.0, 4.0};
    double value = 0.0;
    EXPECT_TRUE(vector.average(value));
    EXPECT_EQ(value, 1.0);
    EXPECT_TRUE(vector.averagePower(value));
    EXPECT_EQ(value, 7.0);
}

TEST(DoubleVectorTest, AverageAndAveragePowerOfNothingLeaveTheOutputAlone) {
    double value = 42.0;
    EXPECT_FALSE(DoubleVector().average(value));
    EXPECT_FALSE(DoubleVector().averagePower(value));
    EXPECT_EQ(value, 42.0);
}

TEST(DoubleVectorTest, AverageAndAveragePowerPropagateNaN) {
    DoubleVector vector = countingTo(1000);
    vector[777] = nan;
    double value = 0.0;
    EXPECT_TRUE(vector.average(value));
    EXPECT_TRUE(std::isnan(value));
    value = 0.0;
    EXPECT_TRUE(vector.averagePower(value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(DoubleVectorTest, AverageIsRightAtEverySizeAroundTheBlocksOfTheSummation) {
    for (std::size_t size = 1; size <= 700; ++size) {
        const DoubleVector vector = countingTo(size);
        double value = -1.0;
        EXPECT_TRUE(vector.average(value));
        const double count = static_cast<double>(size);
        EXPECT_EQ(value, (count - 1.0) / 2.0) << size;
        EXPECT_TRUE(vector.averagePower(value));
        EXPECT_EQ(value, (count - 1.0) * count * (2.0 * count - 1.0) / 6.0 / count) << size;
    }
}

TEST(DoubleVectorTest, ValuesAreWrittenInTheirShortestForm) {
    const struct {
        double value;
        const char* text;
    } cases[] = {{0.0, "[0]"},
                 {-0.0, "[-0]"},
                 {1.0, "[1]"},
                 {2.5, "[2.5]"},
                 {0.1, "[0.1]"},
                 {0.1 + 0.2, "[0.30000000000000004]"},
                 {1e22, "[1e+22]"},
                 {-1e-7, "[-1e-07]"},
                 {123456.75, "[123456.75]"},
                 {5e-324, "[5e-324]"},
                 {1.7976931348623157e308, "[1.7976931348623157e+308]"},
                 {nan, "[nan]"},
                 {-nan, "[nan]"},
                 {infinity, "[inf]"},
                 {-infinity, "[-inf]"}};
    for (const auto& each : cases) {
        EXPECT_EQ(textOf(DoubleVector{each.value}), each.text);
    }
}

TEST(DoubleVectorTest, TextHasSingleBlanksBetweenTheValues) {
    EXPECT_EQ(textOf(DoubleVector{1.0, 2.5}), "[1 2.5]");
    EXPECT_EQ(textOf(DoubleVector()), "[]");
}

TEST(DoubleVectorTest, TextDoesNotDependOnTheFormatOfTheStream) {
    std::ostringstream text;
    text.imbue(Testing::makePunctuatedLocale());
    text << std::fixed << std::setprecision(2) << std::showpos;
    const DoubleVector vector{1234567.125, 0.5};
    EXPECT_EQ(&vector.write(text), &text);
    EXPECT_EQ(text.str(), "[1234567.125 0.5]");
}

} // namespace
} // namespace Velmora::Math
