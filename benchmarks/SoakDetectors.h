#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Evaluator.h>

namespace Velmora::Benchmarks {

/// The detectors of the examples in one evaluator, as a host runs them on a line: frames of 20 ms,
/// which the decoder of keys gets every 10 ms and all others every 20 ms.
class SoakDetectors {
public:
    /// Samples from one step to the next.
    static constexpr std::size_t Hop = 80;

    /// Throws `WrongResult` if a script doesn't load.
    SoakDetectors();

    /// Takes the samples of the next 10 ms and computes what is due. Throws `WrongResult` where a
    /// feature has no value.
    void step(const short* in_pSamples);

    /// As if nothing had been heard so far.
    void reset();

    /// A number that every bit of every value since the last call has a part in.
    std::uint64_t takeDigest();

    /// On how many of its frames so far each feature wasn't zero, as a line to print.
    std::string describeActivity() const;

private:
    struct Feature {
        std::string m_strName;
        Handle<Math::Xpr::Expression> m_pExpression;
        std::uint64_t m_uiActive = 0;
    };
    struct Detector {
        Handle<Math::Xpr::Variable> m_pFrame;
        std::size_t m_uiEverySteps = 0;
        std::vector<Feature> m_vFeatures;
    };

    void restart();

    Math::Xpr::Evaluator m_Evaluator;
    std::vector<Detector> m_vDetectors;
    Math::DoubleVector m_vFrame;
    std::uint64_t m_uiSteps = 0;
    std::uint64_t m_uiDigest = 0;
};

} // namespace Velmora::Benchmarks
