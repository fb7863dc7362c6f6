#include <algorithm>
#include <string>

#include "Frames.h"
#include "Host.h"
#include "References.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

/// a*x, b*x, their sum, c*x, the difference, the last.
constexpr double NODES = 6.0;

constexpr Scalars SCALARS{0.75, 1.5, 0.3, 1.7};

std::string toScript(Ending in_eEnding) {
    return std::string("inputvar x\ninputvar a\ninputvar b\ninputvar c\ninputvar d\n"
                       "y = ((a*x + b*x) - c*x) ") +
           (in_eEnding == Ending::Divide ? "/" : "*") + " d\n";
}

class Elements {
public:
    Elements(Ending in_eEnding, std::size_t in_uiSize)
        : m_eEnding(in_eEnding),
          m_Frames(in_uiSize),
          m_Host(toScript(in_eEnding)),
          m_pX(m_Host.getInput("x")),
          m_pY(m_Host.getFeature("y")) {
        m_Host.getInput("a")->setValue(m_vA);
        m_Host.getInput("b")->setValue(m_vB);
        m_Host.getInput("c")->setValue(m_vC);
        m_Host.getInput("d")->setValue(m_vD);
    }

    void check() {
        for (std::size_t uiFrame = 0; uiFrame != 2 * Frames::COUNT; ++uiFrame) {
            m_pX->setValue(m_Frames.get(uiFrame));
            const Math::DoubleVector& vY = evaluateOrThrow(*m_pY);
            if (vY.size() != m_Frames.size()) {
                throw WrongResult("elements: wrong size");
            }
            unfused(uiFrame);
            checkSame("elements", vY.begin(), output(), vY.size());
            fused(uiFrame);
            checkClose("elements, fused", vY.begin(), output(), vY.size(), 1e-10);
            byEigen(uiFrame);
            checkClose("elements, Eigen", vY.begin(), output(), vY.size(), 1e-10);
        }
    }

    Race::Times race() {
        Race race;
        race.add("library", [this](std::size_t in_uiFrame) {
            m_pX->setValue(m_Frames.get(in_uiFrame));
            benchmark::DoNotOptimize(evaluate(*m_pY));
        });
        race.addReference("unfused", [this](std::size_t in_uiFrame) { unfused(in_uiFrame); });
        race.addReference("fused", [this](std::size_t in_uiFrame) { fused(in_uiFrame); });
        race.addReference("Eigen", [this](std::size_t in_uiFrame) { byEigen(in_uiFrame); });
        return race.run();
    }

private:
    double* output() { return m_Frames.getTemporary(2); }

    void unfused(std::size_t in_uiFrame) {
        computeElementsUnfused(m_eEnding, SCALARS, m_Frames.getCopy(in_uiFrame), m_Frames.size(),
                               {m_Frames.getTemporary(0), m_Frames.getTemporary(1)}, output());
    }

    void fused(std::size_t in_uiFrame) {
        computeElementsFused(m_eEnding, SCALARS, m_Frames.getCopy(in_uiFrame), m_Frames.size(),
                             output());
    }

    void byEigen(std::size_t in_uiFrame) {
        computeElementsByEigen(m_eEnding, SCALARS, m_Frames.getCopy(in_uiFrame), m_Frames.size(),
                               output());
    }

    Ending m_eEnding;
    Frames m_Frames;
    Math::DoubleVector m_vA{SCALARS.m_dA};
    Math::DoubleVector m_vB{SCALARS.m_dB};
    Math::DoubleVector m_vC{SCALARS.m_dC};
    Math::DoubleVector m_vD{SCALARS.m_dD};
    Host m_Host;
    Handle<Math::Xpr::Variable> m_pX;
    Handle<Math::Xpr::Expression> m_pY;
};

void addTarget(const std::string& in_strWhat, std::size_t in_uiSize, const Race::Times& in_Times,
               Report& inout_Report) {
    const double dUnfused = in_Times.at("unfused");
    Target target;
    target.m_dMust = 1.15 * dUnfused + 7.0 * NODES;
    target.m_dAim = 1.15 * dUnfused + 3.0 * NODES;
    std::string strRule = "1.15 x unfused + 7 (aim: 3) ns a node";
    if (in_uiSize == 4096) {
        target.m_dAim = std::min(target.m_dAim, 0.8 * dUnfused);
        strRule += "; aim: 0.8 x unfused";
    }
    inout_Report.addTarget(in_strWhat, "ns", in_Times.at("library"), target, strRule);
}

} // namespace

void measureElements(Report& inout_Report, Effort /*in_eEffort*/) {
    for (const Ending eEnding : {Ending::Divide, Ending::Multiply}) {
        for (const std::size_t uiSize : FRAME_SIZES) {
            const std::string strWhat = std::string(eEnding == Ending::Divide ? "W1" : "W1m") +
                                        ", N = " + std::to_string(uiSize);
            Elements elements(eEnding, uiSize);
            elements.check();
            const Race::Times times = elements.race();
            inout_Report.addTimes(strWhat, times);
            if (uiSize >= 160) {
                addTarget(strWhat, uiSize, times, inout_Report);
            }
        }
    }
}

} // namespace Velmora::Benchmarks
