#include <velmora/math/xpr/Evaluator.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Evaluator");

Evaluator::Evaluator() : ObjectWithLogger<CachedLLLogger>(CachedLLLogger(fileLogger())) {}

Evaluator::Evaluator(const Evaluator& in_Other)
    : Object(),
      ObjectWithLogger<CachedLLLogger>(in_Other),
      Cloneable(),
      m_pFileSystem(in_Other.m_pFileSystem) {
    VELMORA_TRACE_SCOPE(getLogger(), "Evaluator::Evaluator copy");
    cloneMember(in_Other.m_pDictionnary, m_pDictionnary, "!m_pDictionnary.isNull()");
    cloneMember(in_Other.m_pScriptLoader, m_pScriptLoader, "!m_pScriptLoader.isNull()");
    cloneMember(in_Other.m_pLinker, m_pLinker, "!m_pLinker.isNull()");
    m_bLinked = in_Other.m_bLinked;
    cloneMember(in_Other.m_pOptimizer, m_pOptimizer, "!m_pOptimizer.isNull()");
    m_bOptimized = in_Other.m_bOptimized;
    if (m_bOptimized && !m_pOptimizer.isNull() && !m_pDictionnary.isNull()) {
        // The copy of a sealed graph isn't sealed.
        m_pOptimizer->sealExpressions(*m_pDictionnary);
    }
}

template <class T>
void Evaluator::cloneMember(const Handle<T>& in_pSource, Handle<T>& out_pCopy,
                            const char* in_szIsMade) const {
    if (in_pSource.isNull()) {
        return;
    }
    const Handle<Cloneable> pClone(in_pSource->clone());
    if (pClone.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "pClone");
    }
    out_pCopy = Handle<T>(pClone);
    if (out_pCopy.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), in_szIsMade);
    }
}

Cloneable* Evaluator::clone() const {
    return new Evaluator(*this);
}

bool Evaluator::configure(const ROConfiguration& in_Configuration,
                          const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    m_pFileSystem = in_pFileSystem;
    m_pDictionnary = Handle<Dictionnary>(new Dictionnary("evaluator.raw_expressions"));
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"can't allocate the dictionnary for the raw \" "
                                           "\"expressions\"");
        return false;
    }
    return configureScriptLoader(in_Configuration) && configureLinker(in_Configuration) &&
           configureOptimizer(in_Configuration);
}

bool Evaluator::configureScriptLoader(const ROConfiguration& in_Configuration) {
    VELMORA_LOG_DEBUG(getLogger(), "configuring the script loader...");
    m_pScriptLoader = Handle<ScriptLoader>(new ScriptLoaderVFS(m_pFileSystem));
    if (m_pScriptLoader.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pScriptLoader.isNull()");
        return false;
    }
    if (!m_pScriptLoader->configure(in_Configuration)) {
        VELMORA_LOG_ERROR(getLogger(), "failed to configure the script loader");
        return false;
    }
    return true;
}

bool Evaluator::configureLinker(const ROConfiguration& in_Configuration) {
    VELMORA_LOG_DEBUG(getLogger(), "configuring the linker...");
    m_pLinker = Handle<Linker>(new Linker);
    if (m_pLinker.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pLinker.isNull()");
        return false;
    }
    if (!m_pLinker->configure(in_Configuration, m_pScriptLoader)) {
        VELMORA_LOG_ERROR(getLogger(), "failed to configure the linker");
        return false;
    }
    return true;
}

bool Evaluator::configureOptimizer(const ROConfiguration& in_Configuration) {
    VELMORA_LOG_DEBUG(getLogger(), "configuring the optimizer...");
    m_pOptimizer = Handle<Optimizer>(new Optimizer);
    if (m_pOptimizer.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pOptimizer.isNull()");
        return false;
    }
    if (!m_pOptimizer->configure(in_Configuration)) {
        VELMORA_LOG_ERROR(getLogger(), "failed to configure the optimizer");
        return false;
    }
    return true;
}

bool Evaluator::addScript(const char* in_szScriptName) {
    return checkAddScript() &&
           reportLoading(m_pScriptLoader->run(in_szScriptName, *m_pDictionnary, true),
                         in_szScriptName);
}

bool Evaluator::addScript(std::istream& inout_Stream, const char* in_szScriptName) {
    return checkAddScript() &&
           reportLoading(m_pScriptLoader->run(inout_Stream, in_szScriptName, *m_pDictionnary),
                         in_szScriptName);
}

bool Evaluator::checkNotLinked() const {
    if (m_bLinked) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "!m_bLinked && \"evaluator contains linked expressions.  Can't \" "
                              "\"add expression to evaluator when the evaluator \" "
                              "\"when the eveluator contains linked expressions.\"");
    }
    return !m_bLinked;
}

bool Evaluator::checkAddScript() const {
    if (!checkNotLinked()) {
        return false;
    }
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to addScript()\"");
        return false;
    }
    if (m_pScriptLoader.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pScriptLoader.isNull() && "
                                           "\"please call configure prior to addScript()\"");
        return false;
    }
    return true;
}

bool Evaluator::reportLoading(bool in_bLoaded, const char* in_szScriptName) const {
    if (!in_bLoaded) {
        VELMORA_LOG_ERROR(getLogger(), "can't load script: " << in_szScriptName);
    }
    return in_bLoaded;
}

bool Evaluator::addExpression(Expression* in_pNewExpression) {
    const Handle<Expression> pExpression(in_pNewExpression);
    if (!checkNotLinked()) {
        return false;
    }
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to addExpression()\"");
        return false;
    }
    if (pExpression.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "in_pNewExpression && \"can't except null expression\"");
        return false;
    }
    return m_pDictionnary->add(pExpression, false);
}

bool Evaluator::link(bool in_bOptimize) {
    VELMORA_LOG_DEBUG(getLogger(), "linking the expressions...");
    if (m_bLinked) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_bLinked && \"expressions are already linked --> \" "
                                           "\"skipping linking\"");
        return true;
    }
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to link()\"");
        return false;
    }
    if (m_pLinker.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pLinker.isNull() && "
                                           "\"please call configure prior to link()\"");
        return false;
    }
    const Handle<Dictionnary> pLinkedDictionnary(new Dictionnary("evaluator.linked_expressions"));
    if (pLinkedDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pLinkedDictionnary.isNull() && "
                                           "\"can't allocate the dictionnary for the linked \" "
                                           "\"expressions\"");
        return false;
    }
    if (!m_pLinker->run(*m_pDictionnary, *pLinkedDictionnary)) {
        return false;
    }
    m_bLinked = true;
    m_pDictionnary = pLinkedDictionnary;
    return !in_bOptimize || optimize();
}

bool Evaluator::optimize() {
    VELMORA_LOG_DEBUG(getLogger(), "optimizing the expressions...");
    if (m_bOptimized) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "!m_bOptimized && \"expressions are already optimized --> \" "
                              "\"skipping optimization\"");
        return true;
    }
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to optimize()\"");
        return false;
    }
    if (m_pOptimizer.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pOptimizer.isNull() && "
                                           "\"please call configure prior to optimize()\"");
        return false;
    }
    const Handle<Dictionnary> pOptimizedDictionnary(
        new Dictionnary("evaluator.optimized_expressions"));
    if (pOptimizedDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pOptimizedDictionnary.isNull() && "
                                           "\"can't allocate the dictionnary for the optimized \" "
                                           "\"expressions\"");
        return false;
    }
    if (!m_pOptimizer->run(*m_pDictionnary, *pOptimizedDictionnary)) {
        return false;
    }
    m_bOptimized = true;
    m_pDictionnary = pOptimizedDictionnary;
    return true;
}

template <class T>
Handle<T> Evaluator::lookUp(const char* in_szKind, const char* in_szName,
                            Handle<T> (Dictionnary::*in_find)(const char*) const,
                            const char* in_szIsConfigured, const char* in_szIsLinked) const {
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), in_szIsConfigured);
        return Handle<T>();
    }
    if (!m_bLinked) {
        VELMORA_ASSERT_FAIL_L(getLogger(), in_szIsLinked);
        return Handle<T>();
    }
    // The dictionary asserts that there is one.
    const char* const szName = in_szName == nullptr ? "" : in_szName;
    VELMORA_LOG_DEBUG(getLogger(),
                      "getting " << in_szKind
                                 << (m_bOptimized ? " (optimized): \"" : " (not optimized): \"")
                                 << szName << "\"");
    Handle<T> pFound(((*m_pDictionnary).*in_find)(in_szName));
    if (pFound.isNull()) {
        VELMORA_LOG_ERROR(getLogger(), "can't find " << in_szKind << ": \"" << szName << "\"");
    }
    return pFound;
}

Handle<Expression> Evaluator::getExpression(const char* in_szName) {
    return lookUp("expression", in_szName, &Dictionnary::findExpression,
                  "!m_pDictionnary.isNull() && "
                  "\"please call configure prior to getExpression()\"",
                  "m_bLinked && \"please call link() prio to call getExpression()\"");
}

Handle<Variable> Evaluator::getVariable(const char* in_szName) {
    return lookUp("variable", in_szName, &Dictionnary::findVariable,
                  "!m_pDictionnary.isNull() && \"please call configure prior to getVariable()\"",
                  "m_bLinked && \"please call link() prio to call getVariable()\"");
}

Handle<Function> Evaluator::getFunction(const char* in_szName) {
    return lookUp("function", in_szName, &Dictionnary::findFunction,
                  "!m_pDictionnary.isNull() && \"please call configure prior to getFunction()\"",
                  "m_bLinked && \"please call link() prio to call getFunction()\"");
}

bool Evaluator::reconfigureExpressions() const {
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to \" "
                                           "\"reconfigureExpressions()\"");
        return false;
    }
    GraphWalk::Nodes vRoots;
    for (auto iteEntry = m_pDictionnary->begin(); iteEntry != m_pDictionnary->end(); ++iteEntry) {
        if (auto* const pRoot = dynamic_cast<ExpressionBaseImpl*>(iteEntry->second.get())) {
            vRoots.push_back(pRoot);
        }
    }
    const bool bAlongPaths = GraphWalk::isShort(vRoots);
    GraphWalk walk;
    for (auto iteEntry = m_pDictionnary->begin(); iteEntry != m_pDictionnary->end(); ++iteEntry) {
        VELMORA_LOG_DEBUG(getLogger(), "reconfiguring expression: " << iteEntry->first);
        // What a copy had no memory for.
        if (iteEntry->second.isNull()) {
            VELMORA_LOG_ERROR(getLogger(), "can't reconfigure expression: "
                                               << iteEntry->first << ", which couldn't be copied");
            return false;
        }
        auto* const pRoot = dynamic_cast<ExpressionBaseImpl*>(iteEntry->second.get());
        const bool bConfigured = bAlongPaths || pRoot == nullptr
                                     ? iteEntry->second->configure(m_pFileSystem)
                                     : walk.configureRest(*pRoot, m_pFileSystem);
        if (!bConfigured) {
            return false;
        }
    }
    return true;
}

bool Evaluator::dump(const char* in_szFileName) const {
    if (m_pDictionnary.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!m_pDictionnary.isNull() && "
                                           "\"please call configure prior to dump()\"");
        return false;
    }
    return m_pDictionnary->dump(in_szFileName);
}

} // namespace Velmora::Math::Xpr
