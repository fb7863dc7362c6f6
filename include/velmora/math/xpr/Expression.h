#pragma once

#include <type_traits>
#include <utility>

#include <velmora/Export.h>
#include <velmora/LimitedObjPtr.h>
#include <velmora/Object.h>
#include <velmora/ObjectCast.h>
#include <velmora/OutputStreamable.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/DoubleVector.h>

namespace Velmora::Math::Xpr {

class ExpressionBaseImpl;

/// A value of a frame: a node of the graph of expressions, as a host sees it.
///
/// A graph belongs to one thread at a time: evaluating it, and even looking a name up in it, writes
/// into its nodes.
class VELMORA_EXPORT Expression : public virtual Object, public OutputStreamable {
public:
    /// Prepares the node and everything below it: each function reads its parameters.
    /// False at the first function that refuses; the cause is in the log.
    virtual bool configure(const TSHandle<VirtualFileSystem>& in_pFileSystem) = 0;

    /// Computes the value if it isn't current and copies it into `out`.
    /// False when it can't be computed; `out` is left alone then.
    virtual bool evaluate(DoubleVector& out) = 0;

    /// Computes the value if it isn't current and hands out a pointer to it, without a copy. The
    /// vector belongs to a node or to the host, or is the [0] of all inputs that haven't been set;
    /// it is good until the next evaluation of the graph. Whoever gets it leaves it as it is, its
    /// size above all: the next frame is written where this one stands.
    /// May hand out null with a true result: a variable or a script function whose value has
    /// failed ever since its first evaluation. Above what fails later it hands out what is left
    /// there, which may have no elements.
    virtual bool evaluate(LimitedObjPtr<DoubleVector>& out) = 0;

    /// Writes the graph below the node in Graphviz form. True in every case: a file that can't be
    /// opened is left out.
    virtual bool dump(const char* in_szFileName) const = 0;

    /// Forgets the values and the memory between frames of the node and everything below it; keeps
    /// the configuration and the values that were set.
    virtual bool reset() = 0;

    /// The same object as a node of the library; null for a host's own expression. A cast to
    /// `ExpressionBaseImpl` asks it.
    virtual ExpressionBaseImpl* asNode() noexcept { return nullptr; }
};

} // namespace Velmora::Math::Xpr

namespace Velmora {

namespace detail {

/// Does an object that is a `U` have one `Expression` part only? It has where that is a virtual
/// base, from which there is no way back but a checked cast.
template <class U, class = void>
struct SharesExpression : std::is_convertible<U*, Math::Xpr::Expression*> {};
template <class U>
struct SharesExpression<
    U, std::void_t<decltype(static_cast<U*>(std::declval<Math::Xpr::Expression*>()))>>
    : std::is_same<U, Math::Xpr::Expression> {};

} // namespace detail

/// Expressions are asked themselves, whichever interface of theirs is at hand.
template <class U>
struct ObjectCastShortcut<Math::Xpr::ExpressionBaseImpl, U,
                          std::enable_if_t<detail::SharesExpression<U>::value>> {
    /// There is.
    static constexpr bool EXISTS = true;
    /// What the checked cast would give.
    static Math::Xpr::ExpressionBaseImpl* cast(Math::Xpr::Expression& in_Expression) noexcept {
        return in_Expression.asNode();
    }
};

} // namespace Velmora
