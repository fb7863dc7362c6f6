#pragma once

#include <string>
#include <vector>

#include <recordings/Signal.h>

namespace Velmora::Testing {

/// A stretch of a recording that was labelled by hand.
struct Label {
    double m_dStart = 0.0; ///< in seconds
    double m_dEnd = 0.0;
    bool m_bSpeech = false; ///< or silence
};

/// A recorded prompt and what is in it, as tests/recordings tells.
struct Prompt {
    std::string m_strName;
    Recordings::Signal m_Signal;
    std::vector<Label> m_vLabels;

    /// The mean power of what is labelled as speech.
    double speechPower() const;
};

/// All of them: 66 s in four voices and languages.
const std::vector<Prompt>& listPrompts();

/// All prompts, one behind the other.
Recordings::Signal joinPrompts();

} // namespace Velmora::Testing
