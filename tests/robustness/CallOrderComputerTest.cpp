// A host may call the operations of a feature computer in any order, of those of the evaluator that
// the computer shares too, may write it to an archive and read it from one at any time, and may
// pass null where a pointer goes in: an assertion says what is wrong, and nothing else happens.

#include <exception>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerReader.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/vfsistream.h>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"
#include "robustness/ComputerModel.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using boost::serialization::make_nvp;
using Math::DoubleVector;
using namespace Math::Xpr;
using namespace CallOrder;

static_assert(!std::is_copy_constructible_v<FeatureComputerWithInputs> &&
                  !std::is_base_of_v<Cloneable, FeatureComputerWithInputs>,
              "an archive is the only way to a second computer");

/// A computer, an evaluator to share, and a file system with the script and the archives.
struct ComputerSubject : TellingSubject {
    using State = ComputerState;
    using Computer = FeatureComputerWithInputs;

    ComputerSubject() {
        // An absolute name, which stays as it is when it is read from an archive.
        for (const char* szPath : {".//s.xpr", "scripts//s.xpr"}) {
            m_mapFiles[szPath] = Script;
        }
    }

    TSHandle<VirtualFileSystem> files() const {
        return TSHandle<VirtualFileSystem>(new ScriptFiles(m_mapFiles));
    }

    void compute() {
        DoubleVector vFeature;
        tell(m_pComputer->computeFeatures(vFeature));
        EXPECT_TRUE(vFeature.empty() || (vFeature.size() == 1 && vFeature[0] == 1.0));
    }

    void save() {
        m_mapFiles["object"] = archiveOf(*m_pComputer);
        Math::FeatureComputer* const pComputer = m_pComputer.get();
        m_mapFiles["pointer"] = archiveOf(pComputer);
    }

    /// Into the computer, whatever it has done before.
    void readInto() {
        readFrom("object", [this](std::istream& inout_Stream) {
            boost::archive::polymorphic_text_iarchive archive(inout_Stream);
            archive >> make_nvp("computer", *m_pComputer);
        });
    }

    /// In place of the computer.
    void replaceByRead() {
        readFrom("pointer", [this](std::istream& inout_Stream) {
            auto pRead = FeatureComputerReader::read(inout_Stream, "computer");
            auto& computer = dynamic_cast<Computer&>(*pRead);
            static_cast<void>(pRead.release());
            m_pComputer.reset(&computer);
        });
    }

    /// As it is, and not the computer.
    void readNull(const char* in_szName) {
        Math::FeatureComputer* const pNone = nullptr;
        std::istringstream stream(archiveOf(pNone));
        tell(FeatureComputerReader::read(stream, in_szName) != nullptr);
    }

    template <class T>
    static std::string archiveOf(T& inout_Computer) {
        std::ostringstream stream;
        boost::archive::polymorphic_text_oarchive archive(stream);
        archive << make_nvp("computer", inout_Computer);
        return stream.str();
    }

    template <class Read>
    void readFrom(const char* in_szPath, const Read& in_Read) {
        try {
            vfsistream stream(files(), in_szPath);
            in_Read(stream);
        } catch (const std::exception& exception) {
            m_vTold.emplace_back(exception.what());
        }
    }

    std::map<std::string, std::string> m_mapFiles;
    Evaluator m_Evaluator;
    std::unique_ptr<Computer> m_pComputer = std::make_unique<Computer>("y");
};

TEST(CallOrderTest, FeatureComputer) {
    using Call = Operation<ComputerSubject>;
    using State = ComputerState;
    const std::vector<Call> vOperations{
        {"setXprFilename", [](auto& s) { s.tell(s.m_pComputer->setXprFilename("/s", s.files())); },
         [](auto& st) { return st.setScript(Named::Found, true); }},
        {"setXprFilename without files",
         [](auto& s) {
             s.tell(s.m_pComputer->setXprFilename("/s", TSHandle<VirtualFileSystem>()));
         },
         [](auto& st) { return st.setScript(Named::Found, false); }},
        {"setXprFilename null",
         [](auto& s) { s.tell(s.m_pComputer->setXprFilename(nullptr, s.files())); },
         [](auto& st) { return st.setScript(Named::None, true); }},
        {"setEvaluator", [](auto& s) { s.tell(s.m_pComputer->setEvaluator(&s.m_Evaluator)); },
         [](auto& st) { return st.setEvaluator(false); }},
        {"setEvaluator null",
         [](auto& s) { s.tell(s.m_pComputer->setEvaluator(LimitedObjPtr<Evaluator>())); },
         [](auto& st) { return st.setEvaluator(true); }},
        {"setInputNames", [](auto& s) { s.tell(s.m_pComputer->setInputNames({"left"})); },
         [](auto& st) { return st.setInputNames(true); }},
        {"setInputNames without any", [](auto& s) { s.tell(s.m_pComputer->setInputNames({})); },
         [](auto& st) { return st.setInputNames(false); }},
        {"setInput", [](auto& s) { s.tell(s.m_pComputer->setInput("left", someVector())); },
         [](auto& st) { return st.setInput(true); }},
        {"setInput null", [](auto& s) { s.tell(s.m_pComputer->setInput(nullptr, someVector())); },
         [](auto& st) { return st.setInput(false); }},
        {"computeFeatures", [](auto& s) { s.compute(); }, [](auto& st) { return st.compute(); }},
        {"reset", [](auto& s) { s.tell(s.m_pComputer->reset()); }, nothing<State>},
        {"a computer without a name", [](auto&) { const FeatureComputer computer(nullptr); },
         [](auto&) { return Conditions{"in_szFeatureName"}; }},
        {"save", [](auto& s) { s.save(); },
         [](auto& st) {
             st.m_Saved = st;
             st.m_bSaved = true;
             return Conditions();
         }},
        {"read into it", [](auto& s) { s.readInto(); }, [](auto& st) { return st.read(); }},
        {"read in its place", [](auto& s) { s.replaceByRead(); },
         [](auto& st) { return st.replaceByRead(); }},
        {"read a null pointer", [](auto& s) { s.readNull("computer"); },
         [](auto&) { return resultIs(false); }},
        {"read without a name", [](auto& s) { s.readNull(nullptr); },
         [](auto&) {
             return refusedWith("in_szName != nullptr && inout_Stream.rdbuf() != nullptr");
         }},
        {"the host configures",
         [](auto& s) { s.tell(s.m_Evaluator.configure(scriptsIn("scripts"), s.files())); },
         [](auto& st) { return st.configure(); }},
        {"the host links", [](auto& s) { s.tell(s.m_Evaluator.link(true)); },
         [](auto& st) { return st.link(); }},
        {"the host reconfigures", [](auto& s) { s.tell(s.m_Evaluator.reconfigureExpressions()); },
         [](auto& st) { return st.reconfigure(); }},
        {"the host goes on with a copy of its evaluator",
         [](auto& s) { s.m_Evaluator = Evaluator(s.m_Evaluator); }, nothing<State>},
    };
    std::size_t uiPairs = 0;
    for (const std::vector<const char*>& vszPrepared : std::vector<std::vector<const char*>>{
             {"setXprFilename", "computeFeatures", "save", "read into it", "setXprFilename"},
             {"setInputNames", "setEvaluator", "setXprFilename", "save"},
             {"setInputNames", "the host configures", "setEvaluator", "save", "setXprFilename",
              "the host links", "computeFeatures"},
             {"setEvaluator null", "setXprFilename", "save", "read in its place",
              "the host configures", "setEvaluator"}}) {
        uiPairs += callPairs(vOperations, vszPrepared);
    }
    report("FeatureComputer", uiPairs);
}

} // namespace

} // namespace Velmora::Testing
