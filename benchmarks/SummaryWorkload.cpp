#include <string>

#include "Frames.h"
#include "Host.h"
#include "References.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

const char* const SCRIPT = "inputvar x\nr = {sum(x), max(x), averagePower(x)}\n";

class Summaries {
public:
    explicit Summaries(std::size_t in_uiSize)
        : m_Frames(in_uiSize),
          m_Host(SCRIPT),
          m_pX(m_Host.getInput("x")),
          m_pR(m_Host.getFeature("r")) {}

    void check() {
        for (std::size_t uiFrame = 0; uiFrame != 2 * Frames::COUNT; ++uiFrame) {
            m_pX->setValue(m_Frames.get(uiFrame));
            const Math::DoubleVector& vR = evaluateOrThrow(*m_pR);
            if (vR.size() != m_Summary.size()) {
                throw WrongResult("summary: wrong size");
            }
            for (const auto pReference : {summarizeFused, summarizeUnfused, summarizeByEigen}) {
                pReference(m_Frames.getCopy(uiFrame), m_Frames.size(), m_Summary);
                checkClose("summary", vR.begin(), m_Summary.data(), vR.size(), 1e-11);
            }
        }
    }

    Race::Times race() {
        Race race;
        race.add("library", [this](std::size_t in_uiFrame) {
            m_pX->setValue(m_Frames.get(in_uiFrame));
            benchmark::DoNotOptimize(evaluate(*m_pR));
        });
        add(race, "unfused", summarizeUnfused);
        add(race, "fused", summarizeFused);
        add(race, "Eigen", summarizeByEigen);
        return race.run();
    }

private:
    template <class Reference>
    void add(Race& inout_Race, const char* in_szRunner, Reference in_Reference) {
        inout_Race.addReference(in_szRunner, [this, in_Reference](std::size_t in_uiFrame) {
            in_Reference(m_Frames.getCopy(in_uiFrame), m_Frames.size(), m_Summary);
            benchmark::DoNotOptimize(m_Summary);
        });
    }

    Frames m_Frames;
    Host m_Host;
    Handle<Math::Xpr::Variable> m_pX;
    Handle<Math::Xpr::Expression> m_pR;
    Summary m_Summary{};
};

} // namespace

void measureSummary(Report& inout_Report, Effort /*in_eEffort*/) {
    for (const std::size_t uiSize : FRAME_SIZES) {
        const std::string strWhat = "W2, N = " + std::to_string(uiSize);
        Summaries summaries(uiSize);
        summaries.check();
        const Race::Times times = summaries.race();
        inout_Report.addTimes(strWhat, times);
        if (uiSize >= 512) {
            const double dUnfused = times.at("unfused");
            inout_Report.addTarget(strWhat, "ns", times.at("library"),
                                   {1.6 * dUnfused, 1.3 * dUnfused}, "1.6 (aim: 1.3) x unfused");
        }
    }
}

} // namespace Velmora::Benchmarks
