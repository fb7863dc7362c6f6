#include "TableFrames.h"

#include "Failure.h"

namespace Vxpr {

void TableFrames::checkEnd(std::uint64_t in_uiFrames) const {
    if (in_uiFrames == 0) {
        throw Failure::ofData("the tables of the inputs have no rows");
    }
}

} // namespace Vxpr
