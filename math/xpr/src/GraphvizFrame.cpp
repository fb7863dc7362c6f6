#include "GraphvizFrame.h"

#include <algorithm>
#include <ostream>

namespace Velmora::Math::Xpr {

namespace {

bool isAsciiLetter(char in_c) {
    return (in_c >= 'a' && in_c <= 'z') || (in_c >= 'A' && in_c <= 'Z');
}

bool isAsciiLetterOrDigit(char in_c) {
    return isAsciiLetter(in_c) || (in_c >= '0' && in_c <= '9');
}

} // namespace

void writeGraphvizHead(std::ostream& out_Stream) {
    out_Stream << "strict digraph I {\n"
                  "edge [style=solid,color=blue]\n";
}

void writeGraphvizLegend(std::ostream& out_Stream, GraphvizLegend in_eLegend) {
    out_Stream << "subgraph clusterLegend{\n"
                  "label=\"Legend\"\n"
                  "fontsize=8\n"
                  "color=red\n"
                  "Constant [color=red, fontsize=8, shape=parallelogram]\n"
                  "Variable [color=red, fontsize=8, shape=box]\n"
                  "Variable -> Constant [label=\"Child\",color=blue, fontsize=8]\n"
                  "Constant -> Variable [label=\"Parent\",color=red, style=dashed, fontsize=8]\n"
                  "{rank=same; {Variable Constant}}"
                  "subgraph clusterLegendFunct{\n"
                  "label=\"Function\"\n"
                  "Function [color=red, fontsize=8, shape=oval]\n";
    if (in_eLegend == GraphvizLegend::WithParameter) {
        out_Stream << "Parameter [color=red, fontsize=8, shape=note]\n";
    }
    out_Stream << "Argument [color=red, fontsize=8, shape=box]\n"
                  "{rank=min; Function}\n"
                  "{rank=max; Argument}\n"
                  "}\n"
                  "}\n"
                  "}\n";
}

void makeDotName(const char* in_szName, unsigned long in_ulId, std::string& out_strDotName) {
    out_strDotName.clear();
    if (!isAsciiLetter(in_szName[0])) {
        out_strDotName += '_';
    }
    out_strDotName += in_szName;
    out_strDotName += '_';
    out_strDotName += std::to_string(in_ulId);
    std::replace_if(
        out_strDotName.begin(), out_strDotName.end(),
        [](char in_c) { return !isAsciiLetterOrDigit(in_c); }, '_');
}

} // namespace Velmora::Math::Xpr
