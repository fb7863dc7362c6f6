#include <cstddef>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/SinusSynchronizer.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "NumberParameter.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.functions.sinusCorrelate");

class FunctionSinusCorrelate : public SingleVariableFunctionImpl, public NoMemoryFunctionImpl {
public:
    FunctionSinusCorrelate() : SingleVariableFunctionImpl("sinusCorrelate", "x") {}

    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back("sampleRate");
        out.push_back("frequency");
    }

    /// A sample rate or a frequency that is missing leaves the function as it was, without failing:
    /// `calculate` tells of it. A frequency of the wrong kind fails.
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        int iSampleRate = 0;
        if (!in_Configuration.getIntParameter("sampleRate", iSampleRate)) {
            VELMORA_LOG_INFO(fileLogger(), "Could not find parameter sampleRate in configuration "
                                           "of function sinusCorrelate");
            return true;
        }
        if (iSampleRate <= 0) {
            VELMORA_LOG_ERROR(fileLogger(), "Invalid value in parameter sampleRate");
            return false;
        }
        m_uiSampleRate = static_cast<std::size_t>(iSampleRate);
        if (!in_Configuration.parameterDefined("frequency")) {
            VELMORA_LOG_DEBUG(fileLogger(), "Could not find parameter frequency in configuration "
                                            "of function sinusCorrelate");
            return true;
        }
        double dFrequency = 0.0;
        if (!readNumber(in_Configuration, "frequency", dFrequency)) {
            VELMORA_LOG_ERROR(fileLogger(),
                              "Parameter 'frequency' must be either an INTEGER or a FLOAT number");
            return false;
        }
        if (dFrequency > static_cast<double>(m_uiSampleRate >> 1)) {
            VELMORA_LOG_ERROR(fileLogger(), "Frequency is too high for given sample rate for "
                                            "function sinusCorrelate");
            return false;
        }
        m_dFrequency = dFrequency;
        if (!m_Correlator.configure(m_uiSampleRate, m_dFrequency)) {
            return false;
        }
        m_bConfigured = true;
        return true;
    }

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pInput = findArgument(in_ArgNameToDomain);
        if (pInput == nullptr) {
            return false;
        }
        if (!m_bConfigured) {
            VELMORA_LOG_ERROR(
                fileLogger(),
                "Function is not configured! Please call configure() prior to calculate()");
            return false;
        }
        double dCorrelation = 0.0;
        static_cast<void>(m_Correlator.compute(pInput->begin(), pInput->end(), dCorrelation));
        out.push_back(dCorrelation);
        return true;
    }

    /// The tones of a detector read the frame once.
    static bool calculateTogether(FunctionSinusCorrelate* const* in_ppFunctions,
                                  std::size_t in_uiFunctions, const DoubleVector& in_vInput,
                                  DoubleVector* const* out_ppResults) {
        SinusCorrelator* correlators[MaxTogether];
        double correlations[MaxTogether];
        for (std::size_t i = 0; i < in_uiFunctions; ++i) {
            correlators[i] = &in_ppFunctions[i]->m_Correlator;
        }
        if (!SinusCorrelator::computeTogether(correlators, in_uiFunctions, in_vInput.begin(),
                                              in_vInput.end(), correlations)) {
            return false;
        }
        for (std::size_t i = 0; i < in_uiFunctions; ++i) {
            out_ppResults[i]->clear();
            out_ppResults[i]->push_back(correlations[i]);
        }
        return true;
    }

private:
    double m_dFrequency = 0.0;
    std::size_t m_uiSampleRate = 0;
    SinusSynchronizer m_Correlator;
    bool m_bConfigured = false;
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionSinusCorrelate>::registerIn(
        Registry::getInstance(),
        "how much of the frame is a sinusoid of the frequency, from 0 to 1, one value");

} // namespace Velmora::Math::Xpr
