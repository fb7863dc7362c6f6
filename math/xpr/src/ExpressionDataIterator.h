#pragma once

#include <velmora/LogSite.h>

#include "OptimizerExpressionDataContainer.h"

namespace Velmora::Math::Xpr {

/// The ranges of an expression that lead to other expressions.
struct ChildContainerTraits {
    using Position = const Handle<ExpressionBaseImpl>*;
};
struct ParentContainerTraits {
    using Position = const LimitedObjPtr<ExpressionBaseImpl>*;
};

/// Walks from the data of an expression to the data of its children or parents.
template <class Traits>
class ExpressionDataIterator {
public:
    ExpressionDataIterator(typename Traits::Position in_Position,
                           OptimizerExpressionDataContainer& inout_Container)
        : m_Position(in_Position), m_pContainer(&inout_Container) {}

    ExpressionDataIterator& operator++() {
        ++m_Position;
        return *this;
    }

    /// The data of the expression at this position; null, with an assertion, if there is none.
    const CountedObjPtr<OptimizerExpressionData>& operator*() const {
        const auto& pData = m_pContainer->get(**m_Position);
        if (pData.isNull()) {
            VELMORA_ASSERT_FAIL("!pData.isNull() && \"Container should have returned a valid data "
                                "for \" \"specified expression.\"");
        }
        return pData;
    }

    bool operator==(const ExpressionDataIterator& in_Other) const {
        return m_Position == in_Other.m_Position;
    }
    bool operator!=(const ExpressionDataIterator& in_Other) const { return !(*this == in_Other); }

private:
    typename Traits::Position m_Position;
    OptimizerExpressionDataContainer* m_pContainer;
};

} // namespace Velmora::Math::Xpr
