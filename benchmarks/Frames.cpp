#include "Frames.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

#include "Host.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t LINE = 64 / sizeof(double);

/// Lines between two pieces, so that pieces of whole pages don't begin at the same place of a page.
constexpr std::size_t GAP = 5 * LINE;

[[noreturn]] void fail(const std::string& in_strWhat, std::size_t in_uiIndex, double in_dMeasured,
                       double in_dExpected) {
    std::ostringstream message;
    message.precision(17);
    message << in_strWhat << ": element " << in_uiIndex << " is " << in_dMeasured << ", and not "
            << in_dExpected;
    throw WrongResult(message.str());
}

} // namespace

ReferenceMemory::ReferenceMemory(std::size_t in_uiPieces, std::size_t in_uiSize)
    : m_uiStride((in_uiSize + LINE - 1) / LINE * LINE + GAP),
      m_vMemory(in_uiPieces * m_uiStride + LINE) {
    const auto uiAddress = reinterpret_cast<std::uintptr_t>(m_vMemory.data());
    const std::size_t uiBehindLine = uiAddress / sizeof(double) % LINE;
    m_pFirst = m_vMemory.data() + (LINE - uiBehindLine) % LINE;
}

Frames::Frames(std::size_t in_uiSize, std::uint64_t in_uiSeed)
    : m_uiSize(in_uiSize), m_vFrames(COUNT), m_Memory(COUNT + TEMPORARIES, in_uiSize) {
    Numbers numbers(in_uiSeed);
    for (std::size_t uiFrame = 0; uiFrame != COUNT; ++uiFrame) {
        Math::DoubleVector& vFrame = m_vFrames[uiFrame];
        vFrame.resize(in_uiSize);
        for (double& dValue : vFrame) {
            dValue = numbers.between(-1.0, 1.0);
        }
        std::copy(vFrame.begin(), vFrame.end(), m_Memory[uiFrame]);
    }
}

void checkSame(const std::string& in_strWhat, const double* in_pMeasured,
               const double* in_pExpected, std::size_t in_uiCount) {
    for (std::size_t i = 0; i != in_uiCount; ++i) {
        if (!(in_pMeasured[i] == in_pExpected[i]) ||
            std::signbit(in_pMeasured[i]) != std::signbit(in_pExpected[i])) {
            fail(in_strWhat, i, in_pMeasured[i], in_pExpected[i]);
        }
    }
}

void checkClose(const std::string& in_strWhat, const double* in_pMeasured,
                const double* in_pExpected, std::size_t in_uiCount, double in_dShare) {
    for (std::size_t i = 0; i != in_uiCount; ++i) {
        const double dBound =
            in_dShare * std::max(std::fabs(in_pMeasured[i]), std::fabs(in_pExpected[i]));
        if (!(std::fabs(in_pMeasured[i] - in_pExpected[i]) <= dBound)) {
            fail(in_strWhat, i, in_pMeasured[i], in_pExpected[i]);
        }
    }
}

} // namespace Velmora::Benchmarks
