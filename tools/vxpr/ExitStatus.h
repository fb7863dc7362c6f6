#pragma once

namespace Vxpr {

/// What the process tells its caller.
enum class ExitStatus {
    Done = 0,              ///< everything that was asked for has been written
    DataAtFault = 1,       ///< a script, a recording or an output stood in the way
    CommandLineAtFault = 2 ///< the arguments can't be meant
};

} // namespace Vxpr
