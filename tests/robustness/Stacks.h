#pragma once

#include <cstddef>

namespace Velmora::Testing {

/// The calls that go on on a further stack: the linker puts this in the place of `DeepCall::call`.
class Stacks {
public:
    /// How many such calls this thread has made since it started.
    static std::size_t getCount();

    /// Lets this thread have no stack for the call that comes behind that many others, as if the
    /// system had none, and for none that comes later.
    static void refuseBehind(std::size_t in_uiOthers);

    /// Lets this thread have stacks again.
    static void allow();
};

} // namespace Velmora::Testing
