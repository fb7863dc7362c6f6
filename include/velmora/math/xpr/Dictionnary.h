#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include <velmora/CachedLLLogger.h>
#include <velmora/Cloneable.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/HashMapVector.h>
#include <velmora/MemAccounting.h>
#include <velmora/ObjectWithLogger.h>
#include <velmora/OutputStreamable.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// The expressions of one stage of the pipeline, by name and in the order of their insertion.
///
/// Always true: no two entries have the same key; the key of an entry is the name that its
/// expression had when it was added; entries leave only all together, by `clear` or assignment.
///
/// Holds handles: an expression lives as long as a dictionary, a parent or the host holds it.
/// Belongs to one thread at a time, even for look-ups: they write a scratch string.
class VELMORA_EXPORT Dictionnary : public ObjectWithLogger<CachedLLLogger>,
                                   public OutputStreamable,
                                   public Cloneable {
    using Map = HashMapVector<std::string, Handle<Expression>>;

public:
    VELMORA_MEM_ACCOUNT("Dictionnary")

    /// Walks the entries in insertion order; an entry has the key in `.first`, the expression in
    /// `.second`.
    using const_iterator = Map::const_iterator;

    /// Empty. Logs as "quillmark.math.xpr.Dictionnary.NAME", at the level that is in force now.
    explicit Dictionnary(const char* in_szName);

    /// Shallow: the same name and the same expressions.
    Dictionnary(const Dictionnary& in_Other);

    /// Deep: a copy of the graph, in which nodes that were shared are shared again.
    ///
    /// With `in_bUpdateDomainVariables` the inputs of the copy are its own, and start from [0.0];
    /// no node of the source can be reached from the copy. The source's inputs keep their vectors,
    /// and its computed values stay current.
    ///
    /// Without it, the inputs of the copy share the domain values of the source, which are made to
    /// point at initial values of the copy: a vector set on either feeds both.
    ///
    /// An expression that can't be copied fails an assertion, and its entry holds null.
    Dictionnary(const Dictionnary& in_Source, const char* in_szName,
                bool in_bUpdateDomainVariables);

    ~Dictionnary() override;

    /// Shallow, as the copy constructor; the name is assigned as well.
    Dictionnary& operator=(const Dictionnary& in_Other);

    /// Adds a function, a variable or a constant under its name. A name that exists keeps its
    /// expression: false then, or true if `in_bIgnoreDuplicate`. Anything else fails an assertion:
    /// false.
    bool add(const Handle<Expression>& in_pExpression, bool in_bIgnoreDuplicate);

    /// Does an expression of that name exist here, not necessarily the same one? Asked of anything
    /// but a function or a variable, constants included, it fails an assertion: false.
    bool find(const Handle<Expression>& in_pExpression) const;

    /// Null, with a DEBUG line, for an unknown name.
    Handle<Expression> findExpression(const char* in_szName) const;

    /// As `findExpression`; null without a message for an expression of another kind.
    Handle<Function> findFunction(const char* in_szName) const;
    Handle<Variable> findVariable(const char* in_szName) const;

    /// The entries in the order in which they were added.
    const_iterator begin() const;
    const_iterator end() const;

    /// The number of entries.
    std::size_t size() const;

    /// The name that the dictionary was given.
    const char* getName() const { return m_strName.c_str(); }

    /// Forgets all entries and releases their expressions.
    void clear();

    /// A deep copy of the same name, with inputs of its own. The caller owns it.
    Cloneable* clone() const override;

    /// One expression a line, each with the graph below it, in Graphviz statements. Behind more
    /// paths than `ExpressionBaseImpl::MaxVisitsPerWalk` each node comes once, behind all lines.
    std::ostream& write(std::ostream& out_Stream) const override;

    /// Writes the whole as a Graphviz file. True in every case: a file that can't be opened is
    /// left out.
    bool dump(const char* in_szFileName) const;

protected:
    /// The insertion behind `add`, under a name of the caller's.
    bool addExpression(const char* in_szName, const Handle<Expression>& in_pExpression,
                       bool in_bIgnoreDuplicate);

private:
    void takeLogger();
    bool takeKey(const char* in_szName) const;

    std::string m_strName;
    Map m_mapExpressions;
    /// Keeps its capacity, so that look-ups don't allocate once the longest name has been seen.
    mutable std::string m_strKey;
};

} // namespace Velmora::Math::Xpr
