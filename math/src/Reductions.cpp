#include <velmora/math/Reductions.h>

#include "Kernels.h"

namespace Velmora::Math {

Reductions::Reductions() : m_pLoop(kernels().m_Reductions[m_uiKinds]) {}

bool Reductions::add(Kind in_eKind) {
    const std::size_t uiBefore = m_uiKinds;
    m_uiKinds |= setOf(in_eKind);
    m_pLoop = kernels().m_Reductions[m_uiKinds];
    return m_uiKinds != uiBefore;
}

} // namespace Velmora::Math
