#include <velmora/math/xpr/DomainValueNoCopyImpl.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.DomainValueImpl");

DomainValueNoCopyImpl::DomainValueNoCopyImpl(const DoubleVector& in_vValue) {
    DomainValueNoCopyImpl::setValue(in_vValue);
}

bool DomainValueNoCopyImpl::setValue(const DoubleVector& in_vValue) {
    invalidate();
    forgetName();
    VELMORA_LOG_DEBUG(fileLogger(), "DomainValueNoCopyImpl::setValue ID=" << getId());
    m_pVector = &in_vValue;
    return true;
}

bool DomainValueNoCopyImpl::setValueCopy(const DoubleVector&) {
    VELMORA_ASSERT_FAIL("false && \"not supported for this implementation\"");
    return false;
}

const DoubleVector& DomainValueNoCopyImpl::getValue() const {
    VELMORA_LOG_DEBUG(fileLogger(),
                      "DomainValueNoCopyImpl::getValue ID=" << getId() << " val=" << *m_pVector);
    return *m_pVector;
}

bool DomainValueNoCopyImpl::areReadsLogged() {
    return detail::isSiteEnabled(fileLogger(), log4cplus::DEBUG_LOG_LEVEL);
}

Handle<ExpressionBaseImpl> DomainValueNoCopyImpl::copy_i(ExpressionImplCopier& inout_Copier) const {
    return copyWith(*m_pVector, inout_Copier);
}

DomainValueBase* DomainValueNoCopyImpl::createNew(const DoubleVector& in_vValue) const {
    return new DomainValueNoCopyImpl(in_vValue);
}

} // namespace Velmora::Math::Xpr
