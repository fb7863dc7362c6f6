#pragma once

#include <istream>

#include <velmora/CachedLLLogger.h>
#include <velmora/Cloneable.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/Object.h>
#include <velmora/ObjectWithLogger.h>
#include <velmora/ROConfiguration.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/ScriptLoader.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// The front of the library: takes scripts, links them, and hands out their expressions by name.
///
/// The calls come in this order: `configure`; `addScript` and `addExpression`, any number of times;
/// `link`, once; `reconfigureExpressions`; then the look-ups, whose results the host keeps, sets
/// and evaluates frame by frame. A call out of order fails an assertion and changes nothing.
///
/// Holds one dictionary: of raw, then of linked, then of optimised expressions. Each stage replaces
/// the one before. Belongs to one thread at a time, and so does all that it hands out; a clone
/// shares no expression with its source and may go to another thread.
class VELMORA_EXPORT Evaluator : public Cloneable,
                                 public virtual ObjectWithLogger<CachedLLLogger>,
                                 public virtual Object {
public:
    VELMORA_MEM_ACCOUNT("Evaluator")

    Evaluator();

    /// Deep: the copy evaluates like the other, with a state of its own.
    Evaluator(const Evaluator& in_Other);

    /// Shallow, unlike the copy constructor: both evaluators share all of their members.
    Evaluator& operator=(const Evaluator& in_Other) = default;

    /// A deep copy that the caller owns.
    Cloneable* clone() const override;

    /// Builds the stages of the pipeline. The file system, or the machine's files for a null
    /// handle, is where scripts are read from. False, with an ERROR line, if a stage refuses the
    /// configuration; what was built so far stays.
    ///
    /// A second call starts again with an empty dictionary, but an evaluator that was linked counts
    /// as linked from then on.
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>& in_pFileSystem);

    /// Adds what the script of that name defines. False, with an ERROR line, if it can't be found
    /// or has a fault; the definitions ahead of the fault stay.
    bool addScript(const char* in_szScriptName);

    /// The same, from an open stream.
    bool addScript(std::istream& inout_Stream, const char* in_szScriptName);

    /// Adds an expression that was built by hand. Takes it over in every case, also when the result
    /// is false: for a name that exists, and for what isn't a function, a variable or a constant.
    bool addExpression(Expression* in_pNewExpression);

    /// Links all that was added and, if asked to, optimises and seals it. A failure to link is in
    /// the log; expressions can be added then and linking tried again, but a variable keeps what
    /// was resolved in it. What was linked can't be linked or optimised again: a second call fails
    /// an assertion and gives true.
    bool link(bool in_bOptimize);

    /// The evaluator's own object of that name; null, with an ERROR line, if there is none of that
    /// kind. All who ask for a name share one object and its state.
    Handle<Expression> getExpression(const char* in_szName);
    Handle<Variable> getVariable(const char* in_szName);
    Handle<Function> getFunction(const char* in_szName);

    /// Makes every function read its parameters. Nothing else does: a host that has linked calls
    /// this before the first frame. Stops with false at the first function that refuses.
    ///
    /// It takes in every entry, also script functions that wait for their callers, whose parameters
    /// have no value.
    bool reconfigureExpressions() const;

    /// Writes the expressions as a Graphviz file. True also for a file that can't be opened.
    bool dump(const char* in_szFileName) const;

private:
    template <class T>
    void cloneMember(const Handle<T>& in_pSource, Handle<T>& out_pCopy,
                     const char* in_szIsMade) const;
    template <class T>
    Handle<T> lookUp(const char* in_szKind, const char* in_szName,
                     Handle<T> (Dictionnary::*in_find)(const char*) const,
                     const char* in_szIsConfigured, const char* in_szIsLinked) const;
    bool configureScriptLoader(const ROConfiguration& in_Configuration);
    bool configureLinker(const ROConfiguration& in_Configuration);
    bool configureOptimizer(const ROConfiguration& in_Configuration);
    bool checkNotLinked() const;
    bool checkAddScript() const;
    bool optimize();
    bool reportLoading(bool in_bLoaded, const char* in_szScriptName) const;

    // In the reverse order of their release.
    TSHandle<VirtualFileSystem> m_pFileSystem;
    Handle<Dictionnary> m_pDictionnary;
    Handle<ScriptLoader> m_pScriptLoader;
    Handle<Linker> m_pLinker;
    bool m_bLinked = false;
    Handle<Optimizer> m_pOptimizer;
    bool m_bOptimized = false;
};

} // namespace Velmora::Math::Xpr
