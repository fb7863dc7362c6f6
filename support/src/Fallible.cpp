#include <velmora/Fallible.h>

#include <velmora/Assertion.h>

namespace Velmora {

void FallibleBase::assertUsedInInvalidStateErr(const char* in_szFile, int in_iLine) {
    const Assertion assertion(false, "m_bValid && \"value read before it was set\"", in_szFile,
                              in_iLine);
}

} // namespace Velmora
