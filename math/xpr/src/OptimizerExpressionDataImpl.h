#pragma once

#include <velmora/Fallible.h>
#include <velmora/MemAccounting.h>

#include "ExpressionDataIterator.h"
#include "OptimizerExpressionDataContainer.h"
#include "OptimizerExpressionDataSpecializer.h"

namespace Velmora::Math::Xpr {

/// The data of one expression, computed on demand and then kept, whatever happens to the graph.
class OptimizerExpressionDataImpl : public virtual OptimizerExpressionData {
public:
    VELMORA_MEM_ACCOUNT("OptimizerExpressionDataImpl")

    using ChildIterator = ExpressionDataIterator<ChildContainerTraits>;
    using ParentIterator = ExpressionDataIterator<ParentContainerTraits>;

    OptimizerExpressionDataImpl(OptimizerExpressionDataContainer& inout_Container,
                                const Handle<ExpressionBaseImpl>& in_pExpression);

    /// Of an expression of a known kind, whose key somebody else makes.
    OptimizerExpressionDataImpl(OptimizerExpressionDataContainer& inout_Container,
                                const Handle<ExpressionBaseImpl>& in_pExpression,
                                OptimizerExpressionKind in_eKind);

    bool operator==(const OptimizerExpressionData& in_Other) const override;
    bool operator!=(const OptimizerExpressionData& in_Other) const override;
    unsigned long getComplexity() const override;
    const std::string& key() const override;
    std::size_t hash() const override;
    bool isValid() const override;
    void invalidate() override;
    const Handle<ExpressionBaseImpl>& getExpression() const override;
    OptimizerKeyTable::Number getKeyNumber() const override;

    std::ostream& write(std::ostream& out_Stream) const override;

    ChildIterator getChildBegin() const;
    ChildIterator getChildEnd() const;
    ParentIterator getParentBegin() const;
    ParentIterator getParentEnd() const;

    OptimizerKeyTable& getKeys() const { return m_Container.getKeys(); }

    void setKeyNumber(OptimizerKeyTable::Number in_uiNumber) { m_KeyNumber = in_uiNumber; }

    /// The number of another expression's key.
    OptimizerKeyTable::Number getKeyNumberOf(const ExpressionBaseImpl& in_Expression) const;

private:
    OptimizerExpressionDataSpecializer* getSpecializer() const;
    OptimizerKeyTable::Number makeKeyNumber() const;

    OptimizerExpressionDataContainer& m_Container;
    Handle<ExpressionBaseImpl> m_pExpression;
    OptimizerExpressionKind m_eKind = OptimizerExpressionKind::Unknown;
    mutable CountedObjPtr<OptimizerExpressionDataSpecializer> m_pSpecializer;
    mutable Fallible<std::size_t> m_Hash;
    mutable std::string m_strKey;
    mutable bool m_bKeySet = false;
    bool m_bIsValid = true;
    mutable Fallible<OptimizerKeyTable::Number> m_KeyNumber;
};

} // namespace Velmora::Math::Xpr
