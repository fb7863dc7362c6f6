#pragma once

#include <memory>
#include <string>

#include <velmora/HashMapVector.h>
#include <velmora/ROConfiguration.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/ParameterImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

/// The base of every node that computes: operators, script functions, built-ins.
///
/// Arguments are children of the node, parameters stand beside it; both keep the order in which
/// they were added. Arguments and parameters are never removed. Even look-ups by name write into
/// the node: one thread at a time.
class VELMORA_EXPORT FunctionBaseImpl : public virtual Function, public ExpressionBaseImpl {
public:
    /// Arguments by name, with the number of the child; parameters by name.
    using ArgumentMap = HashMapVector<std::string, unsigned long>;
    using ParameterMap = HashMapVector<std::string, Handle<ParameterImpl>>;
    using ArgumentIterator = ArgumentMap::const_iterator;
    using ParameterIterator = ParameterMap::const_iterator;

    FunctionBaseImpl();

    /// Without arguments and parameters, under that name.
    explicit FunctionBaseImpl(const char* in_szName);
    ~FunctionBaseImpl() override;

    /// The name that it was given last.
    const char* getName() const override { return m_strName.c_str(); }
    void setName(const char* in_szName);

    Handle<Variable> getArgument(std::size_t in_uiIndex) const override;
    Handle<Variable> getArgument(const char* in_szArgumentName) const override;
    Handle<Parameter> getParameter(std::size_t in_uiIndex) const override;
    Handle<Parameter> getParameter(const char* in_szName) const override;

    /// The variable of an entry; null where a refused link left an entry without a child.
    Handle<VariableImpl> getArgument(const ArgumentIterator& in_iteArgument) const;

    /// Adds an argument without a value. A name that exists gets the new argument in its place. The
    /// variable's own name becomes NAME&ID, ID being the identifier of the function.
    bool addArgument(const char* in_szArgumentName);

    /// Adds a parameter without a value. False, with an ERROR line, for a name that exists.
    bool addParameter(const char* in_szParameterName);

    /// The arguments, and the parameters, in the order in which they were added.
    ArgumentIterator getArgumentBegin() const { return m_Arguments.begin(); }
    ArgumentIterator getArgumentEnd() const { return m_Arguments.end(); }
    std::size_t getArgumentCount() const { return m_Arguments.size(); }
    ParameterIterator getParameterBegin() const { return parameters().begin(); }
    ParameterIterator getParameterEnd() const { return parameters().end(); }
    std::size_t getParameterCount() const { return parameters().size(); }

    /// The function must be configured again; nothing acts on it by itself.
    void invalidateConfig() { m_bConfigured = false; }

    /// As for every expression; then the parameters that took their values from this function's
    /// take them from those of the same name of the new one. False for a new expression that is no
    /// function; the parents have moved by then.
    bool replace(const Handle<ExpressionBaseImpl>& in_pNewExpression) override;

    std::ostream& write(std::ostream& out_Stream) const override;

protected:
    /// Collects the parameters in a configuration and hands it to the overload of two arguments.
    bool configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) override;

    /// Reads the parameters. The configuration dies after the call: copy what is needed.
    virtual bool configure_i(const ROConfiguration& in_Configuration,
                             const TSHandle<VirtualFileSystem>& in_pFileSystem) = 0;

    /// As above, with an argument or a parameter that was made before.
    bool addArgument(const char* in_szArgumentName, Handle<VariableImpl> in_pArgument);
    bool addParameter(const char* in_szParameterName, const Handle<ParameterImpl>& in_pParameter);

    using ExpressionBaseImpl::fill;

    /// Makes this function a copy of another: name, arguments and parameters.
    void fill(const FunctionBaseImpl& in_Source, ExpressionImplCopier& inout_Copier);

private:
    /// The parser adds the operands of concatenations and conditions as arguments of its own.
    friend class ScriptParser;
    friend class ParameterImpl;

    /// Parameters, and the way back that they keep: null once the function has gone, however long
    /// they stay.
    struct Parameters {
        ParameterMap m_mapParameters;
        std::shared_ptr<LimitedObjPtr<FunctionBaseImpl>> m_pFunction;
    };

    Parameters& makeParameters();
    bool copyToOwnArgument(const ArgumentIterator& in_iteSource, const VariableImpl& in_Source,
                           ExpressionImplCopier& inout_Copier);

    const ParameterMap& parameters() const;

    ArgumentMap m_Arguments;
    /// Null without parameters, as in every operator.
    std::unique_ptr<Parameters> m_pParameters;
    std::string m_strName;
    bool m_bConfigured = false;
};

} // namespace Velmora::Math::Xpr
