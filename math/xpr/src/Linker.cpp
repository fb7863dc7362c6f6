#include <velmora/math/xpr/Linker.h>

#include <vector>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "Resolver.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Linker");

namespace {

/// What stands in the output for an entry of the input: the object itself of a variable, a copy of
/// anything else, so that linking never writes on a raw function. Null, with an ERROR line, for an
/// expression that can't be linked.
Handle<ExpressionBaseImpl> takeEntry(const Handle<Expression>& in_pEntry) {
    Handle<ExpressionBaseImpl> pExpression(in_pEntry);
    if (pExpression.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Must use same implementation base for all expressions.");
        return pExpression;
    }
    return pExpression->asVariable() == nullptr ? pExpression->copy() : pExpression;
}

} // namespace

Linker::Linker(const Linker& in_Other) : Object(), Cloneable() {
    VELMORA_TRACE_SCOPE(fileLogger(), "Linker::Linker copy");
    if (in_Other.m_pScriptLoader.isNull()) {
        return;
    }
    const Handle<Cloneable> pClone(in_Other.m_pScriptLoader->clone());
    if (pClone.isNull()) {
        VELMORA_ASSERT_FAIL_L(fileLogger(), "pClone");
    }
    m_pScriptLoader = Handle<ScriptLoader>(pClone);
    if (m_pScriptLoader.isNull()) {
        VELMORA_ASSERT_FAIL_L(fileLogger(), "!m_pScriptLoader.isNull()");
    }
}

Cloneable* Linker::clone() const {
    return new Linker(*this);
}

bool Linker::configure(const ROConfiguration& in_Configuration,
                       const Handle<ScriptLoader>& in_pScriptLoader) {
    VELMORA_LOG_DEBUG(fileLogger(), "configuring the script loader...");
    m_pScriptLoader = in_pScriptLoader;
    if (!m_pScriptLoader.isNull()) {
        return true;
    }
    m_pScriptLoader = Handle<ScriptLoader>(new ScriptLoaderStdIO);
    if (m_pScriptLoader.isNull()) {
        VELMORA_ASSERT_FAIL_L(fileLogger(), "!m_pScriptLoader.isNull()");
        return false;
    }
    if (!m_pScriptLoader->configure(in_Configuration)) {
        VELMORA_LOG_ERROR(fileLogger(), "failed to configure the script loader");
        return false;
    }
    return true;
}

bool Linker::run(const Dictionnary& in_RawExpressions, Dictionnary& out_LinkedExpressions) {
    if (m_pScriptLoader.isNull()) {
        VELMORA_ASSERT_FAIL_L(fileLogger(), "!m_pScriptLoader.isNull() && "
                                            "\"please call configure() prior to call run\"");
        return false;
    }
    if (out_LinkedExpressions.size() != 0) {
        VELMORA_ASSERT_FAIL_L(fileLogger(), "out_LinkedExpressions.size() == 0 && "
                                            "\"linked expression dictionnary is not empty\"");
        return false;
    }
    Resolver resolver(*this, in_RawExpressions);
    const std::vector<ExpressionBaseImpl*> vRaw(nodesOf(in_RawExpressions));
    RootsAhead<AllLines> ahead(vRaw);
    std::size_t uiEntry = 0;
    bool bLinked = true;
    for (auto iteEntry = in_RawExpressions.begin(); iteEntry != in_RawExpressions.end();
         ++iteEntry) {
        ahead.begin(uiEntry++);
        const Handle<ExpressionBaseImpl> pExpression(takeEntry(iteEntry->second));
        if (pExpression.isNull() || !resolver.resolve(pExpression, true)) {
            bLinked = false;
        } else if (!out_LinkedExpressions.add(Handle<Expression>(pExpression), false)) {
            VELMORA_ASSERT_FAIL_L(fileLogger(), "out_LinkedExpressions.add( pExpr )");
            return false;
        }
    }
    return bLinked;
}

} // namespace Velmora::Math::Xpr
