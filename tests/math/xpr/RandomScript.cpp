#include "RandomScript.h"

#include <iterator>
#include <random>
#include <utility>

RandomScript::RandomScript(std::uint64_t in_uiSeed, Failures in_eFailures, Branches in_eBranches)
    : RandomScript(std::mt19937_64(in_uiSeed), in_eFailures, in_eBranches) {}

RandomScript::RandomScript(Choices in_Choices, Failures in_eFailures, Branches in_eBranches)
    : m_Choices(std::move(in_Choices)), m_eFailures(in_eFailures), m_eBranches(in_eBranches) {
    m_vLines = {"inputvar left", "inputvar right", "inputvar scalar"};
    m_vNames = {{"left", FrameSize}, {"right", FrameSize}, {"scalar", 1}};
    const std::size_t uiStatements = 2 + pick(7);
    for (std::size_t ui = 0; ui != uiStatements; ++ui) {
        if (chance(25)) {
            addFunction();
        } else {
            addFeature();
        }
    }
    if (m_vFeatures.empty()) {
        addFeature();
    }
}

std::string RandomScript::join(const std::vector<std::string>& in_vLines) {
    std::string strText;
    for (const std::string& strLine : in_vLines) {
        strText += strLine + '\n';
    }
    return strText;
}

std::vector<std::string> RandomScript::listFeatures(const std::vector<std::string>& in_vLines) {
    std::vector<std::string> vFeatures;
    for (const std::string& strLine : in_vLines) {
        const std::string strName = strLine.substr(0, strLine.find(' '));
        if (strName.front() == 'v') {
            vFeatures.push_back(strName);
        }
    }
    return vFeatures;
}

std::size_t RandomScript::pick(std::size_t in_uiCount) {
    return static_cast<std::size_t>(m_Choices() % in_uiCount);
}

std::string RandomScript::number() {
    return std::to_string(pick(9)) + '.' + std::to_string(pick(100));
}

std::string RandomScript::nonZero() {
    return std::to_string(1 + pick(9)) + '.' + std::to_string(pick(100));
}

std::string RandomScript::parameter() {
    if (!m_strParameter.empty() && chance(60)) {
        return m_strParameter;
    }
    return std::to_string(1 + pick(5));
}

std::size_t RandomScript::anySize() {
    constexpr std::size_t Sizes[] = {1, 1, 1, 2, 3, FrameSize};
    return Sizes[pick(std::size(Sizes))];
}

std::string RandomScript::leaf(std::size_t in_uiSize) {
    std::vector<const Name*> vFitting;
    for (const Name& name : m_vNames) {
        if (name.m_uiSize == in_uiSize) {
            vFitting.push_back(&name);
        }
    }
    if (!vFitting.empty() && chance(85)) {
        return vFitting[pick(vFitting.size())]->m_strName;
    }
    std::string strText = number();
    if (in_uiSize == 1) {
        return strText;
    }
    for (std::size_t ui = 1; ui != in_uiSize; ++ui) {
        strText += ", " + number();
    }
    return '{' + strText + '}';
}

std::string RandomScript::expression(std::size_t in_uiSize, std::size_t in_uiDepth) {
    if (in_uiDepth == 0 || chance(15)) {
        return leaf(in_uiSize);
    }
    const std::size_t uiDepth = in_uiDepth - 1;
    if (m_bMemory && chance(15)) {
        return memoryCall(in_uiSize, uiDepth);
    }
    if (chance(30)) {
        return in_uiSize == 1 ? scalarCall(uiDepth) : vectorCall(in_uiSize, uiDepth);
    }
    if (chance(20)) {
        return call(in_uiSize, uiDepth);
    }
    return operation(in_uiSize, uiDepth);
}

std::string RandomScript::operation(std::size_t in_uiSize, std::size_t in_uiDepth) {
    const auto some = [&](std::size_t in_uiWanted) { return expression(in_uiWanted, in_uiDepth); };
    switch (pick(8)) {
    case 0:
        return '(' + some(in_uiSize) + " + " + some(in_uiSize) + ')';
    case 1:
        return '(' + some(in_uiSize) + " - " + some(in_uiSize) + ')';
    case 2:
        return '(' + some(1) + " * " + some(in_uiSize) + ')';
    case 3:
        return '(' + some(in_uiSize) + " / " +
               (m_eFailures == Failures::Some && chance(60) ? "scalar" : nonZero()) + ')';
    case 4:
        if (m_eBranches == Branches::None) {
            return some(in_uiSize);
        }
        return "if(" + some(1) + ", " + branch(in_uiSize, in_uiDepth) + ", " +
               branch(in_uiSize, in_uiDepth) + ')';
    case 5:
        if (in_uiSize > 1) {
            const std::size_t uiFirst = 1 + pick(in_uiSize - 1);
            return '{' + some(uiFirst) + ", " + some(in_uiSize - uiFirst) + '}';
        }
        return '{' + some(1) + '}';
    case 6:
        if (in_uiSize <= FrameSize) {
            const std::size_t uiFirst = pick(FrameSize - in_uiSize + 1);
            const std::size_t uiLast = uiFirst + in_uiSize - 1;
            std::string strIndexes = std::to_string(uiFirst) + ".." + std::to_string(uiLast);
            if (chance(50)) {
                strIndexes = std::to_string(uiLast) + ".." + std::to_string(uiFirst);
            }
            return '(' + some(FrameSize) + ")[" + strIndexes + ']';
        }
        return some(in_uiSize);
    default:
        return "+ " + some(in_uiSize);
    }
}

std::string RandomScript::scalarCall(std::size_t in_uiDepth) {
    const auto some = [&](std::size_t in_uiWanted) { return expression(in_uiWanted, in_uiDepth); };
    const auto any = [&] { return some(anySize()); };
    switch (pick(11)) {
    case 0:
        return "sum(" + any() + ')';
    case 1:
        return "min(" + any() + ')';
    case 2:
        return "max(" + any() + ')';
    case 3:
        return "indexOfMax(" + any() + ')';
    case 4:
        return "averagePower(" + any() + ')';
    case 5:
        return "sizeOf(" + any() + ')';
    case 6:
        return "energy<8000>(" + any() + ')';
    case 7:
        return "isGreater(" + some(1) + ", " + some(1) + ')';
    case 8:
        return "sinusCorrelate<8000, 1000>(" + some(FrameSize) + ')';
    case 9:
        return "centralFrequency(" + std::to_string(1 + pick(FrameSize - 2)) + ", " +
               some(FrameSize) + ')';
    default:
        return "log(abs(" + some(1) + "))";
    }
}

std::string RandomScript::vectorCall(std::size_t in_uiSize, std::size_t in_uiDepth) {
    const std::string strArgument = expression(in_uiSize, in_uiDepth);
    switch (pick(3)) {
    case 0:
        return "abs(" + strArgument + ')';
    case 1:
        return "log(abs(" + strArgument + "))";
    default:
        return "amDemodulate<8000, 1000>(" + strArgument + ')';
    }
}

std::string RandomScript::branch(std::size_t in_uiSize, std::size_t in_uiDepth) {
    const bool bMemory = m_bMemory;
    m_bMemory = false;
    std::string strText = expression(in_uiSize, in_uiDepth);
    m_bMemory = bMemory;
    return strText;
}

std::string RandomScript::memoryCall(std::size_t in_uiSize, std::size_t in_uiDepth) {
    const auto changing = [&](std::size_t in_uiWanted) {
        return "(scalar * " + expression(in_uiWanted, in_uiDepth) + ')';
    };
    m_bMemoryUsed = true;
    switch (pick(in_uiSize == 1 ? 6 : 3)) {
    case 0:
        return "delta(" + changing(in_uiSize) + ')';
    case 1:
        return "debounce<" + parameter() + ">(" + changing(in_uiSize) + ')';
    case 2:
        return "tappedDelay<" + std::to_string(in_uiSize) + ", \"false\", \"1 2\">(" +
               changing(anySize()) + ')';
    case 3:
        return "vad<-35.0, " + std::to_string(pick(5)) + ">(" + changing(anySize()) + ')';
    case 4:
        return "debounceOnOff<" + parameter() + ", " + parameter() + ">(" + changing(1) + ')';
    default:
        return "sum(slidingWindow<" + parameter() + ">(" + changing(anySize()) + "))";
    }
}

std::string RandomScript::call(std::size_t in_uiSize, std::size_t in_uiDepth) {
    std::vector<const Function*> vFitting;
    for (const Function& function : m_vFunctions) {
        if (function.m_uiSize == in_uiSize && (m_bMemory || !function.m_bHasMemory)) {
            vFitting.push_back(&function);
        }
    }
    if (vFitting.empty()) {
        return operation(in_uiSize, in_uiDepth);
    }
    const Function function = *vFitting[pick(vFitting.size())];
    m_bMemoryUsed = m_bMemoryUsed || function.m_bHasMemory;
    std::string strText = function.m_strName;
    if (function.m_bHasParameter) {
        strText += '<' + parameter() + '>';
    }
    char cSeparator = '(';
    for (const std::size_t uiArgument : function.m_vArgumentSizes) {
        strText += cSeparator + expression(uiArgument, in_uiDepth);
        cSeparator = ',';
    }
    return strText + (cSeparator == '(' ? "()" : ")");
}

void RandomScript::addFeature() {
    const std::size_t uiSize = anySize();
    const std::string strName = 'v' + std::to_string(m_vFeatures.size());
    m_vLines.push_back(strName + " = " + expression(uiSize, 1 + pick(4)));
    m_vFeatures.push_back(strName);
    m_vNames.push_back({strName, uiSize});
}

void RandomScript::addFunction() {
    Function function;
    function.m_strName = 'f' + std::to_string(m_vFunctions.size());
    function.m_bHasParameter = chance(50);
    function.m_uiSize = anySize();
    const std::vector<Name> vOuterNames(m_vNames);
    const std::size_t uiArguments = pick(4);
    if (uiArguments == 1) {
        // Every name in the body would be taken for the one argument.
        m_vNames.clear();
        m_bMemory = false;
    }
    std::string strArguments;
    for (std::size_t ui = 0; ui != uiArguments; ++ui) {
        const std::string strArgument = 'a' + std::to_string(ui);
        function.m_vArgumentSizes.push_back(anySize());
        m_vNames.push_back({strArgument, function.m_vArgumentSizes.back()});
        strArguments += (ui == 0 ? "" : ", ") + strArgument;
    }
    std::string strLine = function.m_strName;
    if (function.m_bHasParameter) {
        strLine += "<n>";
        m_strParameter = "n";
    }
    m_bMemoryUsed = false;
    m_vLines.push_back(strLine + '(' + strArguments +
                       ") = " + expression(function.m_uiSize, 1 + pick(3)));
    function.m_bHasMemory = m_bMemoryUsed;
    m_strParameter.clear();
    m_bMemory = true;
    m_vNames = vOuterNames;
    m_vFunctions.push_back(function);
}
