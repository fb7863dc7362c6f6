#include "tools/vxpr/CsvWriter.h"
#include "tools/vxpr/EngineLog.h"
#include "tools/vxpr/FeatureRow.h"
#include "tools/vxpr/FeatureSelection.h"
#include "tools/vxpr/InputFeed.h"
#include "tools/vxpr/Output.h"
#include "tools/vxpr/RecordingFrames.h"
#include "tools/vxpr/Table.h"

#include "RunTest.h"
#include "support/AllocationCounter.h"

namespace Vxpr {

using namespace Vxpr::TestSupport;

class FrameLoopTest : public RunTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Examples, FrameLoopTest, testing::Values("loudness", "endpointer", "peak"),
                         [](const auto& in_Info) { return std::string(in_Info.param); });

TEST_P(FrameLoopTest, FeedingEvaluatingAndWritingAFrameAllocateNothingOnceWarm) {
    EngineLog::install({});
    const std::string strWave = m_Scratch.getPath("tone.wav");
    writeWave(strWave, makeTone(700.0, 0.5, 8000, 160 * 1100));
    ScriptLibrary library;
    DiagnosticPrinter printer(library);
    LinkedScript script(
        {std::string(VELMORA_SOURCE_DIR) + "/examples/scripts/" + GetParam() + ".xpr", {}, true},
        library, printer);
    ASSERT_TRUE(script.load());
    const FeatureSelection selection(script, {});
    FeatureRow row(script, selection.getNames(), printer);
    ASSERT_TRUE(row.configure());
    RecordingFrames::Options options;
    options.m_Recording.m_strPath = strWave;
    options.m_FrameSize = FrameSize::parse("--frame", "20ms");
    RecordingFrames frames(options);
    InputFeed feed(row.getInputs(), {}, frames, library, printer);
    Output output(m_Scratch.getPath("table.csv"));
    Table table(std::make_unique<CsvWriter>(output), selection.getColumnNames());
    const auto work = [&](std::uint64_t in_uiFrame) {
        const bool bDone = frames.next() && feed.feed(in_uiFrame);
        table.addRow(frames.getTime(), row.evaluate(in_uiFrame, frames.getTime()));
        return bDone;
    };
    for (std::uint64_t uiFrame = 0; uiFrame < 100; ++uiFrame) {
        ASSERT_TRUE(work(uiFrame));
    }
    const Velmora::Testing::AllocationCounter counter;
    bool bDone = true;
    for (std::uint64_t uiFrame = 100; uiFrame < 1100; ++uiFrame) {
        bDone = work(uiFrame) && bDone;
    }
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_EQ(uiAllocations, 0U);
    EXPECT_TRUE(bDone);
    EXPECT_FALSE(printer.hasErrors());
}

} // namespace Vxpr
