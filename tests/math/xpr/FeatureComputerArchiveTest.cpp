#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include <boost/archive/polymorphic_binary_iarchive.hpp>
#include <boost/archive/polymorphic_binary_oarchive.hpp>
#include <boost/serialization/extended_type_info.hpp>
#include <boost/serialization/level.hpp>
#include <boost/serialization/tracking.hpp>
#include <boost/serialization/version.hpp>

#include <gmock/gmock.h>

#include <velmora/DiskFileSystem.h>

#include "math/xpr/ComputerArchives.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

namespace {

using boost::serialization::make_nvp;
using log4cplus::ERROR_LOG_LEVEL;
using Testing::ArchiveFormat;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::loadComputer;
using Testing::saveComputer;

class FeatureComputerArchiveTest : public Testing::ComputerArchiveBench {};

INSTANTIATE_TEST_SUITE_P(Format, FeatureComputerArchiveTest, Testing::everyArchiveFormat(),
                         Testing::nameOfFormat);

template <class T>
constexpr bool HasTraits =
    boost::serialization::implementation_level<T>::value ==
        boost::serialization::object_class_info&& boost::serialization::tracking_level<T>::value ==
        boost::serialization::track_selectively&& boost::serialization::version<T>::value == 0 &&
    std::is_polymorphic_v<T>;

TEST(FeatureComputerClassInfoTest, BothClassesAreKnownByTheirKeysAndTrackedThroughPointersOnly) {
    using boost::serialization::extended_type_info;
    EXPECT_NE(extended_type_info::find("XprFeatureComputer"), nullptr);
    EXPECT_NE(extended_type_info::find("XprFeatureComputerWithInputs"), nullptr);
    static_assert(HasTraits<FeatureComputer>);
    static_assert(HasTraits<FeatureComputerWithInputs>);
}

const std::filesystem::path GoldenDir =
    std::filesystem::path(VELMORA_SOURCE_DIR) / "tests/golden/archives";

std::string readGolden(const std::string& in_strName) {
    std::ifstream stream(GoldenDir / in_strName, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

// The golden archives hold a computer of every kind. VELMORA_WRITE_GOLDEN=1 in the environment
// makes this test write them anew: a change that shows there is a change of the format, which the
// archives of hosts don't survive.
TEST_P(FeatureComputerArchiveTest, TheFormatIsThatOfTheGoldenArchives) {
    const std::vector<std::pair<std::string, std::string>> vArchives{
        {"own", saveOwn()}, {"shared", saveWaiting()}, {"inputs", saveWithInputs()}};
    for (const auto& [strKind, strArchive] : vArchives) {
        const std::string strName = strKind + "." + GetParam().m_strName;
        if (std::getenv("VELMORA_WRITE_GOLDEN") != nullptr) {
            std::ofstream(GoldenDir / strName, std::ios::binary) << strArchive;
        }
        EXPECT_EQ(strArchive, readGolden(strName)) << strName;
    }
}

/// The golden archives are read from where they lie, by a name relative to the working directory:
/// below that an evaluator of a computer's own looks for scripts.
class GoldenArchive {
public:
    explicit GoldenArchive(const std::string& in_strName)
        : m_pDisk(new DiskFileSystem),
          m_Stream(m_pDisk, std::filesystem::relative(GoldenDir / in_strName).string().c_str()) {}

    std::istream& stream() { return m_Stream; }
    const TSHandle<VirtualFileSystem>& disk() const { return m_pDisk; }

private:
    TSHandle<VirtualFileSystem> m_pDisk;
    vfsistream m_Stream;
};

TEST_P(FeatureComputerArchiveTest, AGoldenComputerWithAnEvaluatorOfItsOwnIsReadyOnceItIsRead) {
    GoldenArchive archive("own." + GetParam().m_strName);
    const auto pComputer = loadComputer(GetParam(), archive.stream());
    EXPECT_NE(dynamic_cast<FeatureComputer*>(pComputer.get()), nullptr);
    EXPECT_EQ(compute(*pComputer), "[7]");
}

TEST_P(FeatureComputerArchiveTest, AGoldenComputerWithASharedEvaluatorWaitsForIt) {
    GoldenArchive archive("shared." + GetParam().m_strName);
    const auto pComputer = loadComputer(GetParam(), archive.stream());
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(Testing::scriptsIn("."), archive.disk()));
    EXPECT_TRUE(dynamic_cast<FeatureComputer&>(*pComputer).setEvaluator(&evaluator));
    EXPECT_TRUE(finish(evaluator));
    EXPECT_EQ(compute(*pComputer), "[7]");
}

TEST_P(FeatureComputerArchiveTest, AGoldenComputerWithInputsTakesThemAtOnce) {
    GoldenArchive archive("inputs." + GetParam().m_strName);
    const auto pComputer = loadComputer<FeatureComputerWithInputs>(GetParam(), archive.stream());
    auto& inputs = dynamic_cast<Velmora::Math::FeatureComputerWithInputs&>(*pComputer);
    const DoubleVector vLeft{2.0};
    const DoubleVector vRight{3.0};
    EXPECT_TRUE(inputs.setInput("left", vLeft));
    EXPECT_TRUE(inputs.setInput("right", vRight));
    EXPECT_EQ(compute(*pComputer), "[5]");
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_P(FeatureComputerArchiveTest, AComputerThatHasComputedWritesNothingElse) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("voice", m_pFileSystem));
    const std::string strBefore = saveComputer(GetParam(), computer);
    ASSERT_EQ(compute(computer), "[7]");
    EXPECT_EQ(saveComputer(GetParam(), computer), strBefore);
}

TEST_P(FeatureComputerArchiveTest, ARelativeScriptNameIsRelativeToTheArchive) {
    const auto pComputer = loadFile("data/archive", saveOwn());
    EXPECT_THAT(takeAskedPaths(), ElementsAre("./data/voice.xpr"));
    EXPECT_EQ(compute(*pComputer), "[8]");
}

TEST_P(FeatureComputerArchiveTest, AnArchiveWithoutADirectoryIsInTheWorkingDirectory) {
    const auto pComputer = loadFile("archive", saveOwn());
    EXPECT_THAT(takeAskedPaths(), ElementsAre("././voice.xpr"));
    EXPECT_EQ(compute(*pComputer), "[9]");
}

TEST_P(FeatureComputerArchiveTest, TheNameOfTheArchivesDirectoryIsNotChecked) {
    m_pFiles->setFile("./../data/voice.xpr", "level = 14\n");
    const auto pComputer = loadFile("../data/archive", saveOwn());
    EXPECT_THAT(takeAskedPaths(), ElementsAre("./../data/voice.xpr"));
    EXPECT_EQ(compute(*pComputer), "[14]");
}

TEST_P(FeatureComputerArchiveTest, AnAbsoluteScriptNameIsTakenAsItStands) {
    const auto pComputer = loadFile("data/archive", saveOwn("/abs/voice"));
    EXPECT_THAT(takeAskedPaths(), ElementsAre(".//abs/voice.xpr"));
    EXPECT_EQ(compute(*pComputer), "[10]");
}

TEST_P(FeatureComputerArchiveTest, TheComposedNameIsWhatALaterArchiveHolds) {
    const auto pComputer = loadFile("data/archive", saveOwn());
    EXPECT_EQ(saveComputer(GetParam(), *pComputer), saveOwn("data/voice"));
}

TEST_P(FeatureComputerArchiveTest, AnArchiveInAPlainStreamNamesAFileOfTheMachine) {
    const TempDirectory directory;
    directory.write("voice.xpr", "level = 21\n");
    // The name can't lead from here to the directory: that takes a "..", which is refused.
    const auto former = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());
    std::istringstream stream(saveOwn());
    const auto pComputer = loadComputer(GetParam(), stream);
    std::filesystem::current_path(former);
    EXPECT_EQ(compute(*pComputer), "[21]");
}

TEST_P(FeatureComputerArchiveTest, AWaitingComputerAddsItsScriptWhenItGetsTheEvaluator) {
    const int iHandles = m_pFileSystem.getReferenceCount();
    const auto pComputer = loadFile("data/archive", saveWaiting());
    EXPECT_THAT(takeAskedPaths(), IsEmpty());
    // It remembers the stream's file system.
    EXPECT_EQ(m_pFileSystem.getReferenceCount(), iHandles + 1);

    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    const int iWithEvaluator = m_pFileSystem.getReferenceCount();
    EXPECT_TRUE(dynamic_cast<FeatureComputer&>(*pComputer).setEvaluator(&evaluator));
    EXPECT_THAT(takeAskedPaths(), ElementsAre("scripts/data/voice.xpr"));
    EXPECT_EQ(m_pFileSystem.getReferenceCount(), iWithEvaluator - 1);
    EXPECT_TRUE(finish(evaluator));
    EXPECT_EQ(compute(*pComputer), "[13]");
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_P(FeatureComputerArchiveTest, AWaitingComputerIsRenamedWithoutAFileBeingAskedFor) {
    const auto pComputer = loadFile("data/archive", saveWaiting());
    auto& computer = dynamic_cast<FeatureComputer&>(*pComputer);
    EXPECT_TRUE(computer.setXprFilename("voice", m_pFileSystem));
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_TRUE(computer.setEvaluator(&evaluator));
    EXPECT_THAT(takeAskedPaths(), ElementsAre("scripts/voice.xpr"));
}

TEST_P(FeatureComputerArchiveTest, AnObjectOfTheHostIsReadInPlace) {
    std::ostringstream written;
    {
        const auto pArchive = GetParam().m_write(written);
        FeatureComputer level("level");
        FeatureComputer other("other");
        ASSERT_TRUE(level.setXprFilename("voice", m_pFileSystem));
        ASSERT_TRUE(other.setXprFilename("voice", m_pFileSystem));
        *pArchive << make_nvp("first", std::as_const(level));
        *pArchive << make_nvp("second", std::as_const(other));
    }
    m_pFiles->setFile("data/archive", written.str());
    vfsistream stream(m_pFileSystem, "data/archive");
    const auto pArchive = GetParam().m_read(stream);
    FeatureComputer first("anything");
    FeatureComputer second("anything");
    *pArchive >> make_nvp("first", first) >> make_nvp("second", second);
    EXPECT_EQ(compute(first), "[8]");
    EXPECT_EQ(compute(second), "none");
    EXPECT_THAT(errorLines(),
                ElementsAre("voice.other is not a valid expression in this evaluator"));
}

TEST_P(FeatureComputerArchiveTest, TwoPointersToOneComputerAreReadAsOneObject) {
    std::ostringstream written;
    {
        const auto pArchive = GetParam().m_write(written);
        FeatureComputerWithInputs source("sum");
        ASSERT_TRUE(source.setInputNames({"left", "right"}));
        ASSERT_TRUE(source.setXprFilename("pair", m_pFileSystem));
        Velmora::Math::FeatureComputer* const pPlain = &source;
        Velmora::Math::FeatureComputerWithInputs* const pInputs = &source;
        FeatureComputer* const pConcrete = &source;
        *pArchive << make_nvp("plain", pPlain) << make_nvp("inputs", pInputs)
                  << make_nvp("concrete", pConcrete);
    }
    m_pFiles->setFile("data/archive", written.str());
    vfsistream stream(m_pFileSystem, "data/archive");
    const auto pArchive = GetParam().m_read(stream);
    Velmora::Math::FeatureComputer* pPlain = nullptr;
    Velmora::Math::FeatureComputerWithInputs* pInputs = nullptr;
    FeatureComputer* pConcrete = nullptr;
    *pArchive >> make_nvp("plain", pPlain) >> make_nvp("inputs", pInputs) >>
        make_nvp("concrete", pConcrete);
    const std::unique_ptr<Velmora::Math::FeatureComputer> pOwner(pPlain);
    EXPECT_EQ(static_cast<Velmora::Math::FeatureComputer*>(pInputs), pPlain);
    EXPECT_EQ(static_cast<Velmora::Math::FeatureComputer*>(pConcrete), pPlain);
}

TEST_P(FeatureComputerArchiveTest, InputNamesKeepTheirOrderAndTheirCharacters) {
    const std::vector<std::string> vNames{"right", "left", " a b", "<&>\"'", "right"};
    FeatureComputerWithInputs computer("sum");
    ASSERT_TRUE(computer.setInputNames(vNames));
    ASSERT_TRUE(computer.setXprFilename("pair", m_pFileSystem));
    const std::string strArchive = saveComputer(GetParam(), computer);
    const auto pComputer = loadFile<FeatureComputerWithInputs>("data/archive", strArchive);
    auto& inputs = dynamic_cast<Velmora::Math::FeatureComputerWithInputs&>(*pComputer);
    const DoubleVector vFrame{1.0};
    for (const std::string& strName : vNames) {
        EXPECT_TRUE(inputs.setInput(strName.c_str(), vFrame)) << strName;
    }
}

TEST_P(FeatureComputerArchiveTest, NamesReadFromAnArchiveReplaceThoseBefore) {
    std::ostringstream written;
    {
        const auto pArchive = GetParam().m_write(written);
        FeatureComputerWithInputs source("level");
        ASSERT_TRUE(source.setInputNames({"left"}));
        ASSERT_TRUE(source.setXprFilename("voice", m_pFileSystem));
        *pArchive << make_nvp("computer", std::as_const(source));
    }
    m_pFiles->setFile("data/archive", written.str());
    vfsistream stream(m_pFileSystem, "data/archive");
    const auto pArchive = GetParam().m_read(stream);
    FeatureComputerWithInputs computer;
    ASSERT_TRUE(computer.setInputNames({"former"}));
    *pArchive >> make_nvp("computer", computer);
    const DoubleVector vFrame{1.0};
    EXPECT_TRUE(computer.setInput("left", vFrame));
    EXPECT_FALSE(computer.setInput("former", vFrame));
}

TEST_P(FeatureComputerArchiveTest, MoreInputsThanAreReservedAheadAreRead) {
    std::vector<std::string> vNames;
    for (int iName = 0; iName != 3000; ++iName) {
        vNames.push_back("input_with_a_long_name_" + std::to_string(iName));
    }
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames(vNames));
    ASSERT_TRUE(computer.setEvaluator(LimitedObjPtr<Evaluator>()));
    ASSERT_TRUE(computer.setXprFilename("voice", m_pFileSystem));
    const std::string strArchive = saveComputer(GetParam(), computer);
    const auto pComputer = loadFile<FeatureComputerWithInputs>("voice", strArchive);
    EXPECT_THAT(saveComputer(GetParam(), *pComputer), HasSubstr(vNames.back()));
}

TEST(FeatureComputerBinaryArchiveTest, ABinaryArchiveGivesAComputerThatIsNotSetUp) {
    const ArchiveFormat binary =
        Testing::makeArchiveFormat<boost::archive::polymorphic_binary_oarchive,
                                   boost::archive::polymorphic_binary_iarchive>("bin");
    FeatureComputer waiting("level");
    waiting.setEvaluator(LimitedObjPtr<Evaluator>());
    waiting.setXprFilename("voice", TSHandle<VirtualFileSystem>());
    FeatureComputerWithInputs own("sum");
    std::istringstream stream(saveComputer(binary, waiting));
    std::istringstream ownStream(saveComputer(binary, own));

    const AssertionCapture assertions;
    const auto pComputer = loadComputer(binary, stream);
    EXPECT_THAT(assertions.expressions(), ElementsAre("pArchive != 0"));
    EXPECT_NE(loadComputer<FeatureComputerWithInputs>(binary, ownStream), nullptr);
    EXPECT_EQ(assertions.count("pArchive != 0"), 2u);

    const LogCapture log;
    DoubleVector vFeature;
    EXPECT_FALSE(pComputer->computeFeatures(vFeature));
    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("voice.level is not a valid expression in this evaluator"));
    EXPECT_TRUE(pComputer->reset());
}

} // namespace

} // namespace Velmora::Math::Xpr
