#include <velmora/math/xpr/ConstantBase.h>

#include <sstream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "LeafText.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.xpr.ExpressionImpl");

ConstantBase::ConstantBase() {
    VELMORA_TRACE_SCOPE(fileLogger(), "ConstantBase::ConstantBase");
}

const char* ConstantBase::TypeName() {
    return "Constant";
}

const char* ConstantBase::getName() const {
    if (!m_bNameBuilt) {
        m_strName = makeLeafName(TypeName(), getValue());
        m_bNameBuilt = true;
    }
    return m_strName.c_str();
}

std::ostream& ConstantBase::write(std::ostream& out_Stream) const {
    ExpressionBaseImpl::write(out_Stream);
    return writeLeaf(out_Stream, *this, TypeName(), getValue());
}

bool ConstantBase::configure_i(const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool ConstantBase::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    // Values travel as pointers to vectors that nobody below the host writes to.
    out = const_cast<DoubleVector*>(&getValue());
    return true;
}

bool ConstantBase::reset_i() {
    return true;
}

Handle<ExpressionBaseImpl> ConstantBase::copy_i(ExpressionImplCopier& inout_Copier) const {
    Handle<ConstantBase> pCopy(createNew(getValue()));
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

bool ConstantBase::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

bool ConstantBase::getSealedInputs(std::vector<ExpressionBaseImpl*>&) const {
    return true;
}

} // namespace Velmora::Math::Xpr
