#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Benchmarks {

/// How often scripts are loaded, in turns.
constexpr int LOAD_REPETITIONS = 9;

/// The processor time of this thread, in milliseconds.
double getProcessorTime();

/// Times of the same thing, done several times.
class Samples {
public:
    template <class Function>
    void time(Function in_Function) {
        const double dStart = getProcessorTime();
        in_Function();
        m_vTimes.push_back(getProcessorTime() - dStart);
    }

    double getMedian() const;

private:
    std::vector<double> m_vTimes;
};

/// What the stages from text to first value take, in several loads of one script.
struct StageSamples {
    Samples m_Parse;
    Samples m_Link;
    Samples m_Optimize;
    Samples m_FirstFrame;
};

/// A script that has gone through the stages one by one, as an evaluator does it, and whose last
/// definition has had its first frame.
class LoadedScript {
public:
    /// The input is `v0`, the last definition `vN`. Throws `WrongResult` if a stage fails.
    LoadedScript(const std::string& in_strScript, std::size_t in_uiDefinitions,
                 StageSamples& inout_Samples);

    void setInput(const Math::DoubleVector& in_vInput) { m_pInput->setValue(in_vInput); }
    Math::Xpr::Expression& getLast() { return *m_pLast; }

private:
    Math::Xpr::Dictionnary m_Expressions;
    Handle<Math::Xpr::Variable> m_pInput;
    Handle<Math::Xpr::Expression> m_pLast;
    Math::DoubleVector m_vFirstInput{1.0};
};

} // namespace Velmora::Benchmarks
