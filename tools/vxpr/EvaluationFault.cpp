#include "EvaluationFault.h"

#include "Builtins.h"
#include "NodeText.h"
#include "TextList.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Vxpr {

namespace {

/// In the name of a logger of a single function, what stands ahead of the function's name.
constexpr const char* FUNCTION_LOGGERS = ".xpr.functions.";

/// What the engine says of a node, and what it means to a script's author. `%1` and `%2` stand for
/// the number of elements on the left and on the right.
struct Explanation {
    const char* m_szNode; ///< the name of the node that the message is about
    const char* m_szMessage;
    const char* m_szText;
};

/// What a parameter can be, of those built-ins that don't say it themselves.
struct Need {
    std::string_view m_szParameter; ///< without what stands ahead of the last point
    const char* m_szTaken;
};

constexpr Need NEEDS[] = {
    {"SampleRate", "a number above 0"},
    {"WindowSize", "a whole number above 0"},
    {"TapeSize", "a whole number above 0, and up to 4194304 where there are padding values"},
    {"IncludeUsedTapeSizeInOutput", "a whole number, \"true\" or \"false\""},
    {"PaddingValues", "a number, or a text of numbers such as \"0 1\""},
    {"DebounceValue", "a whole number from 0"},
    {"DebounceOnValue", "a whole number from 0"},
    {"DebounceOffValue", "a whole number from 0"},
    {"sampleRate", "a whole number above 0"},
    {"freq", "a number above 0 and up to half of that"},
    {"frequency", "a number above 0 and up to half of that"},
};

constexpr Explanation EXPLANATIONS[] = {
    {"add", "sizes are differents", "`+` needs two values of one size, and these have %1 and %2"},
    {"add", "does not contain data", "`+` has nothing to add: the values have %1 and %2"},
    {"sub", "sizes are differents", "`-` needs two values of one size, and these have %1 and %2"},
    {"sub", "does not contain data", "`-` has nothing to subtract: the values have %1 and %2"},
    {"mult", "does not contain data", "`*` has nothing to multiply: the values have %1 and %2"},
    {"mult", "must have a size of one",
     "`*` needs a single element on one side, and these have %1 and %2; there is no product "
     "element "
     "by element"},
    {"div", "does not contain data", "`/` has nothing to divide: the values have %1 and %2"},
    {"div", "must have a size of one",
     "`/` needs a single element on its right side, which has %2"},
    {"div", "Tried to divide by '0'",
     "division by zero; add a small number to the divisor, or choose another value with if"},
    {"Slice", "uiIndex < in_Left.size()",
     "an index between [ and ] lies outside of the value, which has %1"},
    {"isGreater", "in_vInput1.size() == 1",
     "isGreater compares single elements, and its first argument has %1; reduce it by max or sum, "
     "or take one element as in x[0]"},
    {"isGreater", "in_vInput2.size() == 1",
     "isGreater compares single elements, and its second argument has %2; reduce it by max or sum, "
     "or take one element as in x[0]"},
};

void replaceAll(std::string& inout_strText, const std::string& in_strFrom,
                const std::string& in_strTo) {
    for (std::size_t uiPlace = inout_strText.find(in_strFrom); uiPlace != std::string::npos;
         uiPlace = inout_strText.find(in_strFrom, uiPlace + in_strTo.size())) {
        inout_strText.replace(uiPlace, in_strFrom.size(), in_strTo);
    }
}

std::string fillIn(std::string in_strText, const FeatureGraph::Failure& in_Failure) {
    const auto countElements = [&](std::size_t in_uiSource) {
        return in_uiSource < in_Failure.m_vSizes.size()
                   ? count(in_Failure.m_vSizes[in_uiSource], "element")
                   : std::string("some elements");
    };
    replaceAll(in_strText, "%1", countElements(0));
    replaceAll(in_strText, "%2", countElements(1));
    return in_strText;
}

/// A message that only says that another one came before, or what the graph shows without it.
bool isConsequence(const std::string& in_strMessage) {
    return in_strMessage.find("no value to compute from") != std::string::npos ||
           in_strMessage.find("without setting its value first") != std::string::npos ||
           in_strMessage.find("Failed to evaluate ") == 0 ||
           in_strMessage.find("failed to configure function: ") == 0;
}

/// Whether the line comes from the code of a built-in function other than the one of that name.
bool isOfAnotherFunction(const EngineMessage& in_Message, const std::string& in_strName) {
    const std::size_t uiPoint = in_Message.m_strLogger.rfind('.');
    const std::size_t uiPlace = in_Message.m_strLogger.find(FUNCTION_LOGGERS);
    return uiPlace != std::string::npos &&
           in_Message.m_strLogger.compare(uiPoint + 1, std::string::npos, in_strName) != 0;
}

/// The engine's words for a parameter of another kind than the function reads are misleading: the
/// parameter is there. Everything else stays as it is.
std::string translateReason(const std::string& in_strMessage) {
    const std::string strHead = "Could not find parameter ";
    const std::size_t uiEnd = in_strMessage.find(" in configuration");
    if (in_strMessage.compare(0, strHead.size(), strHead) != 0 || uiEnd == std::string::npos) {
        return in_strMessage;
    }
    return "`" + in_strMessage.substr(strHead.size(), uiEnd - strHead.size()) +
           "` takes another kind of value: 8000 is a whole number, 8000.0 is none, and \"8000\" is "
           "a text";
}

const Explanation* findExplanation(const std::string& in_strNode,
                                   const std::vector<EngineMessage>& in_vMessages) {
    for (const EngineMessage& message : in_vMessages) {
        for (const Explanation& explanation : EXPLANATIONS) {
            if (in_strNode == explanation.m_szNode &&
                message.m_strText.find(explanation.m_szMessage) != std::string::npos) {
                return &explanation;
            }
        }
    }
    return nullptr;
}

/// The engine's own words about the node; empty if there are none.
std::string findReason(const std::string& in_strNode,
                       const std::vector<EngineMessage>& in_vMessages) {
    for (const EngineMessage& message : in_vMessages) {
        // An assertion's text is meant for programmers.
        if (message.m_Kind == EngineMessage::Kind::Error && !isConsequence(message.m_strText) &&
            !isOfAnotherFunction(message, in_strNode)) {
            return message.m_strText;
        }
    }
    return {};
}

} // namespace

std::string explainEvaluation(const FeatureGraph::Failure& in_Failure,
                              const std::vector<EngineMessage>& in_vOwn,
                              const std::vector<EngineMessage>& in_vOfFrame) {
    if (FeatureGraph::isUnset(in_Failure.m_pNode)) {
        return explainUncalled(FeatureGraph::findUncalled(*in_Failure.m_pNode));
    }
    const std::string strNode = in_Failure.m_pNode != nullptr ? in_Failure.m_pNode->getName() : "";
    for (const std::vector<EngineMessage>* pMessages : {&in_vOwn, &in_vOfFrame}) {
        if (const Explanation* pExplanation = findExplanation(strNode, *pMessages)) {
            return fillIn(pExplanation->m_szText, in_Failure);
        }
    }
    std::string strOther = findReason(strNode, in_vOwn);
    if (strOther.empty()) {
        strOther = findReason(strNode, in_vOfFrame);
    }
    const auto builtin = Builtins::find(strNode);
    if (!builtin || in_Failure.m_vSizes.empty()) {
        return strOther.empty() ? "what it is computed from has no value" : strOther;
    }
    std::vector<std::string> vSizes;
    for (const std::size_t uiSize : in_Failure.m_vSizes) {
        vSizes.push_back(count(uiSize, "element"));
    }
    return "`" + strNode + "` gives nothing for " + join(vSizes, " and ") +
           (strOther.empty() ? "" : " (" + strOther + ")") + "; it is called as " +
           builtin->getCall();
}

namespace {

/// What the parameters are that a built-in refuses without a word, and what it takes.
std::string describeRefused(const Builtin& in_Builtin, const FeatureGraph::Node& in_Function) {
    const auto* pFunction = dynamic_cast<const Velmora::Math::Xpr::FunctionBaseImpl*>(&in_Function);
    const std::vector<std::string> vValues =
        pFunction != nullptr ? describeParameters(*pFunction) : std::vector<std::string>();
    const std::vector<std::string> vNames = in_Builtin.getShortParameters();
    std::vector<std::string> vTexts;
    for (std::size_t ui = 0; ui < std::min(vNames.size(), vValues.size()); ++ui) {
        const auto* const pNeed =
            std::find_if(std::begin(NEEDS), std::end(NEEDS),
                         [&](const Need& in_Need) { return in_Need.m_szParameter == vNames[ui]; });
        vTexts.push_back(
            vNames[ui] + " is " + vValues[ui] +
            (pNeed == std::end(NEEDS) ? "" : std::string(" and takes ") + pNeed->m_szTaken));
    }
    return join(vTexts, "; ");
}

} // namespace

std::string explainConfiguration(const FeatureGraph::Node* in_pFunction,
                                 const std::vector<EngineMessage>& in_vMessages) {
    std::vector<std::string> vReasons;
    for (const EngineMessage& message : in_vMessages) {
        if (!isConsequence(message.m_strText)) {
            vReasons.push_back(message.m_strText);
        }
    }
    const std::string strName = in_pFunction != nullptr ? in_pFunction->getName() : "";
    const auto builtin = Builtins::find(strName);
    std::string strReason = vReasons.empty() ? "" : translateReason(vReasons.front());
    if (strReason.empty() && builtin) {
        strReason = describeRefused(*builtin, *in_pFunction);
    }
    return (strName.empty() ? "a function" : "`" + strName + "`") + " can't use these parameters" +
           (strReason.empty() ? "" : " (" + strReason + ")") +
           (builtin ? "; call it as " + builtin->getCall() : "");
}

std::string explainUncalled(const FeatureGraph::Uncalled& in_Uncalled) {
    const std::string strText = "an argument has no value: a function is used here without its "
                                "arguments";
    if (in_Uncalled.m_pFunction == nullptr) {
        return strText;
    }
    const std::string strName = in_Uncalled.m_pFunction->getName();
    const auto builtin = Builtins::find(strName);
    return strText + "; call it as " +
           (builtin ? builtin->getCall()
                    : strName.substr(strName.rfind('.') + 1) +
                          describeArguments(*in_Uncalled.m_pFunction));
}

} // namespace Vxpr
