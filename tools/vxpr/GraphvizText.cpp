#include "GraphvizText.h"

#include <cstddef>
#include <vector>

namespace Vxpr {

namespace {

using Kind = ScriptGraph::Kind;

constexpr const char* HEAD = R"( {
  graph [fontname="Helvetica", fontsize=13, labelloc=t, nodesep=0.35, ranksep=0.35];
  node [fontname="Helvetica", fontsize=11, shape=box, style="rounded,filled", fillcolor=white, height=0.35, margin="0.12,0.06"];
  edge [fontname="Helvetica", fontsize=9, arrowsize=0.7, color="#555555", fontcolor="#555555", labeldistance=1.7, labelangle=22];
)";

/// How many bytes a well-formed character of UTF-8 takes that starts there; 0 if none does.
std::size_t measureCharacter(const std::string& in_strText, std::size_t in_uiBegin) {
    const auto uiFirst = static_cast<unsigned char>(in_strText[in_uiBegin]);
    const std::size_t uiSize = uiFirst < 0x80   ? 1
                               : uiFirst < 0xc2 ? 0
                               : uiFirst < 0xe0 ? 2
                               : uiFirst < 0xf0 ? 3
                               : uiFirst < 0xf5 ? 4
                                                : 0;
    if (in_uiBegin + uiSize > in_strText.size()) {
        return 0;
    }
    for (std::size_t ui = 1; ui < uiSize; ++ui) {
        if ((static_cast<unsigned char>(in_strText[in_uiBegin + ui]) & 0xc0) != 0x80) {
            return 0;
        }
    }
    return uiSize;
}

/// A text within markup. What no reader of the file could take becomes a question mark.
std::string escape(const std::string& in_strText) {
    std::string strEscaped;
    for (std::size_t ui = 0; ui < in_strText.size();) {
        const std::size_t uiSize = measureCharacter(in_strText, ui);
        const char c = in_strText[ui];
        if (uiSize == 0 || static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            strEscaped += '?';
        } else if (c == '&') {
            strEscaped += "&amp;";
        } else if (c == '<') {
            strEscaped += "&lt;";
        } else if (c == '>') {
            strEscaped += "&gt;";
        } else if (c == '"') {
            strEscaped += "&quot;";
        } else {
            strEscaped.append(in_strText, ui, uiSize);
        }
        ui += uiSize == 0 ? 1 : uiSize;
    }
    return strEscaped;
}

/// A text in quotes.
std::string quote(const std::string& in_strText) {
    std::string strQuoted = "\"";
    for (const char c : escape(in_strText)) {
        strQuoted += c == '\\' ? "\\\\" : std::string(1, c);
    }
    return strQuoted + "\"";
}

std::string grey(const std::string& in_strEscaped) {
    return "<FONT POINT-SIZE=\"9\" COLOR=\"#555555\">" + in_strEscaped + "</FONT>";
}

/// The text of an operation; a single sign would be overlooked at the usual size.
std::string emphasize(const std::string& in_strText) {
    const std::string strEscaped = escape(in_strText);
    return in_strText.size() == 1 ? "<FONT POINT-SIZE=\"15\">" + strEscaped + "</FONT>"
                                  : strEscaped;
}

std::string describe(const ScriptGraph::Name& in_Name) {
    const bool bOther = !in_Name.m_strScript.empty();
    std::string strPlace = bOther ? escape(in_Name.m_strScript) + ".xpr" : "";
    if (in_Name.m_uiLine != 0) {
        strPlace += (bOther ? ":" : "line ") + std::to_string(in_Name.m_uiLine);
    }
    return "<B>" +
           escape(bOther ? in_Name.m_strScript + "." + in_Name.m_strName : in_Name.m_strName) +
           "</B>" + (strPlace.empty() ? "" : " " + grey(strPlace)) + "<BR/>";
}

std::string describe(const ScriptGraph::Node& in_Node) {
    std::string strLabel;
    for (const ScriptGraph::Name& name : in_Node.m_vNames) {
        strLabel += describe(name);
    }
    for (const std::string& strCall : in_Node.m_vCalls) {
        strLabel += grey("value of " + escape(strCall)) + "<BR/>";
    }
    switch (in_Node.m_Kind) {
    case Kind::Input:
        return strLabel + grey("input");
    case Kind::Argument:
        return strLabel + escape(in_Node.m_strText) + "<BR/>" + grey("argument");
    case Kind::Name:
    case Kind::FunctionName:
        return strLabel + escape(in_Node.m_strText) + "<BR/>" + grey("by name");
    case Kind::Literal:
        return strLabel + escape(in_Node.m_strText);
    case Kind::Operation:
        break;
    }
    return strLabel + emphasize(in_Node.m_strText) +
           (in_Node.m_bMemory ? "<BR/>" + grey("memory") : std::string());
}

const char* getLook(const ScriptGraph::Node& in_Node) {
    switch (in_Node.m_Kind) {
    case Kind::Literal:
        return "style=filled, fillcolor=\"#eeeeee\", ";
    case Kind::Input:
        return "shape=ellipse, style=filled, fillcolor=\"#cfe3f7\", ";
    case Kind::Argument:
        return "shape=ellipse, ";
    case Kind::Name:
        return "shape=ellipse, style=dashed, ";
    case Kind::FunctionName:
        return "style=\"rounded,dashed\", ";
    case Kind::Operation:
        break;
    }
    return in_Node.m_bMemory ? "peripheries=2, fillcolor=\"#fdf0c4\", " : "";
}

} // namespace

std::string toGraphviz(const ScriptGraph& in_Graph, const std::string& in_strTitle) {
    std::string strText = "digraph script" + std::string(HEAD);
    strText += "  label=<" + escape(in_strTitle) + ">;\n";
    const std::vector<ScriptGraph::Node>& vNodes = in_Graph.getNodes();
    std::vector<std::string> vIds(vNodes.size());
    std::size_t uiReached = 0;
    for (std::size_t uiNode = 0; uiNode < vNodes.size(); ++uiNode) {
        const ScriptGraph::Node& node = vNodes[uiNode];
        if (!node.m_bReached) {
            continue;
        }
        vIds[uiNode] = "n" + std::to_string(++uiReached);
        strText += "  " + vIds[uiNode] + " [" + getLook(node) + "label=<" + describe(node) + ">" +
                   (node.m_strPlace.empty() ? "" : ", tooltip=" + quote(node.m_strPlace)) + "];\n";
        for (const ScriptGraph::Source& source : node.m_vSources) {
            strText +=
                "  " + vIds[source.m_uiNode] + " -> " + vIds[uiNode] +
                (source.m_strRole.empty() ? "" : " [headlabel=\"" + source.m_strRole + "\"]") +
                ";\n";
        }
    }
    return strText + "}\n";
}

} // namespace Vxpr
