#include "tools/vxpr/Table.h"

#include "ScratchDirectory.h"
#include "tools/vxpr/CsvWriter.h"
#include "tools/vxpr/JsonLinesWriter.h"
#include "tools/vxpr/NpyWriter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace Vxpr {

using TestSupport::readFile;
using TestSupport::ScratchDirectory;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

/// A value; none at all is a missing one.
using Value = std::optional<std::vector<double>>;

struct Written {
    std::string m_strText;
    std::vector<Table::Overlong> m_vOverlong;
};

/// Rows at the times 0, 1, 2 and so on.
template <class Writer>
Written write(const std::vector<std::string>& in_vNames,
              const std::vector<std::vector<Value>>& in_vRows) {
    const ScratchDirectory scratch;
    Output output(scratch.getPath("table"));
    Table table(std::make_unique<Writer>(output), in_vNames);
    double dTime = 0.0;
    for (const std::vector<Value>& vRow : in_vRows) {
        std::vector<Cell> vCells;
        // The row's own copy, which dies before the next row.
        const std::vector<Value> vValues = vRow;
        for (const Value& value : vValues) {
            vCells.push_back(value ? Cell{value->data(), value->size(), false}
                                   : Cell{nullptr, 0, true});
        }
        table.addRow(dTime, vCells);
        dTime += 1.0;
    }
    table.finish();
    output.commit();
    return {readFile(scratch.getPath("table")), table.getOverlong()};
}

Value value(std::vector<double> in_vValues) {
    return in_vValues;
}

} // namespace

TEST(TableTest, ColumnsAreNamedAfterTheirElements) {
    EXPECT_EQ(write<CsvWriter>({"a", "b"}, {{value({1}), value({2, 3})}}).m_strText,
              "time,a,b[0],b[1]\n0,1,2,3\n");
}

TEST(TableTest, AFeatureWithoutAValueLeavesItsCellsEmpty) {
    EXPECT_EQ(write<CsvWriter>({"a", "b"}, {{value({1}), value({2, 3})},
                                            {std::nullopt, value({4, 5})},
                                            {value({6}), std::nullopt}})
                  .m_strText,
              "time,a,b[0],b[1]\n0,1,2,3\n1,,4,5\n2,6,,\n");
}

TEST(TableTest, TheFirstValueSettlesTheWidthAlsoIfItComesLate) {
    EXPECT_EQ(write<CsvWriter>({"a", "b"}, {{value({1}), std::nullopt},
                                            {value({2}), value({})},
                                            {value({3}), value({4, 5})},
                                            {value({6}), value({7, 8})}})
                  .m_strText,
              "time,a,b[0],b[1]\n0,1,,\n1,2,,\n2,3,4,5\n3,6,7,8\n");
}

TEST(TableTest, AFeatureThatNeverHasAValueHasOneEmptyColumn) {
    EXPECT_EQ(write<CsvWriter>({"a"}, {{std::nullopt}, {std::nullopt}}).m_strText,
              "time,a\n0,\n1,\n");
}

TEST(TableTest, AFeatureThatNeverHasAValueIsntWaitedForForEver) {
    const std::size_t uiWidth = 1000;
    std::vector<std::vector<Value>> vRows(3000,
                                          {std::nullopt, Value(std::vector<double>(uiWidth))});
    vRows.push_back({value({1, 2}), Value(std::vector<double>(uiWidth))});
    const Written written = write<CsvWriter>({"a", "b"}, vRows);
    ASSERT_EQ(written.m_vOverlong.size(), 1U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiRow, 3000U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiWidth, 1U);
}

TEST(TableTest, AShorterValueLeavesTheRestEmpty) {
    EXPECT_EQ(write<CsvWriter>({"a"}, {{value({1, 2})}, {value({3})}, {value({})}}).m_strText,
              "time,a[0],a[1]\n0,1,2\n1,3,\n2,,\n");
}

TEST(TableTest, ALongerValueIsCutAndToldOnce) {
    const Written written = write<CsvWriter>(
        {"a", "b"},
        {{value({1}), value({1})}, {value({2, 3}), value({4})}, {value({5, 6, 7}), value({8})}});
    EXPECT_EQ(written.m_strText, "time,a,b\n0,1,1\n1,2,4\n2,5,8\n");
    ASSERT_EQ(written.m_vOverlong.size(), 1U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiColumn, 0U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiSize, 2U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiWidth, 1U);
    EXPECT_EQ(written.m_vOverlong[0].m_uiRow, 1U);
    EXPECT_EQ(written.m_vOverlong[0].m_dTime, 1.0);
}

TEST(TableTest, CsvHasWordsForWhatIsNoFiniteNumber) {
    EXPECT_EQ(
        write<CsvWriter>({"a"}, {{value({NOT_A_NUMBER, INFINITE, -INFINITE, -0.0})}}).m_strText,
        "time,a[0],a[1],a[2],a[3]\n0,nan,inf,-inf,-0\n");
}

TEST(TableTest, JsonLinesHaveValuesOfTheirOwnSize) {
    EXPECT_EQ(
        write<JsonLinesWriter>({"a", "b"}, {{value({1}), value({})}, {value({2, 3}), std::nullopt}})
            .m_strText,
        "{\"time\":0,\"a\":1,\"b\":[]}\n{\"time\":1,\"a\":[2,3],\"b\":null}\n");
}

TEST(TableTest, JsonLinesHaveTextsForWhatIsNoFiniteNumber) {
    EXPECT_EQ(
        write<JsonLinesWriter>({"a"}, {{value({NOT_A_NUMBER, INFINITE, -INFINITE})}}).m_strText,
        "{\"time\":0,\"a\":[\"NaN\",\"Infinity\",\"-Infinity\"]}\n");
}

TEST(TableTest, AnNpyFileHasARecordForEachRow) {
    const std::string strFile =
        write<NpyWriter>({"a", "b"}, {{value({1}), value({2, 3})}, {std::nullopt, value({4})}})
            .m_strText;
    ASSERT_GT(strFile.size(), 128U);
    EXPECT_EQ(strFile.substr(0, 8), std::string("\x93NUMPY\x02\x00", 8));
    const std::size_t uiLength =
        static_cast<unsigned char>(strFile[8]) + 256U * static_cast<unsigned char>(strFile[9]);
    EXPECT_EQ((12 + uiLength) % 64, 0U);
    const std::string strHeader = strFile.substr(12, uiLength);
    const std::string strExpected = "{'descr': [('time', '<f8'), ('a', '<f8'), ('b', '<f8', (2,))],"
                                    " 'fortran_order': False, 'shape': (2,), }";
    EXPECT_EQ(strHeader.substr(0, strExpected.size()), strExpected);
    EXPECT_EQ(strHeader.find_first_not_of(' ', strExpected.size()), strHeader.size() - 1);
    EXPECT_EQ(strHeader.back(), '\n');
    std::vector<double> vRecords((strFile.size() - 12 - uiLength) / sizeof(double));
    ASSERT_EQ(vRecords.size(), 8U);
    std::memcpy(vRecords.data(), strFile.data() + 12 + uiLength, 8 * sizeof(double));
    EXPECT_EQ(std::vector<double>(vRecords.begin(), vRecords.begin() + 5),
              (std::vector<double>{0, 1, 2, 3, 1}));
    EXPECT_TRUE(std::isnan(vRecords[5]));
    EXPECT_EQ(vRecords[6], 4.0);
    EXPECT_TRUE(std::isnan(vRecords[7]));
}

} // namespace Vxpr
