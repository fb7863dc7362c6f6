#pragma once

#include <string>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Variable.h>

#include "fuzz/support/Input.h"

namespace Velmora::Fuzz {

/// What a script defines, as far as it can be read.
struct ScriptNames {
    std::vector<std::string> m_vExpressions; ///< of all definitions, inputs included
    std::vector<std::string> m_vInputs;      ///< of those that "inputvar" declares

    ScriptNames() = default;
    ScriptNames(const std::string& in_strText, const char* in_szScriptName);

    void add(const ScriptNames& in_Other);
};

/// What a host does with an evaluator: feeds it with frames and evaluates what it has by name.
class ScriptHost {
public:
    static constexpr std::size_t FrameCount = 10;

    ScriptHost(Math::Xpr::Evaluator& inout_Evaluator, const ScriptNames& in_Names);

    /// Some frames of hostile numbers; resets, dumps and configures again in between.
    void run(Input& inout_Input);

private:
    void setInputs(Input& inout_Input);
    void evaluateAll();
    void interfere(Input& inout_Input);

    std::vector<Handle<Math::Xpr::Expression>> m_vExpressions;
    std::vector<Handle<Math::Xpr::Variable>> m_vInputs;
    std::vector<Math::DoubleVector> m_vFrame; ///< the values of the inputs
};

/// Gives the evaluator its stages; scripts are looked for in the directory "scripts".
bool configure(Math::Xpr::Evaluator& inout_Evaluator,
               const TSHandle<VirtualFileSystem>& in_pFileSystem);

/// Adds a variable of the host's own, with a value.
bool addInput(Math::Xpr::Evaluator& inout_Evaluator, const char* in_szName);

} // namespace Velmora::Fuzz
