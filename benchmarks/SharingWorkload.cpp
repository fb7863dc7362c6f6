#include <string>
#include <vector>

#include "Frames.h"
#include "Host.h"
#include "References.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

/// Every feature written out in full: what they have in common is for the optimizer to find.
std::string toScript() {
    std::string strScript = "inputvar x\n";
    for (std::size_t i = 1; i <= SHARING_FEATURES; ++i) {
        const std::string strNumber = std::to_string(i);
        strScript += "f" + strNumber + " = sum(x*2 + x) * " + strNumber + "\n";
    }
    return strScript;
}

/// A host that asks for all features of each frame.
class Features {
public:
    explicit Features(Graph in_eGraph) : m_Host(toScript(), in_eGraph), m_pX(m_Host.getInput("x")) {
        for (std::size_t i = 1; i <= SHARING_FEATURES; ++i) {
            m_vFeatures.push_back(m_Host.getFeature("f" + std::to_string(i)));
        }
    }

    void compute(const Math::DoubleVector& in_vX) {
        m_pX->setValue(in_vX);
        for (const Handle<Math::Xpr::Expression>& pFeature : m_vFeatures) {
            benchmark::DoNotOptimize(evaluate(*pFeature));
        }
    }

    SharedFeatures get() {
        SharedFeatures features{};
        for (std::size_t i = 0; i != SHARING_FEATURES; ++i) {
            const Math::DoubleVector& vValue = evaluateOrThrow(*m_vFeatures[i]);
            if (vValue.size() != 1) {
                throw WrongResult("sharing: wrong size");
            }
            features[i] = vValue[0];
        }
        return features;
    }

private:
    Host m_Host;
    Handle<Math::Xpr::Variable> m_pX;
    std::vector<Handle<Math::Xpr::Expression>> m_vFeatures;
};

class Sharing {
public:
    explicit Sharing(std::size_t in_uiSize) : m_Frames(in_uiSize) {}

    void check() {
        for (std::size_t uiFrame = 0; uiFrame != 2 * Frames::COUNT; ++uiFrame) {
            m_Shared.compute(m_Frames.get(uiFrame));
            m_Unshared.compute(m_Frames.get(uiFrame));
            const SharedFeatures features = m_Shared.get();
            checkSame("sharing", features.data(), m_Unshared.get().data(), features.size());
            unfused(uiFrame);
            checkClose("sharing, unfused", features.data(), m_Features.data(), features.size(),
                       1e-10);
            fused(uiFrame);
            checkClose("sharing, fused", features.data(), m_Features.data(), features.size(),
                       1e-10);
        }
    }

    Race::Times race() {
        Race race;
        race.add("library",
                 [this](std::size_t in_uiFrame) { m_Shared.compute(m_Frames.get(in_uiFrame)); });
        race.add("library, unshared",
                 [this](std::size_t in_uiFrame) { m_Unshared.compute(m_Frames.get(in_uiFrame)); });
        race.addReference("unfused", [this](std::size_t in_uiFrame) { unfused(in_uiFrame); });
        race.addReference("fused", [this](std::size_t in_uiFrame) { fused(in_uiFrame); });
        return race.run();
    }

private:
    void unfused(std::size_t in_uiFrame) {
        computeSharedUnfused(m_Frames.getCopy(in_uiFrame), m_Frames.size(),
                             {m_Frames.getTemporary(0), m_Frames.getTemporary(1)}, m_Features);
        benchmark::DoNotOptimize(m_Features);
    }

    void fused(std::size_t in_uiFrame) {
        computeSharedFused(m_Frames.getCopy(in_uiFrame), m_Frames.size(), m_Features);
        benchmark::DoNotOptimize(m_Features);
    }

    Frames m_Frames;
    Features m_Shared{Graph::Optimized};
    Features m_Unshared{Graph::Linked};
    SharedFeatures m_Features{};
};

} // namespace

void measureSharing(Report& inout_Report, Effort /*in_eEffort*/) {
    for (const std::size_t uiSize : FRAME_SIZES) {
        const std::string strWhat = "W3, N = " + std::to_string(uiSize);
        Sharing sharing(uiSize);
        sharing.check();
        const Race::Times times = sharing.race();
        inout_Report.addTimes(strWhat, times);
        if (uiSize == 160) {
            const double dShared = times.at("library");
            inout_Report.addTarget(strWhat, "ns", dShared, {350.0, 120.0}, "all 32 features");
            inout_Report.addTarget(strWhat + ", unshared over shared", "",
                                   times.at("library, unshared") / dShared, {8.0, 8.0, true}, "");
        }
    }
}

} // namespace Velmora::Benchmarks
