// A script on its whole way: loaded, linked, optimised, configured, ten frames of hostile numbers,
// now and then a copy of the evaluator, and destruction in any order.
//
// The input is the script, a zero byte, and what steers the rest.

#include <memory>
#include <optional>
#include <sstream>
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
    const std::string strText = input.takeText();
    const ScriptNames names(strText, "s");
    const std::uint8_t uiWay = input.takeByte();
    const bool bPlain = (uiWay & 1U) != 0;
    const bool bUnconfigured = (uiWay & 2U) != 0;
    const bool bCopyFirst = (uiWay & 4U) != 0;
    const bool bEvaluatorDiesFirst = (uiWay & 8U) != 0;

    const TSHandle<VirtualFileSystem> pFileSystem(new Testing::MemoryFileSystem({}));
    auto pEvaluator = std::make_unique<Evaluator>();
    std::istringstream stream(strText);
    if (!configure(*pEvaluator, pFileSystem) || !pEvaluator->addScript(stream, "s") ||
        !pEvaluator->link(!bPlain)) {
        return 0;
    }
    if (!bUnconfigured) {
        pEvaluator->reconfigureExpressions();
    }
    std::unique_ptr<Evaluator> pCopy;
    if (bCopyFirst) {
        pCopy = std::make_unique<Evaluator>(*pEvaluator);
    }
    std::optional<ScriptHost> host(std::in_place, *pEvaluator, names);
    if (bEvaluatorDiesFirst) {
        pEvaluator.reset();
    }
    host->run(input);
    if (pCopy) {
        ScriptHost(*pCopy, names).run(input);
    }
    return 0;
}
