// Every built-in, with any parameters and any inputs: it computes or refuses, and a copy that is
// made between two frames goes on with the same bits as its source.
//
// The input tells the built-in, its parameters and then the frames.

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Parameter.h>
#include <velmora/math/xpr/Registry.h>

#include "fuzz/support/Input.h"
#include "fuzz/support/Result.h"
#include "fuzz/support/ScriptHost.h"
#include "fuzz/support/Target.h"

using namespace Velmora;
using namespace Velmora::Fuzz;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

namespace {

constexpr std::size_t FrameCount = 8;

/// How much a byte is for a built-in, as any two of them differ: FNV-1a, mixed once more.
std::uint32_t weigh(std::uint8_t in_uiByte, const std::string& in_strName) {
    constexpr std::uint32_t Prime = 16777619U;
    std::uint32_t uiHash = (2166136261U ^ in_uiByte) * Prime;
    for (const char c : in_strName) {
        uiHash = (uiHash ^ static_cast<std::uint8_t>(c)) * Prime;
    }
    uiHash = (uiHash ^ uiHash >> 16U) * 2246822507U;
    uiHash = (uiHash ^ uiHash >> 13U) * 3266489909U;
    return uiHash ^ uiHash >> 16U;
}

using Names = std::array<std::string, std::numeric_limits<std::uint8_t>::max() + 1>;

/// The built-in that each byte stands for: the one that it weighs most for. Inputs keep their
/// meaning when a built-in is added, which takes its share of the bytes and leaves the others.
const Names& getNames() {
    static const Names s_Names = [] {
        std::vector<std::string> vNames;
        Registry::getInstance().getNames(vNames);
        Names names;
        for (std::size_t ui = 0; ui != names.size(); ++ui) {
            const auto uiByte = static_cast<std::uint8_t>(ui);
            names[ui] = *std::max_element(
                vNames.begin(), vNames.end(), [=](const auto& in_strLeft, const auto& in_strRight) {
                    return weigh(uiByte, in_strLeft) < weigh(uiByte, in_strRight);
                });
        }
        return names;
    }();
    return s_Names;
}

int takeInt(Input& inout_Input) {
    unsigned int uiValue = 0;
    for (std::size_t ui = 0; ui != sizeof uiValue; ++ui) {
        uiValue = uiValue << 8U | inout_Input.takeByte();
    }
    return static_cast<int>(uiValue);
}

ParameterValue takeParameter(Input& inout_Input) {
    switch (inout_Input.takeByte() % 8) {
    case 0:
        return {};
    case 1:
        return inout_Input.takeText().c_str();
    case 2:
        return takeInt(inout_Input);
    case 3:
        return toFloat(inout_Input.takeNumber());
    case 4:
        return 8000;
    case 5:
        return 1000.0F;
    case 6:
        return "true";
    default:
        return int(inout_Input.takeByte());
    }
}

/// A built-in of an evaluator, and the frame that it reads.
class BuiltIn {
public:
    BuiltIn(Evaluator& inout_Evaluator, const char* in_szName)
        : m_pFunction(inout_Evaluator.getFunction(in_szName)) {}

    bool isNull() const { return m_pFunction.isNull(); }

    Function& operator*() const { return *m_pFunction; }

    Result compute(const std::vector<DoubleVector>& in_vFrame) {
        m_vFrame.push_back(in_vFrame);
        for (std::size_t ui = 0; ui != in_vFrame.size(); ++ui) {
            const Handle<Variable> pArgument = m_pFunction->getArgument(ui);
            if (pArgument.isNull()) {
                break;
            }
            pArgument->setValue(m_vFrame.back()[ui]);
        }
        if (m_vFrame.size() > 1) {
            m_vFrame.erase(m_vFrame.begin());
        }
        return Result::of(*m_pFunction);
    }

private:
    Handle<Function> m_pFunction;
    /// The frame before lives until this one has been set.
    std::vector<std::vector<DoubleVector>> m_vFrame;
};

bool setUp(Evaluator& inout_Evaluator, const char* in_szName, Input& inout_Input) {
    Function* const pFunction = Registry::getInstance().newFunction(in_szName);
    for (std::size_t ui = 0;; ++ui) {
        const Handle<Parameter> pParameter = pFunction->getParameter(ui);
        if (pParameter.isNull()) {
            break;
        }
        pParameter->setValue(takeParameter(inout_Input));
    }
    static const DoubleVector s_vNothing;
    for (std::size_t ui = 0;; ++ui) {
        const Handle<Variable> pArgument = pFunction->getArgument(ui);
        if (pArgument.isNull()) {
            break;
        }
        pArgument->setValue(s_vNothing);
    }
    return configure(inout_Evaluator, TSHandle<VirtualFileSystem>()) &&
           inout_Evaluator.addExpression(pFunction) && inout_Evaluator.link(true);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    Input input(in_pData, in_uiSize);
    const char* const szName = getNames()[input.takeByte()].c_str();
    const std::size_t uiCopied = input.takeBelow(FrameCount);
    const std::size_t uiReset = input.takeBelow(FrameCount);
    Evaluator evaluator;
    if (!setUp(evaluator, szName, input)) {
        return 0;
    }
    evaluator.reconfigureExpressions();
    BuiltIn original(evaluator, szName);
    check(!original.isNull(), "a built-in is linked and can be asked for");
    std::unique_ptr<Evaluator> pCopy;
    std::unique_ptr<BuiltIn> pCopied;
    for (std::size_t uiFrame = 0; uiFrame != FrameCount; ++uiFrame) {
        if (uiFrame == uiCopied) {
            pCopy = std::make_unique<Evaluator>(evaluator);
            pCopied = std::make_unique<BuiltIn>(*pCopy, szName);
            check(!pCopied->isNull(), "a copy has what its source has");
        }
        if (uiFrame == uiReset) {
            const bool bReset = (*original).reset();
            check(!pCopied || (**pCopied).reset() == bReset, "a copy is reset like its source");
        }
        const std::vector<DoubleVector> vFrame{input.takeFrame(), input.takeFrame()};
        const Result result = original.compute(vFrame);
        check(!pCopied || pCopied->compute(vFrame) == result, "a copy computes like its source");
    }
    return 0;
}
