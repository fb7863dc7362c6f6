#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/ScriptLoader.h>

#include "KindCache.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

/// What one run of the linker resolves names with: copies of the input's expressions as they were
/// when the run began, and what the scripts add that are loaded in its course.
///
/// A variable of a script is copied when it is first asked for. Scripts mostly define names ahead
/// of their uses, so that nobody asks, and the copies of a long script would be as much work as all
/// else that linking does. Everything is copied at the start where that would be noticed: if
/// copying is logged, for loaders of the host's, which see the dictionary that they fill, for nodes
/// of the host's, and for expressions that share nodes, so that to resolve one changes another.
class RawExpressions {
public:
    using Node = Handle<ExpressionBaseImpl>;

    /// Inputs of the copies and of the originals are fed together. The originals outlive this.
    RawExpressions(const Dictionnary& in_Originals, const ScriptLoader& in_Loader);

    /// The expression of that name; null, with a DEBUG line, if there is none.
    Node find(const std::string& in_strName);

    /// To be called around the resolving of each entry, in their order. To resolve a variable
    /// changes it, and whoever asks for one that failed gets it as it was.
    void begin(const Node& in_pEntry);
    void end(bool in_bResolved);

    /// Something raw below the variable that is being resolved has been replaced.
    void noteReplaced(const Node& in_pParent, const Node& in_pRaw, const Node& in_pNew);

    /// Where loaded scripts go. The names of the originals stand there too, so that the script that
    /// they came from isn't loaded again.
    Dictionnary& getLoaded();

private:
    struct Replacement {
        Node m_pParent;
        Node m_pRaw;
        Node m_pNew;
    };

    bool isCopyingNoticed(const ScriptLoader& in_Loader) const;
    bool isTreeOfAScript(const ExpressionBaseImpl& in_Root);
    void copyRest();
    Node copy(const ExpressionBaseImpl& in_Original);
    Node copyCurrent();

    const Dictionnary& m_Originals;
    const std::vector<ExpressionBaseImpl*> m_vOriginals;
    RootsAhead<AllLines> m_Ahead{m_vOriginals};
    /// Was everything copied at the start?
    const bool m_bHasCopies;
    /// Loaded expressions, behind the copies that were made at the start.
    Dictionnary m_Loaded;
    /// How many variables have neither been copied nor begun; those that have been begun stand
    /// ahead of the place.
    std::size_t m_uiWaiting = 0;
    std::size_t m_uiBegun = 0;
    /// Serves all copies, as if they had been made at once.
    ExpressionImplCopier m_Copier;

    /// The original that is being resolved, if it has no copy yet, and what happened to it.
    const ExpressionBaseImpl* m_pCurrent = nullptr;
    std::vector<Replacement> m_vReplaced;

    KindCache<ExpressionBaseImpl, bool> m_ScriptKinds;
    std::vector<const ExpressionBaseImpl*> m_vPending;
};

} // namespace Velmora::Math::Xpr
