// Two scripts in a file system in memory that refer to each other: the first is loaded, and the
// second when the linker looks for it or, now and then, by the host as well.
//
// The input is the first script, "a", a zero byte, the second one, "b", a zero byte, and what
// steers the rest.

#include <string>

#include <velmora/math/xpr/Evaluator.h>

#include "fuzz/support/Input.h"
#include "fuzz/support/ScriptHost.h"
#include "fuzz/support/Target.h"
#include "tests/support/MemoryFileSystem.h"

using namespace Velmora;
using namespace Velmora::Fuzz;
using namespace Velmora::Math::Xpr;

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    Input input(in_pData, in_uiSize);
    const std::string strFirst = input.takeText();
    const std::string strSecond = input.takeText();
    const std::uint8_t uiWay = input.takeByte();
    const bool bPlain = (uiWay & 1U) != 0;
    const bool bAddSecond = (uiWay & 2U) != 0;
    const bool bAddInput = (uiWay & 4U) != 0;
    const bool bLinkAgain = (uiWay & 8U) != 0;

    const TSHandle<VirtualFileSystem> pFileSystem(
        new Testing::MemoryFileSystem({{"scripts/a.xpr", strFirst}, {"scripts/b.xpr", strSecond}}));
    Evaluator evaluator;
    if (!configure(evaluator, pFileSystem)) {
        return 0;
    }
    if (bAddInput) {
        addInput(evaluator, "x");
    }
    if (!evaluator.addScript("a")) {
        return 0;
    }
    if (bAddSecond) {
        evaluator.addScript("b");
    }
    if (!evaluator.link(!bPlain)) {
        // What a failed run left behind can be linked again once what was missing is there.
        if (!bLinkAgain || !addInput(evaluator, "b.x") || !evaluator.link(!bPlain)) {
            return 0;
        }
    }
    evaluator.reconfigureExpressions();
    ScriptNames names(strFirst, "a");
    names.add(ScriptNames(strSecond, "b"));
    ScriptHost(evaluator, names).run(input);
    const Evaluator copy(evaluator);
    static_cast<void>(copy);
    return 0;
}
