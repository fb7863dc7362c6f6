#include "Input.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Velmora::Fuzz {

namespace {

using Limits = std::numeric_limits<double>;

constexpr std::array<double, 32> Numbers{0.0,
                                         1.0,
                                         -1.0,
                                         2.0,
                                         0.5,
                                         -0.0,
                                         Limits::quiet_NaN(),
                                         Limits::infinity(),
                                         -Limits::infinity(),
                                         Limits::denorm_min(),
                                         -Limits::denorm_min(),
                                         Limits::min(),
                                         -Limits::min(),
                                         Limits::max(),
                                         Limits::lowest(),
                                         Limits::epsilon(),
                                         Limits::signaling_NaN(),
                                         0.1,
                                         3.0,
                                         7.0,
                                         100.0,
                                         -1e-300,
                                         1e300,
                                         2147483647.0,
                                         2147483648.0,
                                         -2147483649.0,
                                         4294967295.0,
                                         4294967296.0,
                                         9007199254740993.0,
                                         9223372036854775808.0,
                                         18446744073709551616.0,
                                         -9223372036854775809.0};

/// The value of the byte that says that the number's own bytes follow.
constexpr std::uint8_t AnyNumber = 255;

constexpr std::array<std::size_t, 8> Sizes{8, 1, 0, 2, 3, 5, 64, 257};

} // namespace

std::string Input::takeText() {
    const std::uint8_t* const pZero = std::find(m_pNext, m_pEnd, std::uint8_t(0));
    std::string strText(m_pNext, pZero);
    m_pNext = pZero == m_pEnd ? m_pEnd : pZero + 1;
    return strText;
}

std::string Input::takeRest() {
    std::string strRest(m_pNext, m_pEnd);
    m_pNext = m_pEnd;
    return strRest;
}

std::uint8_t Input::takeByte() {
    return isAtEnd() ? std::uint8_t(0) : *m_pNext++;
}

double Input::takeNumber() {
    const std::uint8_t uiKind = takeByte();
    if (uiKind != AnyNumber) {
        return Numbers[uiKind % Numbers.size()];
    }
    std::array<std::uint8_t, sizeof(double)> bytes{};
    const std::size_t uiCount = std::min(bytes.size(), getLeft());
    std::copy_n(m_pNext, uiCount, bytes.begin());
    m_pNext += uiCount;
    double dNumber = 0.0;
    std::memcpy(&dNumber, bytes.data(), sizeof dNumber);
    return dNumber;
}

Math::DoubleVector Input::takeFrame() {
    Math::DoubleVector vFrame;
    vFrame.resize(Sizes[takeBelow(Sizes.size())]);
    // A few numbers in turn, so that a short input fills a long frame.
    std::array<double, 4> period{};
    const std::size_t uiPeriod = 1 + takeBelow(period.size());
    std::generate_n(period.begin(), uiPeriod, [this] { return takeNumber(); });
    for (std::size_t ui = 0; ui != vFrame.size(); ++ui) {
        vFrame[ui] = period[ui % uiPeriod];
    }
    return vFrame;
}

} // namespace Velmora::Fuzz
