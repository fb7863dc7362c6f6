#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <velmora/math/DoubleVector.h>

namespace Velmora::Benchmarks {

/// The sizes at which the workloads over whole frames are measured.
constexpr std::size_t FRAME_SIZES[] = {1, 16, 160, 512, 4096};

/// The same numbers in every run.
class Numbers {
public:
    explicit Numbers(std::uint64_t in_uiSeed) : m_Engine(in_uiSeed) {}

    /// Evenly from the first to the second, and never either.
    double between(double in_dFirst, double in_dLast) {
        const double dShare = (static_cast<double>(m_Engine() >> 12) + 0.5) * 0x1p-52;
        return in_dFirst + (in_dLast - in_dFirst) * dShare;
    }

    /// From 0, below the count.
    std::size_t below(std::size_t in_uiCount) {
        return static_cast<std::size_t>(m_Engine() % in_uiCount);
    }

private:
    std::mt19937_64 m_Engine;
};

/// Memory for the frames and temporaries of a hand-written reference: each on a line of the cache,
/// and no two at addresses that agree modulo a page, which would collide in the cache.
class ReferenceMemory {
public:
    ReferenceMemory(std::size_t in_uiPieces, std::size_t in_uiSize);

    double* operator[](std::size_t in_uiPiece) { return m_pFirst + in_uiPiece * m_uiStride; }

private:
    std::size_t m_uiStride;
    std::vector<double> m_vMemory;
    double* m_pFirst;
};

/// Two frames that a host feeds in turns, so that each is new, and the same for the references.
class Frames {
public:
    static constexpr std::size_t COUNT = 2;

    explicit Frames(std::size_t in_uiSize, std::uint64_t in_uiSeed = 1);

    std::size_t size() const { return m_uiSize; }
    const Math::DoubleVector& get(std::size_t in_uiFrame) const {
        return m_vFrames[in_uiFrame % COUNT];
    }

    /// The same values where the references read them.
    const double* getCopy(std::size_t in_uiFrame) { return m_Memory[in_uiFrame % COUNT]; }

    /// Where the references write, of the size of the frame.
    double* getTemporary(std::size_t in_uiIndex) { return m_Memory[COUNT + in_uiIndex]; }

    static constexpr std::size_t TEMPORARIES = 3;

private:
    std::size_t m_uiSize;
    std::vector<Math::DoubleVector> m_vFrames;
    ReferenceMemory m_Memory;
};

/// Throws `WrongResult` unless both have the same bits. A NaN is never right.
void checkSame(const std::string& in_strWhat, const double* in_pMeasured,
               const double* in_pExpected, std::size_t in_uiCount);

/// Throws `WrongResult` unless both agree to the given share of the larger.
void checkClose(const std::string& in_strWhat, const double* in_pMeasured,
                const double* in_pExpected, std::size_t in_uiCount, double in_dShare = 1e-12);

} // namespace Velmora::Benchmarks
