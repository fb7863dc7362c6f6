#include <cmath>
#include <cstddef>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.functions.centralFrequency");

/// The centroid of the three bins around a peak, at a fixed bin width.
class FunctionCentralFrequency : public NoMemoryFunctionImpl, public NoParamFunctionImpl {
public:
    // The digits keep the names sorted in the order of the arguments.
    FunctionCentralFrequency() : m_vArgumentNames{"1indexOfPeak", "2spectrum"} {}

    const char* getFunctionName() const override { return "centralFrequency"; }

    void getArgumentNames(std::vector<std::string>& out) override {
        out.insert(out.end(), m_vArgumentNames.begin(), m_vArgumentNames.end());
    }

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        if (in_ArgNameToDomain.size() != m_vArgumentNames.size()) {
            return false;
        }
        const DoubleVector& indexOfPeak = *in_ArgNameToDomain.begin()->second;
        const DoubleVector& spectrum = *in_ArgNameToDomain.rbegin()->second;
        std::size_t k = 0;
        if (!findPeak(indexOfPeak, spectrum.size(), k)) {
            return false;
        }
        const double f0 = static_cast<double>(2 * k - 1) * BinWidth * 0.5;
        const double f1 = f0 + BinWidth;
        const double f2 = f1 + BinWidth;
        out.push_back((f1 * spectrum[k] + f0 * spectrum[k - 1] + f2 * spectrum[k + 1]) /
                      (spectrum[k] + spectrum[k - 1] + spectrum[k + 1]));
        return true;
    }

private:
    /// In Hz.
    static constexpr double BinWidth = 15.625;

    /// The bin nearest to the index, if it has a neighbour on both sides. Compared as a double:
    /// only a number in range has a defined conversion.
    static bool findPeak(const DoubleVector& in_vIndexOfPeak, std::size_t in_uiBins,
                         std::size_t& out_uiPeak) {
        if (in_vIndexOfPeak.empty()) {
            VELMORA_LOG_ERROR(fileLogger(), "Can't compute the central frequency: the index of the "
                                            "peak is empty, the spectrum has "
                                                << in_uiBins << " bins.");
            return false;
        }
        const double dPeak = std::floor(in_vIndexOfPeak[0] + 0.5);
        if (in_uiBins >= 3 && dPeak >= 1.0 && dPeak <= static_cast<double>(in_uiBins - 2)) {
            out_uiPeak = static_cast<std::size_t>(dPeak);
            return true;
        }
        VELMORA_LOG_ERROR(fileLogger(), "Can't compute the central frequency: the peak at index "
                                            << in_vIndexOfPeak[0]
                                            << " has no neighbour on both sides in a "
                                            << "spectrum of " << in_uiBins << " bins.");
        return false;
    }

    std::vector<std::string> m_vArgumentNames;
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionCentralFrequency>::registerIn(
        Registry::getInstance(),
        "the centroid of the three bins of 15.625 Hz around the peak, in Hz, one value");

} // namespace Velmora::Math::Xpr
