#pragma once

namespace Vxpr {

/// Lets whoever watches a sound from a pipe end it: the first signal such as that of Ctrl-C reads
/// as the sound's end, so that nothing is lost of what has come. The next one takes its usual
/// course.
///
/// One lives at a time.
class LiveEnd {
public:
    /// in_iFile is what the sound is read from; negative if signals shall take their usual course.
    explicit LiveEnd(int in_iFile);
    ~LiveEnd();
    LiveEnd(const LiveEnd&) = delete;
    LiveEnd& operator=(const LiveEnd&) = delete;

    /// Whether a signal has come.
    bool hasCome() const;

    /// Lets the signal take its usual course, if one has come.
    void goOn() const;
};

} // namespace Vxpr
