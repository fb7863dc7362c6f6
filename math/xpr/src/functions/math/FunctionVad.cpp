#include <limits>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.functions.vad");

namespace {

/// The weight that applies where the signal's own dynamic range gives none, by sensitivity.
constexpr double DefaultLamda[] = {0.999, 0.98675, 0.9745, 0.96225, 0.95};

/// The energy of a level, in whole decades. A level beyond the integers counts as the last of them,
/// whose energy is 0 as well.
double energyOfLevel(float in_fLevel) {
    constexpr int iLowest = std::numeric_limits<int>::min();
    const int iLevel =
        in_fLevel <= static_cast<float>(iLowest) ? iLowest : static_cast<int>(in_fLevel);
    const int iDecades = iLevel / 10;
    double dPower = 1.0;
    double dSquare = 10.0;
    for (int iLeft = -iDecades; iLeft != 0; iLeft /= 2) {
        if (iLeft % 2 != 0) {
            dPower *= dSquare;
        }
        dSquare *= dSquare;
    }
    return 1.0 / dPower;
}

} // namespace

/// The voice activity detector: an adaptive threshold between the running extremes of the energy.
///
/// It keeps its memory in copies as well, so a clone decides the next frame as its source would.
class FunctionVad : public SingleVariableFunctionImpl, public NoMemoryFunctionImpl {
public:
    FunctionVad() : SingleVariableFunctionImpl("vad", "x") {}

    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back("minimumEnergyDBm");
        out.push_back("sensitivity");
    }

    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        int iSensitivity = 0;
        if (!in_Configuration.getIntParameter("sensitivity", iSensitivity)) {
            VELMORA_LOG_ERROR(fileLogger(),
                              "Could not find parameter sensitivity in configuration");
            return false;
        }
        if (iSensitivity < 0 || iSensitivity > 4) {
            VELMORA_LOG_ERROR(fileLogger(), "Invalid value in parameter sensitivity"
                                            "This parameter must be in range [0,1,2,3,4]");
            return false;
        }
        m_uiSensitivity = static_cast<unsigned int>(iSensitivity);
        float fMinimumEnergy = 0.0F;
        if (!in_Configuration.getFloatParameter("minimumEnergyDBm", fMinimumEnergy)) {
            VELMORA_LOG_ERROR(fileLogger(),
                              "Could not find parameter minimumEnergyDBm in configuration");
            return false;
        }
        // Written so that a NaN, which is no level, is refused as well.
        if (!(fMinimumEnergy < 0.0F)) {
            VELMORA_LOG_ERROR(fileLogger(), "Invalid value in parameter minimumEnergyDBm"
                                            "This parameter must be negative specified in dbov.");
            return false;
        }
        m_dMinimumEnergy = energyOfLevel(fMinimumEnergy);
        m_dInitialDelta = 1.0;
        m_bConfigured = true;
        return reset();
    }

    bool reset() override {
        m_bFirstFrame = true;
        m_dEnergyMaxDecay = 0.996;
        m_dDelta = m_dPreviousDelta = m_dInitialDelta;
        m_dEnergyMin = m_dPreviousEnergyMin = m_dMinimumEnergy;
        return true;
    }

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        VELMORA_TRACE_SCOPE(fileLogger(), "FunctionVad::calculate");
        const DoubleVector* const pInput = firstArgument(in_ArgNameToDomain);
        if (pInput == nullptr) {
            return false;
        }
        if (!m_bConfigured) {
            VELMORA_LOG_ERROR(
                fileLogger(),
                "Function is not configured! Please call configure() prior to calculate()");
            return false;
        }
        double dCurrentEnergy = 0.0;
        if (!pInput->average(dCurrentEnergy)) {
            VELMORA_ASSERT_FAIL_L(fileLogger(), "ite->second->average(dCurrentEnergy)");
            return false;
        }
        moveExtremes(dCurrentEnergy);
        moveThreshold();
        out.push_back(decide(dCurrentEnergy) ? 1.0 : 0.0);
        prepareNextFrame();
        return true;
    }

private:
    void moveExtremes(double in_dEnergy) {
        if (m_bFirstFrame) {
            m_dEnergyMax = in_dEnergy;
            m_dEnergyMin = m_dPreviousEnergyMin = m_dMinimumEnergy;
        }
        m_dPreviousDelta = m_dDelta;
        if (!(in_dEnergy > 0.0)) {
            m_dEnergyMin = m_dMinimumEnergy;
            m_dDelta = m_dInitialDelta;
            return;
        }
        if (in_dEnergy > m_dEnergyMax) {
            m_dEnergyMax = in_dEnergy;
            m_dDelta = m_dInitialDelta;
        } else {
            m_dEnergyMax *= m_dEnergyMaxDecay;
            if (m_dEnergyMin > in_dEnergy) {
                m_dDelta = m_dInitialDelta;
                m_dEnergyMin = in_dEnergy;
            } else {
                m_dDelta = m_dInitialDelta * 1.0001;
            }
        }
        if (m_dEnergyMin > m_dEnergyMax) {
            m_dEnergyMin = m_dMinimumEnergy;
        }
    }

    /// The wider the range of the recent signal, the nearer the threshold lies to its minimum.
    void moveThreshold() {
        m_dLamda = m_dEnergyMax == 0.0 ? DefaultLamda[m_uiSensitivity]
                                       : (m_dEnergyMax - m_dEnergyMin) / m_dEnergyMax;
        if (!(1.0 > m_dLamda)) {
            VELMORA_ASSERT_FAIL_L(fileLogger(), "m_dLamda < 1.0");
        }
        if (m_dLamda > 0.999 || 0.95 > m_dLamda) {
            m_dLamda = DefaultLamda[m_uiSensitivity];
        }
        m_dThreshold = (1.0 - m_dLamda) * m_dEnergyMax + m_dLamda * m_dEnergyMin;
    }

    bool decide(double in_dEnergy) const {
        const bool bVoice = in_dEnergy > m_dThreshold;
        VELMORA_LOG_DEBUG(fileLogger(), "FunctionVad::calculate"
                                            << " : "
                                            << "Marking frame with Energy " << in_dEnergy << " as "
                                            << (bVoice ? "voice" : "silence")
                                            << " since treshhold is currently " << m_dThreshold);
        return bVoice;
    }

    void prepareNextFrame() {
        const double dEnergyMin = m_dEnergyMin;
        m_dEnergyMin = m_dPreviousEnergyMin * m_dDelta;
        m_dPreviousEnergyMin = dEnergyMin;
        m_bFirstFrame = false;
    }

    bool m_bFirstFrame = true;
    double m_dInitialDelta = 1.0;
    double m_dDelta = 1.0;
    /// For the debugger: nothing reads it.
    double m_dPreviousDelta = 1.0;
    double m_dMinimumEnergy = 0.0;
    double m_dEnergyMin = 0.0;
    double m_dPreviousEnergyMin = 0.0;
    double m_dEnergyMax = 0.0;
    double m_dLamda = 0.0;
    double m_dThreshold = 0.0;
    unsigned int m_uiSensitivity = 0;
    double m_dEnergyMaxDecay = 0.996;
    bool m_bConfigured = false;
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionVad>::registerIn(
    Registry::getInstance(),
    "1 if the frame's mean energy is that of voice, otherwise 0, one value");

} // namespace Velmora::Math::Xpr
