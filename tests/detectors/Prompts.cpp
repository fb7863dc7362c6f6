#include "Prompts.h"

#include <fstream>
#include <stdexcept>

#include <recordings/SoundFile.h>

namespace Velmora::Testing {

using Recordings::Signal;

namespace {

const std::string Sources = VELMORA_SOURCE_DIR;
const std::string Folder = Sources + "/tests/recordings/";

std::vector<Label> readLabels(const std::string& in_strPath) {
    std::ifstream file(in_strPath);
    std::vector<Label> vLabels;
    Label label;
    for (std::string strWord; file >> label.m_dStart >> label.m_dEnd >> strWord;) {
        label.m_bSpeech = strWord == "speech";
        if (label.m_dEnd <= label.m_dStart || (!label.m_bSpeech && strWord != "silence")) {
            throw std::runtime_error(in_strPath + ": not a label");
        }
        vLabels.push_back(label);
    }
    if (!file.eof() || vLabels.empty()) {
        throw std::runtime_error(in_strPath + ": not a label");
    }
    return vLabels;
}

Prompt readPrompt(const std::string& in_strName, const std::string& in_strSound) {
    return {in_strName, Recordings::readSound(in_strSound),
            readLabels(Folder + in_strName + ".labels")};
}

} // namespace

double Prompt::speechPower() const {
    const std::vector<double>& vSamples = m_Signal.samples();
    Signal speech;
    for (const Label& label : m_vLabels) {
        if (label.m_bSpeech) {
            const auto iFirst = static_cast<std::ptrdiff_t>(Signal::countSamples(label.m_dStart));
            const auto iLast = static_cast<std::ptrdiff_t>(Signal::countSamples(label.m_dEnd));
            speech.addSamples({vSamples.begin() + iFirst, vSamples.begin() + iLast});
        }
    }
    return speech.power();
}

const std::vector<Prompt>& listPrompts() {
    static const std::vector<Prompt> prompts = [] {
        std::vector<Prompt> vPrompts{readPrompt("prompt", Sources + "/examples/audio/prompt.wav")};
        for (const std::string strName :
             {"english", "french", "italian", "italian-busy", "russian"}) {
            vPrompts.push_back(readPrompt(strName, Folder + strName + ".flac"));
        }
        return vPrompts;
    }();
    return prompts;
}

Signal joinPrompts() {
    Signal signal;
    for (const Prompt& prompt : listPrompts()) {
        signal.addSamples(prompt.m_Signal.samples());
    }
    return signal;
}

} // namespace Velmora::Testing
