#include "InputFeed.h"

#include "Failure.h"
#include "NumberText.h"
#include "StatementScanner.h"

#include <velmora/math/xpr/VariableImpl.h>

#include <algorithm>

namespace Vxpr {

using Velmora::Math::DoubleVector;
using Velmora::Math::Xpr::VariableImpl;

namespace {

constexpr const char* FRAME = "frame";
constexpr const char* SPECTRUM = "spectrum";

std::string takeBareName(const std::string& in_strQualifiedName) {
    return in_strQualifiedName.substr(in_strQualifiedName.rfind('.') + 1);
}

void assign(DoubleVector& out_vTarget, const double* in_pValues, std::size_t in_uiSize) {
    out_vTarget.resize(in_uiSize);
    std::copy_n(in_pValues, in_uiSize, out_vTarget.begin());
}

} // namespace

InputFeed::InputFeed(const std::vector<FeatureGraph::Node*>& in_vInputs, const Tables& in_Tables,
                     const FrameSource& in_Frames, ScriptLibrary& in_Library,
                     DiagnosticPrinter& inout_Printer)
    : m_Frames(in_Frames), m_Library(in_Library), m_Printer(inout_Printer) {
    for (FeatureGraph::Node* pNode : in_vInputs) {
        // Scripts that declare an input of one name share its values.
        const std::string strName = takeBareName(pNode->getName());
        Input& input = findInput(strName);
        const bool bNew = input.m_vVariables.empty();
        input.m_vVariables.push_back(dynamic_cast<VariableImpl*>(pNode));
        if (!bNew) {
            continue;
        }
        choose(input, in_Tables);
        if (input.m_Kind == Kind::Table && input.m_pTable == nullptr) {
            reportMissing(input, pNode->getName());
        }
    }
    // A table that no feature reads has its rows, too, and they may be all that makes up frames.
    for (const auto& [strName, strPath] : in_Tables) {
        Input& input = findInput(strName);
        if (input.m_vVariables.empty()) {
            choose(input, in_Tables);
        }
    }
}

InputFeed::~InputFeed() = default;

InputFeed::Input& InputFeed::findInput(const std::string& in_strName) {
    for (const std::unique_ptr<Input>& pInput : m_vInputs) {
        if (pInput->m_strName == in_strName) {
            return *pInput;
        }
    }
    // Variables point at the value, so an input never moves.
    m_vInputs.push_back(std::make_unique<Input>());
    m_vInputs.back()->m_strName = in_strName;
    return *m_vInputs.back();
}

void InputFeed::choose(Input& inout_Input, const Tables& in_Tables) {
    const auto iteTable = in_Tables.find(inout_Input.m_strName);
    if (iteTable != in_Tables.end()) {
        inout_Input.m_pTable = InputTable::open(inout_Input.m_strName, iteTable->second);
    } else if (m_Frames.getSamples() != nullptr && inout_Input.m_strName == FRAME) {
        inout_Input.m_Kind = Kind::Frame;
    } else if (m_Frames.getSamples() != nullptr && inout_Input.m_strName == SPECTRUM) {
        inout_Input.m_Kind = Kind::Spectrum;
        m_pSpectrum = std::make_unique<PowerSpectrum>(m_Frames.getFrameSize());
        inout_Input.m_vValue.resize(m_pSpectrum->getSize());
    }
}

void InputFeed::reportMissing(const Input& in_Input, const std::string& in_strQualifiedName) {
    const std::string strScript = in_strQualifiedName.substr(0, in_strQualifiedName.rfind('.'));
    const ScriptText* pScript = m_Library.find(strScript);
    const bool bOfRecording = in_Input.m_strName == FRAME || in_Input.m_strName == SPECTRUM;
    m_Printer.print(
        {Diagnostic::Severity::Error,
         pScript != nullptr ? StatementScanner(*pScript).findInput(in_Input.m_strName, 0)
                            : std::nullopt,
         "nothing feeds the input `" + in_Input.m_strName + "`; " +
             (bOfRecording ? "give a recording with -i, or" : "give") +
             " a table with a row for each frame: --input " + in_Input.m_strName + "=FILE"});
}

bool InputFeed::readRows(std::uint64_t in_uiFrame) {
    const Input* pEnded = nullptr;
    const Input* pGoesOn = nullptr;
    for (const std::unique_ptr<Input>& pInput : m_vInputs) {
        if (pInput->m_pTable == nullptr) {
            continue;
        }
        if (pInput->m_pTable->next(m_vRow)) {
            assign(pInput->m_vValue, m_vRow.data(), m_vRow.size());
            pGoesOn = pInput.get();
        } else {
            pEnded = pInput.get();
        }
    }
    const bool bRecording = m_Frames.getSamples() != nullptr;
    if (pEnded == nullptr) {
        return bRecording || pGoesOn != nullptr;
    }
    if (!bRecording && pGoesOn == nullptr) {
        return false;
    }
    throw Failure::ofData(
        pEnded->m_pTable->getName() + " ends after " + std::to_string(in_uiFrame) + " rows, but " +
        (bRecording ? "the recording" : pGoesOn->m_pTable->getName()) + " goes on at " +
        toText(m_Frames.getTime()) + " s; a table for --input needs a row for each frame");
}

bool InputFeed::feed(std::uint64_t in_uiFrame) {
    if (!readRows(in_uiFrame)) {
        return false;
    }
    for (const std::unique_ptr<Input>& pInput : m_vInputs) {
        if (pInput->m_Kind == Kind::Frame) {
            assign(pInput->m_vValue, m_Frames.getSamples(), m_Frames.getFrameSize());
        } else if (pInput->m_Kind == Kind::Spectrum) {
            m_pSpectrum->compute(m_Frames.getSamples(), pInput->m_vValue.begin());
        }
        for (Velmora::Math::Xpr::Variable* pVariable : pInput->m_vVariables) {
            pVariable->setValue(pInput->m_vValue);
        }
    }
    return true;
}

std::vector<std::string> InputFeed::findUnread() {
    std::vector<std::string> vNames;
    for (const std::unique_ptr<Input>& pInput : m_vInputs) {
        if (pInput->m_pTable != nullptr && pInput->m_pTable->next(m_vRow)) {
            vNames.push_back(pInput->m_pTable->getName());
        }
    }
    return vNames;
}

} // namespace Vxpr
