#pragma once

#include <string>

#include <velmora/MemAccounting.h>

#include "OptimizerKeyTable.h"

namespace Velmora::Math::Xpr {

class OptimizerExpressionDataImpl;

/// How the key and the complexity of one kind of expression are computed.
class OptimizerExpressionDataSpecializer {
public:
    virtual ~OptimizerExpressionDataSpecializer() = default;

    /// Builds the key's text, logs it, and keeps it.
    virtual const std::string& key() = 0;

    virtual unsigned long getComplexity() = 0;

    /// The number of the key, from the pieces that this kind of expression makes it of.
    virtual OptimizerKeyTable::Number makeKeyNumber() = 0;
};

/// The computation for expressions of class `T`.
template <class T>
class OptimizerExpressionDataSpecializerImpl : public virtual OptimizerExpressionDataSpecializer {
public:
    VELMORA_MEM_ACCOUNT("OptimizerExpressionDataSpecializerImpl")

    explicit OptimizerExpressionDataSpecializerImpl(const OptimizerExpressionDataImpl& in_Data)
        : m_pData(&in_Data) {}

    const std::string& key() override;
    unsigned long getComplexity() override;
    OptimizerKeyTable::Number makeKeyNumber() override;

private:
    std::string m_strKey;
    const OptimizerExpressionDataImpl* m_pData;
};

/// Is somebody reading the keys that the specializers log?
bool areKeysLogged();

} // namespace Velmora::Math::Xpr
