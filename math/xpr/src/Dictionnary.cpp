#include <velmora/math/xpr/Dictionnary.h>

#include <fstream>
#include <locale>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ConstantBase.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "DomainValueKeeper.h"
#include "DomainVariableUpdate.h"
#include "GraphWalk.h"
#include "GraphvizFrame.h"
#include "GraphvizNodes.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Dictionnary");

namespace {

/// What an entry is called, and the word for what it is; both null for what has no place here.
struct Named {
    const char* m_szKind = nullptr;
    const char* m_szName = nullptr;
};

Named nameOf(const Handle<Expression>& in_pExpression) {
    // Most entries are variables, and a cast to an interface is dear.
    ExpressionBaseImpl* const pNode = in_pExpression.isNull() ? nullptr : in_pExpression->asNode();
    if (const VariableImpl* const p = pNode == nullptr ? nullptr : pNode->asVariable()) {
        return {"variable", p->getName()};
    }
    if (const Handle<Function> pFunction(in_pExpression); !pFunction.isNull()) {
        return {"function", pFunction->getName()};
    }
    if (const Handle<Variable> pVariable(in_pExpression); !pVariable.isNull()) {
        return {"variable", pVariable->getName()};
    }
    if (const Handle<ConstantBase> pConstant(in_pExpression); !pConstant.isNull()) {
        return {"constant", pConstant->getName()};
    }
    return {};
}

/// A definition of two operators.
constexpr std::size_t NodesPerDefinition = 8;

} // namespace

Dictionnary::Dictionnary(const char* in_szName) : m_strName(in_szName == nullptr ? "" : in_szName) {
    takeLogger();
}

Dictionnary::Dictionnary(const Dictionnary& in_Other)
    : ObjectWithLogger(in_Other),
      m_strName(in_Other.m_strName),
      m_mapExpressions(in_Other.m_mapExpressions) {}

Dictionnary::Dictionnary(const Dictionnary& in_Source, const char* in_szName,
                         bool in_bUpdateDomainVariables)
    : Dictionnary(in_szName) {
    DomainValueKeeper keeper;
    if (in_bUpdateDomainVariables) {
        keeper.keepInputsOf(in_Source);
    }
    ExpressionImplCopier copier(in_Source.size() * NodesPerDefinition);
    const GraphWalk::Nodes vSources(nodesOf(in_Source));
    RootsAhead<AllLines> ahead(vSources);
    std::size_t uiSource = 0;
    for (const auto& entry : in_Source) {
        const Handle<ExpressionBaseImpl> pSource(entry.second);
        Handle<Expression> pExpr;
        ahead.begin(uiSource++);
        if (!pSource.isNull()) {
            pExpr = Handle<Expression>(pSource->copy(copier));
        }
        if (pExpr.isNull()) {
            VELMORA_ASSERT_FAIL_L(getLogger(), "!pExpr.isNull()");
        }
        if (!m_mapExpressions.insert(entry.first, pExpr).second) {
            VELMORA_ASSERT_FAIL_L(getLogger(),
                                  "m_mapExpressions.insert( (*iteExpr).first, pExpr ).second");
        }
    }
    if (in_bUpdateDomainVariables) {
        DomainVariableUpdate(getLogger(), copier, keeper).run(*this);
    }
}

Dictionnary::~Dictionnary() {
    VELMORA_TRACE_SCOPE(getLogger(), "Dictionnary::~Dictionnary");
}

Dictionnary& Dictionnary::operator=(const Dictionnary& in_Other) {
    if (this != &in_Other) {
        ObjectWithLogger::operator=(in_Other);
        m_strName = in_Other.m_strName;
        m_mapExpressions = in_Other.m_mapExpressions;
        m_strKey = in_Other.m_strKey;
    }
    return *this;
}

void Dictionnary::takeLogger() {
    setLogger(CachedLLLogger(fileLogger().getName() + "." + m_strName));
    getLogger().setCachedLogLevel(getLogger().getChainedLogLevel());
}

bool Dictionnary::takeKey(const char* in_szName) const {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "0 != in_szName");
        return false;
    }
    m_strKey = in_szName;
    return true;
}

bool Dictionnary::add(const Handle<Expression>& in_pExpression, bool in_bIgnoreDuplicate) {
    const Named named = nameOf(in_pExpression);
    if (named.m_szKind == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "false && \"expression shall be a Function or a Variable\"");
        return false;
    }
    VELMORA_LOG_DEBUG(getLogger(), "add " << named.m_szKind << " \"" << named.m_szName << "\"");
    return addExpression(named.m_szName, in_pExpression, in_bIgnoreDuplicate);
}

bool Dictionnary::addExpression(const char* in_szName, const Handle<Expression>& in_pExpression,
                                bool in_bIgnoreDuplicate) {
    if (!takeKey(in_szName)) {
        return false;
    }
    const bool bInserted = m_mapExpressions.insert(m_strKey, in_pExpression).second;
    if (!bInserted && !in_bIgnoreDuplicate) {
        VELMORA_LOG_DEBUG(getLogger(), "Failed to add expression: "
                                           << in_szName << ". "
                                           << "An expression with the same name already exists "
                                           << "in this dictionnary. ");
        return false;
    }
    return true;
}

bool Dictionnary::find(const Handle<Expression>& in_pExpression) const {
    const char* szName = nullptr;
    if (const Handle<Function> pFunction(in_pExpression); !pFunction.isNull()) {
        szName = pFunction->getName();
        VELMORA_LOG_DEBUG(getLogger(), "searching function \"" << szName << "\"");
    } else if (const Handle<Variable> pVariable(in_pExpression); !pVariable.isNull()) {
        szName = pVariable->getName();
        VELMORA_LOG_DEBUG(getLogger(), "searching variable \"" << szName << "\"");
    } else {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "false && \"expression shall be a Function or a Variable\"");
        return false;
    }
    return !findExpression(szName).isNull();
}

Handle<Expression> Dictionnary::findExpression(const char* in_szName) const {
    if (!takeKey(in_szName)) {
        return Handle<Expression>();
    }
    const auto iteFound = m_mapExpressions.find(m_strKey);
    if (iteFound == m_mapExpressions.end()) {
        VELMORA_LOG_DEBUG(getLogger(), "can't find expression: " << in_szName);
        return Handle<Expression>();
    }
    return iteFound->second;
}

Handle<Function> Dictionnary::findFunction(const char* in_szName) const {
    return Handle<Function>(findExpression(in_szName));
}

Handle<Variable> Dictionnary::findVariable(const char* in_szName) const {
    return Handle<Variable>(findExpression(in_szName));
}

Dictionnary::const_iterator Dictionnary::begin() const {
    return m_mapExpressions.begin();
}

Dictionnary::const_iterator Dictionnary::end() const {
    return m_mapExpressions.end();
}

std::size_t Dictionnary::size() const {
    return m_mapExpressions.size();
}

void Dictionnary::clear() {
    m_mapExpressions.clear();
}

Cloneable* Dictionnary::clone() const {
    return new Dictionnary(*this, m_strName.c_str(), true);
}

std::ostream& Dictionnary::write(std::ostream& out_Stream) const {
    // The label of the destructor: logs are compared across versions.
    VELMORA_TRACE_SCOPE(getLogger(), "Dictionnary::~Dictionnary");
    GraphvizNodes nodes(GraphWalk::isShort(rootsOf(*this)));
    for (const auto& entry : m_mapExpressions) {
        const Handle<ExpressionBaseImpl> pNode(entry.second);
        if (!pNode.isNull()) {
            GraphvizNodes::write(out_Stream, *pNode);
        } else if (!entry.second.isNull()) {
            out_Stream << *entry.second;
        } else {
            out_Stream << "null";
        }
        out_Stream << std::endl;
    }
    nodes.writePending(out_Stream);
    return out_Stream;
}

bool Dictionnary::dump(const char* in_szFileName) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionBaseImpl::dump");
    if (in_szFileName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "0 != in_szFileName");
        return true;
    }
    std::ofstream file(in_szFileName, std::ios::out | std::ios::trunc);
    if (file.is_open()) {
        file.imbue(std::locale::classic());
        writeGraphvizHead(file);
        write(file);
        writeGraphvizLegend(file, GraphvizLegend::WithoutParameter);
    }
    return true;
}

} // namespace Velmora::Math::Xpr
