#pragma once

#include <string>
#include <vector>

#include <velmora/math/xpr/Evaluator.h>

#include <recordings/Signal.h>

namespace Velmora::Testing {

/// How a recording is cut into frames, in samples.
struct Framing {
    std::size_t m_uiSize = 160;
    std::size_t m_uiHop = 160;
};

/// One of the example scripts at work on recordings, in an evaluator that shares and seals as a
/// host's does.
class Detector {
public:
    /// Loads examples/scripts/NAME.xpr; the test fails if that can't be done.
    Detector(const std::string& in_strName, const std::vector<std::string>& in_vFeatures,
             const Framing& in_Framing = Framing());

    /// A value of each feature, in their order.
    using Row = std::vector<std::vector<double>>;

    /// Every feature on each frame, as if the recording were the first. The samples are rounded to
    /// 16 bits, as a file would hold them. A frame on which a feature has no value fails the test.
    std::vector<Row> run(const Recordings::Signal& in_Signal);

    /// The first element of the first feature on each frame.
    std::vector<double> runOne(const Recordings::Signal& in_Signal);

private:
    Row evaluate();

    Math::Xpr::Evaluator m_Evaluator;
    Handle<Math::Xpr::Variable> m_pFrame;
    std::vector<Handle<Math::Xpr::Expression>> m_vFeatures;
    Framing m_Framing;
};

} // namespace Velmora::Testing
