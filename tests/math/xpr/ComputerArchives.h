#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_oarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/archive/polymorphic_xml_oarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <gtest/gtest.h>

#include <velmora/math/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/vfsistream.h>

#include "math/xpr/ComputerBench.h"

namespace Velmora::Testing {

/// A kind of archive: its name, and what makes one on a stream.
struct ArchiveFormat {
    std::string m_strName;
    std::function<std::unique_ptr<boost::archive::polymorphic_oarchive>(std::ostream&)> m_write;
    std::function<std::unique_ptr<boost::archive::polymorphic_iarchive>(std::istream&)> m_read;
};

template <class Output, class Input>
ArchiveFormat makeArchiveFormat(const char* in_szName) {
    return ArchiveFormat{
        in_szName,
        [](std::ostream& inout_Stream) { return std::make_unique<Output>(inout_Stream); },
        [](std::istream& inout_Stream) { return std::make_unique<Input>(inout_Stream); }};
}

inline ArchiveFormat textFormat() {
    return makeArchiveFormat<boost::archive::polymorphic_text_oarchive,
                             boost::archive::polymorphic_text_iarchive>("txt");
}

inline ArchiveFormat xmlFormat() {
    return makeArchiveFormat<boost::archive::polymorphic_xml_oarchive,
                             boost::archive::polymorphic_xml_iarchive>("xml");
}

/// Writes a computer through a pointer to the base class.
inline std::string saveComputer(const ArchiveFormat& in_Format,
                                Math::FeatureComputer& in_Computer) {
    std::ostringstream stream;
    {
        const auto pArchive = in_Format.m_write(stream);
        Math::FeatureComputer* const pComputer = &in_Computer;
        *pArchive << boost::serialization::make_nvp("computer", pComputer);
    }
    return stream.str();
}

/// Reads a computer of the class `Made` through a pointer to the base class.
///
/// When that fails, the archive destroys what it had read whole. The object that it was making it
/// abandons: its address then stands in the pointer, not converted to the base class. That object
/// is destroyed here, so that the tests see what else is left behind. Only a computer that was read
/// whole has an evaluator.
template <class Made = Math::Xpr::FeatureComputer>
std::unique_ptr<Math::FeatureComputer> loadComputer(const ArchiveFormat& in_Format,
                                                    std::istream& inout_Stream) {
    const std::size_t uiEvaluators = MemAccounts::get("Evaluator").liveBlocks;
    const auto pArchive = in_Format.m_read(inout_Stream);
    Math::FeatureComputer* pComputer = nullptr;
    try {
        *pArchive >> boost::serialization::make_nvp("computer", pComputer);
    } catch (...) {
        const bool bReadWhole = MemAccounts::get("Evaluator").liveBlocks != uiEvaluators;
        pArchive->delete_created_pointers();
        EXPECT_EQ(MemAccounts::get("Evaluator").liveBlocks, uiEvaluators)
            << "the abandoned object holds an evaluator";
        if (!bReadWhole) {
            delete static_cast<Made*>(static_cast<void*>(pComputer));
        }
        throw;
    }
    return std::unique_ptr<Math::FeatureComputer>(pComputer);
}

/// What the tests of archives share: scripts in memory, beside each other and in a directory, and
/// every kind of archive that can be read as the parameter.
class ComputerArchiveBench : public ComputerBench,
                             public ::testing::WithParamInterface<ArchiveFormat> {
protected:
    ComputerArchiveBench()
        : ComputerBench({{"./voice.xpr", "level = 3 + 4\n"},
                         {"./pair.xpr", "sum = left + right\n"},
                         {"./data/voice.xpr", "level = 8\n"},
                         {"./data/pair.xpr", "sum = left + right + 1\n"},
                         {"././voice.xpr", "level = 9\n"},
                         {".//abs/voice.xpr", "level = 10\n"},
                         {"scripts/voice.xpr", "level = 12\n"},
                         {"scripts/data/voice.xpr", "level = 13\n"}}) {}

    /// Writes an archive into the file system and reads it from there.
    template <class Made = Math::Xpr::FeatureComputer>
    std::unique_ptr<Math::FeatureComputer> loadFile(const char* in_szPath,
                                                    const std::string& in_strArchive) {
        m_pFiles->setFile(in_szPath, in_strArchive);
        vfsistream stream(m_pFileSystem, in_szPath);
        takeAskedPaths();
        return loadComputer<Made>(GetParam(), stream);
    }

    std::string saveOwn(const char* in_szScript = "voice", const char* in_szFeature = "level") {
        Math::Xpr::FeatureComputer computer(in_szFeature);
        EXPECT_TRUE(computer.setXprFilename(in_szScript, m_pFileSystem));
        return saveComputer(GetParam(), computer);
    }

    /// Of a computer that is to share an evaluator and has none yet.
    std::string saveWaiting(const char* in_szScript = "voice") {
        Math::Xpr::FeatureComputer computer("level");
        EXPECT_TRUE(computer.setEvaluator(LimitedObjPtr<Math::Xpr::Evaluator>()));
        EXPECT_TRUE(computer.setXprFilename(in_szScript, m_pFileSystem));
        return saveComputer(GetParam(), computer);
    }

    std::string saveWithInputs() {
        Math::Xpr::FeatureComputerWithInputs computer("sum");
        EXPECT_TRUE(computer.setInputNames({"left", "right"}));
        EXPECT_TRUE(computer.setXprFilename("pair", m_pFileSystem));
        return saveComputer(GetParam(), computer);
    }
};

/// For `INSTANTIATE_TEST_SUITE_P`.
inline auto everyArchiveFormat() {
    return ::testing::Values(textFormat(), xmlFormat());
}
inline std::string nameOfFormat(const ::testing::TestParamInfo<ArchiveFormat>& in_Info) {
    return in_Info.param.m_strName;
}

} // namespace Velmora::Testing
