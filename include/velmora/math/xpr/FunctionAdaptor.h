#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <velmora/Export.h>
#include <velmora/LimitedObjPtr.h>
#include <velmora/Object.h>
#include <velmora/ROConfiguration.h>
#include <velmora/Resettable.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/DoubleVector.h>

namespace Velmora::Math::Xpr {

/// A built-in function as its author writes it: arithmetic on named vectors, without a graph.
/// `UserFunctionImpl<F>` makes a node of it.
///
/// A function class is default constructible, copyable and assignable; a copy carries the
/// configuration and the memory between frames, and shares neither with its source. One thread at a
/// time uses an object.
///
/// A class `F` of one argument, of which several cost less together than one by one, may say so
/// with
///
///     static bool calculateTogether(F* const* in_ppFunctions, std::size_t in_uiFunctions,
///                                   const DoubleVector& in_vInput,
///                                   DoubleVector* const* out_ppResults);
///
/// which sets the results of at most `MaxTogether` functions to what `calculate` would give each.
/// The results aren't cleared. False, with nothing in the log, has each computed by `calculate`.
///
/// One of one argument, without parameters and memory, whose result is a number that a reduction
/// makes of all elements, may say so with
///
///     static Reductions::Kind reductionOf(const F& in_Function);
///
/// It is computed in one pass with others of the same vector then. `calculate` is called for the
/// first frame, and for vectors that have no elements; its result, for all others, must be that of
/// the reduction, and it must leave nothing in the log for them. With parameters it is computed
/// alone.
///
/// A class that derives from `F` has neither unless it has one of its own.
class VELMORA_EXPORT FunctionAdaptor : public Resettable, public virtual Object {
public:
    /// The vector of each argument, by its name. The pointers are good during `calculate` only.
    /// They lead to the values of other nodes, which others read as well: a function leaves them
    /// alone.
    using ArgumentMap = std::map<std::string, LimitedObjPtr<DoubleVector>>;

    /// Functions that one call of a `calculateTogether` gets at most.
    static constexpr std::size_t MaxTogether = 8;

    /// Forgets the memory between frames; keeps the configuration.
    bool reset() override = 0;

    /// The name under which scripts call the function.
    virtual const char* getFunctionName() const = 0;

    /// Computes one frame. `out` arrives cleared; the result is appended to it. None of the
    /// pointers is null. False when there is no result; the cause is in the log then.
    virtual bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) = 0;

    /// Appends the names of the arguments, in the order in which scripts pass them. The names sort
    /// in that order: the k-th argument of the node is bound to the k-th key of the sorted map.
    virtual void getArgumentNames(std::vector<std::string>& out) = 0;

    /// Appends the names of the parameters, in the order in which scripts pass them.
    virtual void getParameterNames(std::vector<std::string>& out) = 0;

    /// Reads the parameters from a configuration that holds those of this function alone, and dies
    /// after the call. False when they can't be used.
    virtual bool configure(const ROConfiguration& in_Configuration,
                           const TSHandle<VirtualFileSystem>& in_pFileSystem) = 0;
};

} // namespace Velmora::Math::Xpr
