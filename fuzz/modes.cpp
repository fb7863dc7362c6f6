// The same bits in every mode: plain, optimised, and in clones of both.
//
// An input that starts with a letter, a slash, a "#" or a line end is a script, then a zero byte,
// then what steers the frames. Any other makes the choices of a script that can't fail.
//
// Wanted differences are kept out. Made scripts hold none. Any script may fail, which a sealed
// operator doesn't report, and a function with memory may be merged with one that stands in a
// branch: scripts in which either can be are compared with their clones only.

#include <cctype>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <velmora/math/xpr/Evaluator.h>

#include "fuzz/support/Input.h"
#include "fuzz/support/Result.h"
#include "fuzz/support/ScriptHost.h"
#include "fuzz/support/Target.h"
#include "tests/math/xpr/RandomScript.h"

using namespace Velmora;
using namespace Velmora::Fuzz;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

namespace {

constexpr std::size_t FrameCount = 6;
constexpr std::size_t MiddleFrame = 3;

/// Counts what is logged at ERROR level.
class ErrorCounter : public log4cplus::Appender {
public:
    ErrorCounter() {
        log4cplus::Logger root = log4cplus::Logger::getRoot();
        if (root.getLogLevel() == log4cplus::OFF_LOG_LEVEL) {
            root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
        }
        root.addAppender(log4cplus::SharedAppenderPtr(this));
    }
    ~ErrorCounter() override { destructorImpl(); }
    void close() override {}

    /// The root's appenders own it.
    static ErrorCounter& get() {
        static auto* const s_pCounter = new ErrorCounter;
        return *s_pCounter;
    }

    std::size_t getCount() const { return m_uiCount; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& in_Event) override {
        m_uiCount += in_Event.getLogLevel() >= log4cplus::ERROR_LOG_LEVEL ? 1 : 0;
    }

private:
    std::size_t m_uiCount = 0;
};

using Frame = std::vector<DoubleVector>; ///< a vector for each input
using Results = std::vector<Result>;     ///< of each expression, frame by frame

/// An evaluator of the script "s" and what it has given so far.
class Mode {
public:
    Mode(const std::string& in_strText, const ScriptNames& in_Names, bool in_bOptimize)
        : m_Names(in_Names), m_pEvaluator(std::make_unique<Evaluator>()) {
        std::istringstream stream(in_strText);
        m_bReady = configure(*m_pEvaluator, TSHandle<VirtualFileSystem>()) &&
                   m_pEvaluator->addScript(stream, "s") && m_pEvaluator->link(in_bOptimize);
        if (m_bReady) {
            m_pEvaluator->reconfigureExpressions();
            findNodes();
        }
    }

    bool isReady() const { return m_bReady; }

    /// A copy of the evaluator as it stands, which has given the same so far.
    std::unique_ptr<Mode> clone() const { return std::unique_ptr<Mode>(new Mode(*this)); }

    /// Takes the frames from one number up to but without another.
    void run(const std::vector<Frame>& in_vFrames, std::size_t in_uiFirst, std::size_t in_uiLast) {
        for (std::size_t ui = in_uiFirst; ui != in_uiLast; ++ui) {
            for (std::size_t uiInput = 0; uiInput != m_vInputs.size(); ++uiInput) {
                m_vInputs[uiInput]->setValue(in_vFrames[ui][uiInput]);
            }
            for (const Handle<Expression>& pExpression : m_vExpressions) {
                m_vResults.push_back(Result::of(*pExpression));
            }
        }
    }

    void reset() {
        for (const Handle<Expression>& pExpression : m_vExpressions) {
            pExpression->reset();
        }
        m_vResults.clear();
    }

    const Results& getResults() const { return m_vResults; }

private:
    Mode(const Mode& in_Other)
        : m_Names(in_Other.m_Names),
          m_pEvaluator(std::make_unique<Evaluator>(*in_Other.m_pEvaluator)),
          m_vResults(in_Other.m_vResults),
          m_bReady(in_Other.m_bReady) {
        findNodes();
    }

    void findNodes() {
        for (const std::string& strName : m_Names.m_vInputs) {
            m_vInputs.push_back(m_pEvaluator->getVariable(strName.c_str()));
            check(!m_vInputs.back().isNull(), "an input can be asked for");
        }
        for (const std::string& strName : m_Names.m_vExpressions) {
            // A function of a name that has been taken isn't there.
            Handle<Expression> pExpression = m_pEvaluator->getExpression(strName.c_str());
            if (!pExpression.isNull()) {
                m_vExpressions.push_back(pExpression);
            }
        }
    }

    const ScriptNames& m_Names;
    std::unique_ptr<Evaluator> m_pEvaluator;
    std::vector<Handle<Variable>> m_vInputs;
    std::vector<Handle<Expression>> m_vExpressions;
    Results m_vResults;
    bool m_bReady = false;
};

struct Script {
    std::string m_strText;
    bool m_bMade = false; ///< with no wanted difference between any two modes
    ScriptNames m_Names;
};

Script takeScript(Input& inout_Input) {
    Script script;
    const auto uiFirst = inout_Input.peekByte();
    script.m_bMade =
        std::isalpha(uiFirst) == 0 && uiFirst != '/' && uiFirst != '#' && uiFirst != '\n';
    if (script.m_bMade) {
        inout_Input.takeByte();
        const RandomScript made([&inout_Input] { return inout_Input.takeByte(); });
        script.m_strText = RandomScript::join(made.getLines());
        script.m_Names = ScriptNames(script.m_strText, "s");
        // A function that waits for its callers has nothing to compute from.
        script.m_Names.m_vExpressions.clear();
        for (const std::string& strFeature : made.getFeatures()) {
            script.m_Names.m_vExpressions.push_back("s." + strFeature);
        }
    } else {
        script.m_strText = inout_Input.takeText();
        script.m_Names = ScriptNames(script.m_strText, "s");
    }
    return script;
}

std::vector<Frame> takeFrames(Input& inout_Input, const Script& in_Script,
                              std::size_t in_uiInputs) {
    std::vector<Frame> vFrames(FrameCount);
    for (std::size_t ui = 0; ui != FrameCount; ++ui) {
        for (std::size_t uiInput = 0; uiInput != in_uiInputs; ++uiInput) {
            DoubleVector vValue = inout_Input.takeFrame();
            if (in_Script.m_bMade) {
                // Of the size that such a script expects, and changing.
                vValue.resize(uiInput == 2 ? 1 : RandomScript::FrameSize);
                for (std::size_t uiElement = 0; uiElement != vValue.size(); ++uiElement) {
                    vValue[uiElement] = inout_Input.takeNumber();
                }
            }
            vFrames[ui].push_back(vValue);
        }
    }
    return vFrames;
}

/// Whether a call that fails without a word, or that remembers, may be in the text.
bool mayDiffer(const std::string& in_strText) {
    for (const char* szName : {"min", "max", "Max", "averagePower", "energy", "delta", "Window",
                               "Delay", "debounce", "vad", "Demodulate", "Correlate", "central"}) {
        if (in_strText.find(szName) != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// Runs the mode and clones of it: from the first frame, from the middle, and after a reset.
void compareClones(Mode& inout_Mode, const std::vector<Frame>& in_vFrames, bool in_bMade) {
    const std::unique_ptr<Mode> pFirst = inout_Mode.clone();
    inout_Mode.run(in_vFrames, 0, MiddleFrame);
    const std::unique_ptr<Mode> pMiddle = inout_Mode.clone();
    pFirst->run(in_vFrames, 0, FrameCount);
    inout_Mode.run(in_vFrames, MiddleFrame, FrameCount);
    check(pFirst->getResults() == inout_Mode.getResults(), "a clone gives the bits of its source");
    if (!in_bMade) {
        return;
    }
    pMiddle->run(in_vFrames, MiddleFrame, FrameCount);
    check(pMiddle->getResults() == inout_Mode.getResults(), "a clone goes on where its source was");
    pMiddle->reset();
    pMiddle->run(in_vFrames, 0, FrameCount);
    check(pMiddle->getResults() == inout_Mode.getResults(), "a reset forgets all frames");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    ErrorCounter& errors = ErrorCounter::get();
    Input input(in_pData, in_uiSize);
    const Script script = takeScript(input);
    const std::vector<Frame> vFrames = takeFrames(input, script, script.m_Names.m_vInputs.size());
    const std::size_t uiErrors = errors.getCount();

    Mode plain(script.m_strText, script.m_Names, false);
    Mode optimised(script.m_strText, script.m_Names, true);
    check(plain.isReady() == optimised.isReady(), "what can be linked can be optimised");
    check(plain.isReady() || !script.m_bMade, "a script that was made can be linked");
    if (!plain.isReady()) {
        return 0;
    }
    compareClones(plain, vFrames, script.m_bMade);
    compareClones(optimised, vFrames, script.m_bMade);
    if (script.m_bMade || (errors.getCount() == uiErrors && !mayDiffer(script.m_strText))) {
        check(plain.getResults() == optimised.getResults(), "optimising doesn't change a bit");
    }
    return 0;
}
