#include "tools/vxpr/InputTable.h"

#include "ScratchDirectory.h"
#include "tools/vxpr/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace Vxpr {

using testing::HasSubstr;
using TestSupport::ScratchDirectory;

namespace {

using Rows = std::vector<std::vector<double>>;

Rows readAll(const std::string& in_strPath) {
    const auto pTable = InputTable::open("pitch", in_strPath);
    Rows vRows;
    std::vector<double> vRow;
    while (pTable->next(vRow)) {
        vRows.push_back(vRow);
    }
    return vRows;
}

std::string failToRead(const std::string& in_strPath) {
    try {
        readAll(in_strPath);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.getStatus(), ExitStatus::DataAtFault);
        return failure.what();
    }
    return "no failure";
}

struct Case {
    const char* m_szName;
    const char* m_szText;
    Rows m_vExpected;
};

const std::vector<Case> CASES = {
    {"numbers alone", "1\n2.5\n-3e2\n", {{1}, {2.5}, {-300}}},
    {"no line end at the end", "1\n2", {{1}, {2}}},
    {"line ends of another system", "1,2\r\n3,4\r\n", {{1, 2}, {3, 4}}},
    {"line ends of an old system", "1\r2\r", {{1}, {2}}},
    {"empty lines", "1\n\n2\n\n", {{1}, {2}}},
    {"commas", "1,2\n3,4\n", {{1, 2}, {3, 4}}},
    {"semicolons", "1;2\n3;4\n", {{1, 2}, {3, 4}}},
    {"tabs", "1\t2\n3\t4\n", {{1, 2}, {3, 4}}},
    {"blanks, also several", " 1  2\n3 4 \n", {{1, 2}, {3, 4}}},
    {"blanks beside commas", "1 , 2\n", {{1, 2}}},
    {"quoted cells", "\"1\",\"2\"\n", {{1, 2}}},
    {"a header without the input's name", "time,a,b\n0,1,2\n", {{1, 2}}},
    {"a header with the input's name", "time,a,pitch\n0,1,2\n", {{2}}},
    {"a header with elements of the input", "pitch[0],a,pitch[1]\n0,1,2\n", {{0, 2}}},
    {"a header with elements in another order", "pitch[2],pitch[0],pitch[1]\n3,1,2\n", {{1, 2, 3}}},
    {"a header with more than ten elements",
     "pitch[10],pitch[9],pitch[8],pitch[7],pitch[6],pitch[5],pitch[4],pitch[3],pitch[2],pitch[1],"
     "pitch[0]\n10,9,8,7,6,5,4,3,2,1,0\n",
     {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}},
    {"a header with the elements of a longer name", "pitches[1],pitch[0]\n3,1\n", {{1}}},
    {"a header with a byte-order mark", "\xef\xbb\xbfpitch\n1\n", {{1}}},
    {"a header with a column that begins with a digit", "time,8k.time\n0,1\n", {{1}}},
    {"a header with the input's name among others", "1st,pitch\n0,1\n", {{1}}},
    {"a header that has what may be a number", "nan,a\n0,1\n", {{0, 1}}},
    {"a header with a separator between quotes", "time,\"a,b\",\"pitch\"\n0,1,2\n", {{2}}},
    {"other separators between quotes", "\"a,b\";c\n1;2\n", {{1, 2}}},
    {"an infinite first row", "inf,-inf\n", {{HUGE_VAL, -HUGE_VAL}}},
    {"a header alone", "pitch\n", {}},
    {"rows of several sizes", "1\n1,2\n", {{1}, {1, 2}}},
    {"empty cells at the end", "1,2,3\n4,,\n", {{1, 2, 3}, {4}}},
    {"nothing", "", {}},
};

std::string makeNpy(const std::string& in_strHeader, const std::string& in_strData) {
    std::string strFile("\x93NUMPY\x01\x00", 8);
    strFile += static_cast<char>(in_strHeader.size());
    strFile += '\0';
    return strFile + in_strHeader + in_strData;
}

template <class T>
std::string toBytes(const std::vector<T>& in_vValues) {
    return {reinterpret_cast<const char*>(in_vValues.data()), in_vValues.size() * sizeof(T)};
}

} // namespace

TEST(InputTableTest, TablesOfManyKindsAreRead) {
    const ScratchDirectory scratch;
    for (const Case& sample : CASES) {
        EXPECT_EQ(readAll(scratch.write("table.csv", sample.m_szText)), sample.m_vExpected)
            << sample.m_szName;
    }
}

TEST(InputTableTest, AnEmptyCellInTheMiddleIsNotANumber) {
    const ScratchDirectory scratch;
    const Rows vRows = readAll(scratch.write("table.csv", "1,,3\n"));
    ASSERT_EQ(vRows.size(), 1U);
    ASSERT_EQ(vRows[0].size(), 3U);
    EXPECT_TRUE(std::isnan(vRows[0][1]));
}

TEST(InputTableTest, ACellThatIsNoNumberIsNamedByLineAndColumn) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", "a,b\n1,2\n\n3,x\n")),
                HasSubstr("line 4: 'x' in column 2 is no number"));
}

TEST(InputTableTest, AFaultyFirstRowIsNoHeader) {
    const ScratchDirectory scratch;
    for (const char* szCell : {"1x", "1e400", "-", ".x", "+a", "1;5", "\"3,5\""}) {
        EXPECT_THAT(failToRead(scratch.write("table.csv", std::string(szCell) + ",2\n2,3\n")),
                    HasSubstr("line 1: '"))
            << szCell;
    }
    EXPECT_THAT(failToRead(scratch.write("table.csv", "x,2\n2,3\n")),
                HasSubstr("line 1: 'x' in column 1 is no number"));
}

TEST(InputTableTest, AFirstRowThatIsNotANumberCounts) {
    const ScratchDirectory scratch;
    EXPECT_EQ(readAll(scratch.write("table.csv", "nan\n1\n")).size(), 2U);
}

TEST(InputTableTest, ASeparatorBetweenQuotesDoesntDivide) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", "1,2\n\"3,5\",4\n")),
                HasSubstr("line 2: '3,5' in column 1 is no number"));
}

TEST(InputTableTest, AQuoteThatIsntClosedIsRefused) {
    const ScratchDirectory scratch;
    for (const char* szRow : {"3,\"5", "3,5\"", "3, \"5 ,4"}) {
        EXPECT_THAT(failToRead(scratch.write("table.csv", std::string("1,2\n") + szRow + "\n")),
                    HasSubstr("line 2: a quote in column 2 isn't closed"))
            << szRow;
    }
}

TEST(InputTableTest, BytesThatATerminalActsUponAreNotShown) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", std::string("1\nq\0r\x1b[2J\n", 10))),
                HasSubstr("line 2: 'q?r?[2J' in column 1 is no number"));
}

TEST(InputTableTest, ARowThatIsLongerThanTheHeaderIsRefused) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", "a,b\n1,2,3\n")),
                HasSubstr("the row has 3 cells, but the header 2"));
}

TEST(InputTableTest, AHeaderOfTimesAloneIsRefused) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", "time\n1\n")),
                HasSubstr("no column for the input `pitch`"));
}

TEST(InputTableTest, ColumnsOfElementsAreRefusedWhereTheyDontMakeAVector) {
    const ScratchDirectory scratch;
    const auto refuse = [&](const std::string& in_strHeader) {
        return failToRead(scratch.write("table.csv", in_strHeader + "\n1,2,3\n"));
    };
    EXPECT_THAT(refuse("pitch[0],pitch[3],pitch[1]"),
                HasSubstr("line 1: the header has a column 'pitch[3]', but none for element 2 of "
                          "`pitch`"));
    EXPECT_THAT(refuse("pitch[1],pitch[2],pitch[3]"), HasSubstr("none for element 0 of `pitch`"));
    EXPECT_THAT(refuse("pitch[0],pitch[1],pitch[1]"),
                HasSubstr("two columns for element 1 of `pitch`"));
    EXPECT_THAT(refuse("pitch,time,pitch"), HasSubstr("two columns for element 0 of `pitch`"));
    for (const char* szPlace : {"", "x", "-1", "1.5", "18446744073709551616"}) {
        EXPECT_THAT(refuse("pitch[0],time,pitch[" + std::string(szPlace) + "]"),
                    HasSubstr("the column 'pitch[" + std::string(szPlace) +
                              "]' has no number of an element between its brackets"))
            << szPlace;
    }
}

TEST(InputTableTest, OfALongCellTheBeginningIsShown) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.write("table.csv", "1\n" + std::string(100, 'x') + "\n")),
                HasSubstr("line 2: '" + std::string(60, 'x') + "...' in column 1 is no number"));
    EXPECT_THAT(failToRead(scratch.write("table.csv", "1\n" + std::string(60, 'x') + "\n")),
                HasSubstr("line 2: '" + std::string(60, 'x') + "' in column 1"));
    EXPECT_THAT(failToRead(scratch.write("table.csv",
                                         "1\nx" + std::string(58, 'x') + "\xc3\xa4\xc3\xa4\n")),
                HasSubstr("line 2: '" + std::string(59, 'x') + "...' in column 1"));
}

TEST(InputTableTest, AMissingTableIsRefused) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToRead(scratch.getPath("missing.csv")), HasSubstr("check the path"));
    EXPECT_THAT(failToRead(scratch.getPath()), HasSubstr("is a directory"));
}

TEST(InputTableTest, NumpyArraysAreRead) {
    const ScratchDirectory scratch;
    const std::string strDoubles = toBytes<double>({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(readAll(scratch.write("a.npy",
                                    makeNpy("{'descr': '<f8', 'fortran_order': False, 'shape': (3, "
                                            "2), }",
                                            strDoubles))),
              (Rows{{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_EQ(
        readAll(scratch.write("b.npy", makeNpy("{'descr': '<f8', 'fortran_order': False, 'shape': "
                                               "(2,), }",
                                               strDoubles))),
        (Rows{{1}, {2}}));
    EXPECT_EQ(readAll(scratch.write("c.npy",
                                    makeNpy("{'descr': '<f4', 'fortran_order': False, 'shape': (1, "
                                            "2), }",
                                            toBytes<float>({0.5F, -2.0F})))),
              (Rows{{0.5, -2.0}}));
}

TEST(InputTableTest, NumpyArraysOfOtherKindsAreRefusedWithAdvice) {
    const ScratchDirectory scratch;
    const auto refuse = [&](const std::string& in_strHeader) {
        return failToRead(scratch.write("a.npy", makeNpy(in_strHeader, "")));
    };
    EXPECT_THAT(refuse("{'descr': '<i4', 'fortran_order': False, 'shape': (2,), }"),
                HasSubstr("plain 32-bit or 64-bit floats"));
    EXPECT_THAT(refuse("{'descr': '<f8', 'fortran_order': True, 'shape': (2, 2), }"),
                HasSubstr("column by column"));
    EXPECT_THAT(refuse("{'descr': '<f8', 'fortran_order': False, 'shape': (), }"),
                HasSubstr("dimensions"));
    EXPECT_THAT(refuse("{'descr': '<f8', 'fortran_order': False, 'shape': (2, 2, 2), }"),
                HasSubstr("numpy.save"));
    EXPECT_THAT(refuse("{'descr': '<f8', 'fortran_order': False, 'shape': (2,), }"),
                HasSubstr("truncated"));
    EXPECT_THAT(refuse("{'descr': '<f8', 'fortran_order': False, 'shape': (1, 99999999999), }"),
                HasSubstr("too long"));
    EXPECT_THAT(failToRead(scratch.write("b.npy", "text")), HasSubstr("no NumPy array file"));
}

} // namespace Vxpr
