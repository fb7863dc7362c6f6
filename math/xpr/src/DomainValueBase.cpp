#include <velmora/math/xpr/DomainValueBase.h>

#include <sstream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "LeafText.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.DomainValueImpl");

DomainValueBase::DomainValueBase() {
    VELMORA_TRACE_SCOPE(fileLogger(), "DomainValueBase::DomainValueBase");
}

const char* DomainValueBase::TypeName() {
    return "DomainValue";
}

const char* DomainValueBase::getName() const {
    if (!m_bNameBuilt) {
        m_strName = makeLeafName(TypeName(), getValue());
        m_bNameBuilt = true;
    }
    return m_strName.c_str();
}

std::ostream& DomainValueBase::write(std::ostream& out_Stream) const {
    ExpressionBaseImpl::write(out_Stream);
    return writeLeaf(out_Stream, *this, TypeName(), getValue());
}

bool DomainValueBase::configure_i(const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool DomainValueBase::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    // Values travel as pointers to vectors that nobody below the host writes to.
    out = const_cast<DoubleVector*>(&getValue());
    return true;
}

bool DomainValueBase::reset_i() {
    return true;
}

Handle<ExpressionBaseImpl> DomainValueBase::copy_i(ExpressionImplCopier& inout_Copier) const {
    return copyWith(getValue(), inout_Copier);
}

Handle<ExpressionBaseImpl> DomainValueBase::copyWith(const DoubleVector& in_vValue,
                                                     ExpressionImplCopier& inout_Copier) const {
    Handle<DomainValueBase> pCopy(createNew(in_vValue));
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

bool DomainValueBase::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

bool DomainValueBase::getSealedInputs(std::vector<ExpressionBaseImpl*>&) const {
    return true;
}

} // namespace Velmora::Math::Xpr
