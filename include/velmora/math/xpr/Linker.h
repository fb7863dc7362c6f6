#pragma once

#include <velmora/Cloneable.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/Object.h>
#include <velmora/ROConfiguration.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/ScriptLoader.h>

namespace Velmora::Math::Xpr {

/// Replaces the names that scripts use by what they stand for: expressions of the same script, of
/// other scripts, and built-ins.
///
/// In what it makes, variables are shared and everything else is duplicated at each use: setting a
/// variable feeds every expression that reads it, and two calls never share state.
///
/// Keeps nothing between runs but its script loader. Belongs to one thread at a time.
class VELMORA_EXPORT Linker : public virtual Cloneable, public virtual Object {
public:
    VELMORA_MEM_ACCOUNT("Linker")

    Linker() = default;

    /// With a loader of its own, a clone of the other's.
    Linker(const Linker& in_Other);

    /// Shares the loader of the other.
    Linker& operator=(const Linker& in_Other) = default;

    /// A copy that the caller owns.
    Cloneable* clone() const override;

    /// Takes the loader for scripts that are named but not loaded yet; it is configured already.
    /// With a null handle the linker makes a `ScriptLoaderStdIO` and configures it: false, with an
    /// ERROR line, if that fails.
    bool configure(const ROConfiguration& in_Configuration,
                   const Handle<ScriptLoader>& in_pScriptLoader);

    /// Links every expression of the input into the empty output, in the same order.
    ///
    /// Variables aren't copied: the input's own objects are linked, and stand in the output. What
    /// other scripts and the built-ins contribute lives below them only and can't be found by name
    /// in the output. A name that doesn't link fails its entry; the others are linked all the same,
    /// so one run reports every such name at ERROR level, with its position. False then; the output
    /// holds what did link, and variables keep what was resolved in them.
    ///
    /// A variable that is reached by name ahead of its own place in the input is a copy in the
    /// graph, and the output has the input's object: a vector set on an input variable feeds both,
    /// an expression set on another kind of variable doesn't.
    bool run(const Dictionnary& in_RawExpressions, Dictionnary& out_LinkedExpressions);

private:
    friend class Resolver;

    Handle<ScriptLoader> m_pScriptLoader;
};

} // namespace Velmora::Math::Xpr
