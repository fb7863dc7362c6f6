#pragma once

#include <list>
#include <memory>
#include <string>

#include <velmora/LimitedObjPtr.h>
#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/Parameter.h>

namespace Velmora::Math::Xpr {

class ExpressionImplCopier;
class FunctionBaseImpl;

/// A parameter with a direct value, a link to another parameter, or both (the link wins).
///
/// Parameters form chains of their own beside the graph of expressions: each owns the one that it
/// takes its value from and knows, without owning them, those that take theirs from it.
class VELMORA_EXPORT ParameterImpl : public virtual Parameter {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("ParameterImpl")

    ParameterImpl();
    /// Copies every field, the identifier included; the copy stands in no parent list.
    ParameterImpl(const ParameterImpl& in_Other);
    ParameterImpl& operator=(const ParameterImpl&) = delete;
    ~ParameterImpl() override;

    /// Unique among parameters; an expression may bear the same number.
    unsigned long getId() const { return m_id; }

    /// The name that it was given last.
    const char* getName() const override { return m_strName.c_str(); }
    void setName(const char* in_szName);

    /// Whether it has a value of its own, possibly hidden by a link.
    bool hasDirectValue() const { return !m_Value.isEmpty(); }

    bool setValue(const Handle<Parameter>& in_pParameter) override;
    bool setValue(const ParameterValue& in_Value) override;
    const ParameterValue& getValue() const override;

    /// The end of the chain of links that starts at this parameter.
    const ParameterImpl& getLeafChild() const;

    /// The function that is told when the value changes, as long as it lives.
    bool setParentFunction(const LimitedObjPtr<FunctionBaseImpl>& in_pFunction);

    /// The parameters that take their value from this one.
    std::list<LimitedObjPtr<ParameterImpl>>::const_iterator getParentBegin() const {
        return m_Parents.begin();
    }

    /// The end behind the last of them.
    std::list<LimitedObjPtr<ParameterImpl>>::const_iterator getParentEnd() const {
        return m_Parents.end();
    }

    /// Gives another parameter this one's direct value or, without one, its link.
    void copyValue(ParameterImpl& out_Destination) const;

    /// The copy of this parameter and of its chain within one copying operation.
    Handle<ParameterImpl> copy(ExpressionImplCopier& inout_Copier) const;

    /// Makes every parameter that takes its value from this one take it from another. False only
    /// if the other is this one.
    virtual bool replace(const Handle<ParameterImpl>& in_pNewParameter);

    /// The parameter's name in Graphviz output; good until the next call.
    const char* getDotName() const;
    std::ostream& write(std::ostream& out_Stream) const override;

protected:
    /// Enters and takes out a parameter that takes its value from this one. False if it isn't
    /// there.
    void addParent(const LimitedObjPtr<ParameterImpl>& in_pParent);
    bool removeParent(const LimitedObjPtr<ParameterImpl>& in_pParent);

    /// Makes this parameter take its value from another one; a null handle ends that.
    bool setChild(const Handle<ParameterImpl>& in_pChild);

private:
    FunctionBaseImpl* getParentFunction() const;

    unsigned long m_id;
    std::string m_strName;
    mutable std::string m_strDotName;
    ParameterValue m_Value;
    Handle<ParameterImpl> m_pChild;
    std::list<LimitedObjPtr<ParameterImpl>> m_Parents;
    /// Shared with the function, which ends it when it dies; null if there never was one.
    std::shared_ptr<LimitedObjPtr<FunctionBaseImpl>> m_pParentFunction;
};

} // namespace Velmora::Math::Xpr
