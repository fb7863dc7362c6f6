#pragma once

#include <memory>
#include <string>
#include <vector>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Evaluator.h>

/// What one feature gave on one frame.
struct FeatureValue {
    bool m_bSuccess = false;
    std::vector<double> m_vElements;

    /// The same bits; a NaN is equal to any other.
    bool operator==(const FeatureValue& in_Other) const;
    bool operator!=(const FeatureValue& in_Other) const { return !(*this == in_Other); }
};

/// A frame's values, in the order of the features.
using FrameValues = std::vector<FeatureValue>;

/// A script with the inputs `left`, `right` and `scalar`, and the evaluation of its features.
class ScriptRun {
public:
    /// Loads and links the script under the name "s", and configures it. `isReady` tells whether
    /// that worked.
    ScriptRun(const std::string& in_strText, const std::vector<std::string>& in_vFeatures,
              bool in_bOptimize);

    /// The same, with a copy of the evaluator as it stands.
    std::unique_ptr<ScriptRun> clone() const;

    bool isReady() const { return m_bReady; }

    /// Sets the inputs to those of the frame of that number and evaluates every feature.
    FrameValues computeFrame(std::size_t in_uiFrame);

    /// Frames from one number up to but without another.
    std::vector<FrameValues> computeFrames(std::size_t in_uiFirst, std::size_t in_uiLast);

    /// Makes every feature forget the frames before.
    bool reset();

    Velmora::Math::Xpr::Evaluator& getEvaluator() { return *m_pEvaluator; }

    /// The input vectors of a frame: the same for a number, always.
    static std::vector<Velmora::Math::DoubleVector> makeInputs(std::size_t in_uiFrame);
    static const std::vector<std::string>& getInputNames();

private:
    ScriptRun() = default;
    bool configureFeatures();

    std::unique_ptr<Velmora::Math::Xpr::Evaluator> m_pEvaluator;
    std::vector<std::string> m_vFeatures;
    std::vector<Velmora::Math::DoubleVector> m_vInputs;
    bool m_bReady = false;
};
