// The loops for every kind of processor that this one can stand for, against the plainest.

#include "math/src/Kernels.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "math/src/Extremes.h"

namespace {

using namespace Velmora::Math;

using Values = std::vector<double>;

/// Any number that isn't one is as good as any other.
bool haveSameBits(double in_dA, double in_dB) {
    return std::memcmp(&in_dA, &in_dB, sizeof(in_dA)) == 0 ||
           (std::isnan(in_dA) && std::isnan(in_dB));
}

void expectSameBits(const Values& in_vA, const Values& in_vB, const char* in_szKernel) {
    ASSERT_EQ(in_vA.size(), in_vB.size());
    for (std::size_t ui = 0; ui != in_vA.size(); ++ui) {
        EXPECT_TRUE(haveSameBits(in_vA[ui], in_vB[ui]))
            << in_szKernel << ' ' << ui << ": " << in_vA[ui] << ", " << in_vB[ui];
    }
}

/// What may stand among usual numbers.
enum class Guests { None, Borders, NoNumbers, OnlyZeros };

struct Inputs {
    Inputs(std::size_t in_uiCount, std::uint64_t in_uiSeed, Guests in_eGuests) {
        std::mt19937_64 random(in_uiSeed);
        std::uniform_real_distribution<double> number(-1.0, 1.0);
        constexpr double Infinity = std::numeric_limits<double>::infinity();
        constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
        const Values vBorders{0.0, -0.0, Infinity, -Infinity, 5e-324, -1e308, 1e308};
        const auto draw = [&] {
            if (in_eGuests == Guests::Borders && random() % 4 == 0) {
                return vBorders[random() % vBorders.size()];
            }
            if (in_eGuests == Guests::NoNumbers && random() % 64 == 0) {
                return random() % 2 == 0 ? Nan : -Nan;
            }
            if (in_eGuests == Guests::OnlyZeros) {
                return random() % 2 == 0 ? 0.0 : -0.0;
            }
            return std::ldexp(number(random), static_cast<int>(random() % 40) - 20);
        };
        for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
            m_vA.push_back(draw());
            m_vB.push_back(draw());
        }
        m_dNumber = number(random) + 1.5;
    }

    Values m_vA;
    Values m_vB;
    double m_dNumber = 0.0;
};

/// Where a scaled sum leaves what it makes. What it doesn't make stays zero.
struct ScaledSumResults {
    explicit ScaledSumResults(std::size_t in_uiCount) { m_vParts.fill(Values(in_uiCount)); }

    ScaledSum::Operands operands(const Inputs& in_Inputs) {
        ScaledSum::Operands operands;
        operands.m_pLeft = in_Inputs.m_vA.data();
        operands.m_pRight = in_Inputs.m_vB.data();
        operands.m_dLeftFactor = in_Inputs.m_dNumber;
        operands.m_dRightFactor = -0.75 * in_Inputs.m_dNumber;
        operands.m_dBehind = 0.3;
        operands.m_pScaledLeft = m_vParts[0].data();
        operands.m_pScaledRight = m_vParts[1].data();
        operands.m_pSum = m_vParts[2].data();
        operands.m_pScaledSum = m_vParts[3].data();
        operands.m_uiCount = in_Inputs.m_vA.size();
        return operands;
    }

    std::array<Values, 4> m_vParts;
};

/// What all kernels make of the inputs.
Values compute(const Kernels& in_Kernels, const Inputs& in_Inputs) {
    const double* const pA = in_Inputs.m_vA.data();
    const double* const pB = in_Inputs.m_vB.data();
    const std::size_t uiCount = in_Inputs.m_vA.size();
    Values vAll;
    Values vResult(uiCount);
    const auto keep = [&] { vAll.insert(vAll.end(), vResult.begin(), vResult.end()); };
    in_Kernels.m_Add(pA, pB, vResult.data(), uiCount);
    keep();
    in_Kernels.m_Subtract(pA, pB, vResult.data(), uiCount);
    keep();
    in_Kernels.m_Multiply(pA, in_Inputs.m_dNumber, vResult.data(), uiCount);
    keep();
    in_Kernels.m_Divide(pA, in_Inputs.m_dNumber, vResult.data(), uiCount);
    keep();
    vAll.push_back(in_Kernels.m_Sum(pA, pA + uiCount));
    vAll.push_back(in_Kernels.m_SumOfSquares(pA, pA + uiCount));
    if (uiCount != 0) {
        vAll.push_back(in_Kernels.m_Max(pA, pA + uiCount));
        vAll.push_back(in_Kernels.m_Min(pA, pA + uiCount));
    }
    // The tables of a wave are half as long as the frame.
    for (std::size_t uiTones = 1; uiTones != 6; ++uiTones) {
        std::vector<ToneTables> vTables;
        for (std::size_t uiTone = 0; uiTone != uiTones; ++uiTone) {
            const std::size_t uiOffset = uiTone % (uiCount - uiCount / 2 + 1);
            vTables.push_back({pB + uiOffset, pB + uiCount - uiCount / 2 - uiOffset});
        }
        std::vector<Correlation> vCorrelations(uiTones);
        in_Kernels.m_Correlate(pA, uiCount, vTables.data(), uiTones, vCorrelations.data());
        for (const Correlation& correlation : vCorrelations) {
            vAll.push_back(correlation.cosine);
            vAll.push_back(correlation.sine);
            vAll.push_back(correlation.energy);
        }
    }
    return vAll;
}

/// The same with an operation after the other.
ScaledSumResults computeOneByOne(const ScaledSum::Form& in_Form, const Inputs& in_Inputs) {
    const Kernels& plain = *listKernels().front();
    const std::size_t uiCount = in_Inputs.m_vA.size();
    ScaledSumResults results(uiCount);
    const ScaledSum::Operands operands = results.operands(in_Inputs);
    const double* pLeft = operands.m_pLeft;
    const double* pRight = operands.m_pRight;
    if (in_Form.m_bScaleLeft) {
        plain.m_Multiply(pLeft, operands.m_dLeftFactor, operands.m_pScaledLeft, uiCount);
        pLeft = operands.m_pScaledLeft;
    }
    if (in_Form.m_bScaleRight) {
        plain.m_Multiply(pRight, operands.m_dRightFactor, operands.m_pScaledRight, uiCount);
        pRight = operands.m_pScaledRight;
    }
    (in_Form.m_bSubtract ? plain.m_Subtract : plain.m_Add)(pLeft, pRight, operands.m_pSum, uiCount);
    if (in_Form.m_eBehind != ScaledSum::Scale::None) {
        (in_Form.m_eBehind == ScaledSum::Scale::Divide ? plain.m_Divide : plain.m_Multiply)(
            operands.m_pSum, operands.m_dBehind, operands.m_pScaledSum, uiCount);
    }
    return results;
}

void expectSameParts(const ScaledSumResults& in_A, const ScaledSumResults& in_B) {
    for (std::size_t uiPart = 0; uiPart != in_A.m_vParts.size(); ++uiPart) {
        expectSameBits(in_A.m_vParts[uiPart], in_B.m_vParts[uiPart], "scaled sum");
    }
}

TEST(KernelsTest, ScaledSumsAreTheirOperationsOneByOne) {
    for (const Guests eGuests : {Guests::Borders, Guests::NoNumbers}) {
        for (const std::size_t uiCount : {0, 1, 7, 8, 9, 31, 64, 100}) {
            const Inputs inputs(uiCount, uiCount, eGuests);
            for (std::size_t uiForm = 0; uiForm != ScaledSumForms; ++uiForm) {
                const ScaledSum::Form form = scaledSumForm(uiForm);
                const ScaledSumResults expected = computeOneByOne(form, inputs);
                for (const Kernels* pForm : listKernels()) {
                    ScaledSumResults results(uiCount);
                    pForm->m_ScaledSums[uiForm](results.operands(inputs));
                    expectSameParts(results, expected);
                }
                ScaledSumResults results(uiCount);
                ScaledSum(form).compute(results.operands(inputs));
                expectSameParts(results, expected);
            }
        }
    }
}

/// The reductions with a pass for each, in the order of their kinds.
Reductions::Results reduceOneByOne(const double* in_pFirst, const double* in_pLast) {
    const Kernels& plain = *listKernels().front();
    return {plain.m_Sum(in_pFirst, in_pLast),
            plain.m_SumOfSquares(in_pFirst, in_pLast) / static_cast<double>(in_pLast - in_pFirst),
            plain.m_Max(in_pFirst, in_pLast), plain.m_Min(in_pFirst, in_pLast)};
}

/// Those of the set, and what stood there for the others.
Values pick(const Reductions::Results& in_All, std::size_t in_uiSet, double in_dOther) {
    Values vPicked;
    for (std::size_t uiKind = 0; uiKind != in_All.size(); ++uiKind) {
        vPicked.push_back((in_uiSet >> uiKind & 1) != 0 ? in_All[uiKind] : in_dOther);
    }
    return vPicked;
}

TEST(KernelsTest, ReductionsInOnePassAreThoseOneByOne) {
    constexpr double Untouched = 77.0;
    for (const Guests eGuests :
         {Guests::None, Guests::Borders, Guests::NoNumbers, Guests::OnlyZeros}) {
        for (std::size_t uiCount = 1; uiCount < 2000; uiCount += 1 + uiCount / 60) {
            const Inputs inputs(uiCount, uiCount, eGuests);
            const double* const pFirst = inputs.m_vA.data();
            const double* const pLast = pFirst + uiCount;
            const Reductions::Results expected = reduceOneByOne(pFirst, pLast);
            for (std::size_t uiSet = 0; uiSet != ReductionSets; ++uiSet) {
                for (const Kernels* pForm : listKernels()) {
                    Reductions::Results results;
                    results.fill(Untouched);
                    pForm->m_Reductions[uiSet](pFirst, pLast, results);
                    expectSameBits(Values(results.begin(), results.end()),
                                   pick(expected, uiSet, Untouched), "reductions");
                }
            }
        }
    }
}

TEST(KernelsTest, ReductionsAreMadeOfTheKindsThatWereAdded) {
    const Values vValues{3.0, -4.0, 2.0};
    const double* const pFirst = vValues.data();
    Reductions::Results results;
    results.fill(77.0);
    Reductions reductions;
    reductions.compute(pFirst, pFirst + 3, results);
    EXPECT_EQ(results, (Reductions::Results{77.0, 77.0, 77.0, 77.0}));
    EXPECT_TRUE(reductions.add(Reductions::Kind::Max));
    EXPECT_TRUE(reductions.add(Reductions::Kind::Sum));
    EXPECT_FALSE(reductions.add(Reductions::Kind::Max));
    reductions.compute(pFirst, pFirst + 3, results);
    EXPECT_EQ(results, (Reductions::Results{1.0, 77.0, 3.0, 77.0}));
    EXPECT_TRUE(reductions.add(Reductions::Kind::Min));
    EXPECT_TRUE(reductions.add(Reductions::Kind::AveragePower));
    reductions.compute(pFirst, pFirst + 3, results);
    EXPECT_EQ(results, (Reductions::Results{1.0, 29.0 / 3.0, 3.0, -4.0}));
}

TEST(KernelsTest, AllFormsGiveTheSameBits) {
    const std::vector<const Kernels*> vForms = listKernels();
    ASSERT_FALSE(vForms.empty());
    for (const Guests eGuests :
         {Guests::None, Guests::Borders, Guests::NoNumbers, Guests::OnlyZeros}) {
        for (std::size_t uiCount = 0; uiCount < 2000; uiCount += 1 + uiCount / 300) {
            const Inputs inputs(uiCount, uiCount, eGuests);
            const Values vExpected = compute(*vForms.front(), inputs);
            for (const Kernels* pForm : vForms) {
                expectSameBits(compute(*pForm, inputs), vExpected, "values");
            }
        }
    }
}

TEST(KernelsTest, ExtremesAreThoseInOrder) {
    for (const Guests eGuests :
         {Guests::None, Guests::Borders, Guests::NoNumbers, Guests::OnlyZeros}) {
        for (std::size_t uiCount = 1; uiCount != 100; ++uiCount) {
            const Inputs inputs(uiCount, uiCount, eGuests);
            const double* const pFirst = inputs.m_vA.data();
            const Extremes expected = extremesInOrder(pFirst, pFirst + uiCount);
            for (const Kernels* pForm : listKernels()) {
                expectSameBits({pForm->m_Min(pFirst, pFirst + uiCount),
                                pForm->m_Max(pFirst, pFirst + uiCount)},
                               {expected.smallest, expected.largest}, "extremes");
            }
        }
    }
}

TEST(KernelsTest, BestFormIsChosen) {
    EXPECT_EQ(&kernels(), listKernels().back());
}

TEST(KernelsTest, CorrelationIsThatOfThePlainSums) {
    // Cosine and sine of 1, 2, ... half samples beside the middle.
    const Values vFrame{1.0, 2.0, 4.0, 8.0, 16.0};
    const Values vCosine{0.5, 0.25};
    const Values vSine{0.75, 2.0};
    for (const Kernels* pForm : listKernels()) {
        const ToneTables tables{vCosine.data(), vSine.data()};
        Correlation correlation;
        pForm->m_Correlate(vFrame.data(), vFrame.size(), &tables, 1, &correlation);
        EXPECT_EQ(correlation.cosine, (8.0 + 2.0) * 0.5 + (16.0 + 1.0) * 0.25 + 4.0);
        EXPECT_EQ(correlation.sine, (8.0 - 2.0) * 0.75 + (16.0 - 1.0) * 2.0);
        EXPECT_EQ(correlation.energy, 1.0 + 4.0 + 16.0 + 64.0 + 256.0);
    }
}

} // namespace
