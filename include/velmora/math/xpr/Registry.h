#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <velmora/CachedLLLogger.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/HashMapVector.h>
#include <velmora/Object.h>
#include <velmora/ObjectWithLogger.h>
#include <velmora/OutputStreamable.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// The built-in expressions of the process: a factory for each name.
///
/// Each built-in registers itself while the library is being loaded; a host may register its own
/// before it starts threads. Nothing is ever taken out. Once nobody registers any more, all
/// operations may run on several threads at a time.
class VELMORA_EXPORT Registry : public ObjectWithLogger<CachedLLLogger>, public OutputStreamable {
public:
    /// Makes the objects of one registered name.
    class VELMORA_EXPORT ExpressionAllocator : public virtual Object {
    public:
        /// A new object at each call, which the caller owns.
        virtual Expression* newExpression() = 0;
    };

    /// Makes objects of class `T` by its default constructor.
    template <class T>
    class VELMORA_EXPORT ExpressionAllocatorT : public ExpressionAllocator {
    public:
        Expression* newExpression() override { return new T; }
    };

    /// The one registry; made by the first call.
    static Registry& getInstance();

    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;
    ~Registry() override;

    /// Registers a function. Takes the allocator over in every case. False for a name that exists
    /// (an ERROR line; the first stays) and for an allocator that makes no functions (an
    /// assertion).
    bool registerFunction(const char* in_szName, ExpressionAllocator* in_pAllocator);

    /// Registers a variable; as above.
    bool registerVariable(const char* in_szName, ExpressionAllocator* in_pAllocator);

    /// A new object of the registered class, which the caller owns; it bears the name that its
    /// class gave it. Null, with a DEBUG line only, for an unknown name.
    Expression* newExpression(const char* in_szName) const;

    /// A new function that bears the name asked for; the caller owns it. Null for an unknown name,
    /// and, with an assertion, for one that isn't a function.
    Function* newFunction(const char* in_szName) const;

    /// A new variable; as above.
    Variable* newVariable(const char* in_szName) const;

    /// All names, in the order of their registration. Replaces what `out` held.
    void getNames(std::vector<std::string>& out) const;

    /// Says in one line what the registered expression gives; a second text replaces the first.
    /// False for an unknown name.
    bool describe(const char* in_szName, const char* in_szDescription);

    /// The line that `describe` was given; empty without one. Good until the next registration.
    const char* getDescription(const char* in_szName) const;

    /// Writes nothing.
    std::ostream& write(std::ostream& out_Stream) const override;

protected:
    Registry();

    /// What `registerFunction` and `registerVariable` share.
    bool registerExpression(const char* in_szName,
                            const Handle<ExpressionAllocator>& in_pAllocator);

private:
    static Handle<Expression> makeSample(const Handle<ExpressionAllocator>& in_pAllocator);

    HashMapVector<std::string, Handle<ExpressionAllocator>> m_mapExpressionAllocators;
    HashMapVector<std::string, std::string> m_mapDescriptions;
};

} // namespace Velmora::Math::Xpr
