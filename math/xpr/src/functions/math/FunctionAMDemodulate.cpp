#include <cstddef>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/DemodulatorAM.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "NumberParameter.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.functions.amDemodulate");

class FunctionAMDemodulate : public SingleVariableFunctionImpl, public NoMemoryFunctionImpl {
public:
    FunctionAMDemodulate() : SingleVariableFunctionImpl("amDemodulate", "x") {}

    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back("sampleRate");
        out.push_back("freq");
    }

    /// A frequency that is missing or of the wrong kind leaves the function as it was, without
    /// failing: `calculate` tells of it.
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        int iSampleRate = 0;
        if (!in_Configuration.getIntParameter("sampleRate", iSampleRate)) {
            VELMORA_LOG_ERROR(fileLogger(), "Could not find parameter sampleRate in configuration "
                                            "of function amDemodulate");
            return false;
        }
        if (iSampleRate <= 0) {
            VELMORA_LOG_ERROR(fileLogger(), "Invalid value in parameter sampleRate");
            return false;
        }
        m_uiSampleRate = static_cast<std::size_t>(iSampleRate);
        if (!in_Configuration.parameterDefined("freq")) {
            VELMORA_LOG_DEBUG(
                fileLogger(),
                "Could not find parameter freq in configuration of function amDemodulate");
            return true;
        }
        double dFrequency = 0.0;
        if (!readNumber(in_Configuration, "freq", dFrequency)) {
            VELMORA_LOG_ERROR(fileLogger(),
                              "Parameter 'freq' must be either an INTEGER or a FLOAT number");
            return true;
        }
        if (dFrequency > static_cast<double>(m_uiSampleRate >> 1)) {
            VELMORA_LOG_ERROR(fileLogger(), "Frequency is too high for given sample rate for "
                                            "function amDemodulate");
            return false;
        }
        m_dFrequency = dFrequency;
        if (!m_Demodulator.configure(m_uiSampleRate, m_dFrequency)) {
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
        out.resize(pInput->size());
        static_cast<void>(
            m_Demodulator.compute(pInput->begin(), pInput->end(), out.begin(), out.end()));
        return true;
    }

private:
    double m_dFrequency = 0.0;
    std::size_t m_uiSampleRate = 0;
    DemodulatorAM m_Demodulator;
    bool m_bConfigured = false;
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionAMDemodulate>::registerIn(
        Registry::getInstance(), "the envelope of the carrier, a value for each sample");

} // namespace Velmora::Math::Xpr
