#pragma once

#include <cstddef>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The failures of the evaluation that runs on this thread, so that it comes to an end.
///
/// A node that fails isn't valid and is tried again for each of its readers. Where every definition
/// uses the one before twice, and none has a value yet, that would double with each of them. So
/// beyond a number of failures a node fails once more and isn't tried again: what it reads can't
/// have changed.
class FailedTries {
public:
    /// The failures of one evaluation up to which every reader has a try of its own.
    static constexpr std::size_t MaxForEachReader = 1024;

    /// Goes on as long as a node is evaluated; the outermost one starts anew.
    class Evaluation {
    public:
        Evaluation();
        ~Evaluation();
        Evaluation(const Evaluation&) = delete;
        Evaluation& operator=(const Evaluation&) = delete;
    };

    /// The node has failed.
    static void note(ExpressionBaseImpl& inout_Node);

    /// Would another try be one too many?
    static bool isUseless(const ExpressionBaseImpl& in_Node);
};

} // namespace Velmora::Math::Xpr
