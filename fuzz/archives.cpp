// Archives of feature computers, of text or of XML, read through a pointer to the base class: the
// result is a computer or an exception, and nothing is left behind. The input is the archive.

#include <exception>
#include <memory>
#include <sstream>
#include <string>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerReader.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/vfsistream.h>

#include "fuzz/support/ScriptHost.h"
#include "fuzz/support/Target.h"
#include "tests/support/MemoryFileSystem.h"

using namespace Velmora;
using namespace Velmora::Math;

namespace {

constexpr const char* ArchivePath = "data/archive";

/// Null if the archive can't be read.
std::unique_ptr<FeatureComputer> read(std::istream& inout_Stream) {
    try {
        return Xpr::FeatureComputerReader::read(inout_Stream, "computer");
    } catch (const std::exception&) {
        return nullptr;
    }
}

void use(FeatureComputer& inout_Computer, const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    Xpr::Evaluator evaluator;
    if (auto* const pXpr = dynamic_cast<Xpr::FeatureComputer*>(&inout_Computer)) {
        Fuzz::configure(evaluator, in_pFileSystem);
        if (pXpr->setEvaluator(LimitedObjPtr<Xpr::Evaluator>(&evaluator)) && evaluator.link(true)) {
            evaluator.reconfigureExpressions();
        }
    }
    DoubleVector vFeature;
    const DoubleVector vInput{1.0, 2.0, 3.0};
    for (int iFrame = 0; iFrame != 3; ++iFrame) {
        if (auto* const pInputs = dynamic_cast<FeatureComputerWithInputs*>(&inout_Computer)) {
            pInputs->setInput("left", vInput);
            pInputs->setInput("right", vInput);
        }
        inout_Computer.computeFeatures(vFeature);
        inout_Computer.reset();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    const std::string strArchive(in_pData, in_pData + in_uiSize);
    auto* const pFiles = new Testing::MemoryFileSystem({{ArchivePath, strArchive},
                                                        {"./voice.xpr", "level = 3 + 4\n"},
                                                        {"./data/voice.xpr", "level = 8\n"},
                                                        {"./data/pair.xpr", "sum = left + right\n"},
                                                        {"scripts/voice.xpr", "level = 12\n"}});
    const TSHandle<VirtualFileSystem> pFileSystem(pFiles);
    {
        vfsistream stream(pFileSystem, ArchivePath);
        if (const auto pComputer = read(stream)) {
            use(*pComputer, pFileSystem);
        }
    }
    std::istringstream stream(strArchive);
    read(stream);
    return 0;
}
