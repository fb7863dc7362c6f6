#include "Host.h"

#include <sstream>

#include <log4cplus/consoleappender.h>
#include <log4cplus/logger.h>

#include <velmora/DiskFileSystem.h>
#include <velmora/ParameterTrie.h>

namespace Velmora::Benchmarks {

namespace {

const std::string SCRIPT_NAME = "bench";

std::string qualify(const std::string& in_strName) {
    return SCRIPT_NAME + "." + in_strName;
}

} // namespace

void configureForTexts(Math::Xpr::Evaluator& out_Evaluator) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", ParameterValue("."));
    if (!out_Evaluator.configure(configuration, TSHandle<VirtualFileSystem>(new DiskFileSystem))) {
        throw WrongResult("the evaluator refuses its configuration");
    }
}

void showErrors() {
    log4cplus::SharedAppenderPtr pAppender(new log4cplus::ConsoleAppender(true, true));
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(pAppender);
    root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
}

Host::Host(const std::string& in_strScript, Graph in_eGraph) {
    configureForTexts(m_Evaluator);
    std::istringstream script(in_strScript);
    if (!m_Evaluator.addScript(script, SCRIPT_NAME.c_str()) ||
        !m_Evaluator.link(in_eGraph == Graph::Optimized) || !m_Evaluator.reconfigureExpressions()) {
        throw WrongResult("the script doesn't load:\n" + in_strScript);
    }
}

Handle<Math::Xpr::Variable> Host::getInput(const std::string& in_strName) {
    const Handle<Math::Xpr::Variable> pInput = m_Evaluator.getVariable(qualify(in_strName).c_str());
    if (pInput.isNull()) {
        throw WrongResult("no input of the name " + in_strName);
    }
    return pInput;
}

Handle<Math::Xpr::Expression> Host::getFeature(const std::string& in_strName) {
    const Handle<Math::Xpr::Expression> pFeature =
        m_Evaluator.getExpression(qualify(in_strName).c_str());
    if (pFeature.isNull()) {
        throw WrongResult("no feature of the name " + in_strName);
    }
    return pFeature;
}

const Math::DoubleVector& evaluateOrThrow(Math::Xpr::Expression& inout_Feature) {
    const Math::DoubleVector* const pValue = evaluate(inout_Feature);
    if (pValue == nullptr) {
        throw WrongResult("a feature can't be computed");
    }
    return *pValue;
}

} // namespace Velmora::Benchmarks
