#include <velmora/math/DoubleVector.h>

#include <velmora/DefaultStaticMemAllocator.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <ostream>
#include <utility>

#include "Kernels.h"

namespace Velmora::Math {

namespace {

constexpr const char* accountName = "\"DoubleVector\"";

// Room in front of the values for the alignment and for the byte that records it.
constexpr std::size_t overhead = 17;
constexpr std::size_t alignment = 16;

// Differences of pointers into a block stay within std::ptrdiff_t.
constexpr std::size_t maxSize =
    (static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - overhead) /
    sizeof(double);

double* allocate(std::size_t in_uiCapacity) {
    if (in_uiCapacity == 0) {
        return nullptr;
    }
    if (in_uiCapacity > maxSize) {
        throw std::bad_alloc();
    }
    void* const block =
        DefaultStaticMemAllocator::allocate(in_uiCapacity * sizeof(double) + overhead, accountName);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    auto* const raw = static_cast<unsigned char*>(block);
    const auto address = reinterpret_cast<std::uintptr_t>(raw);
    const std::size_t offset = overhead - ((address + 1) & (alignment - 1));
    raw[offset - 1] = static_cast<unsigned char>(offset);
    return reinterpret_cast<double*>(raw + offset);
}

void release(double* in_pData, std::size_t in_uiCapacity) {
    if (in_pData == nullptr) {
        return;
    }
    auto* const data = reinterpret_cast<unsigned char*>(in_pData);
    DefaultStaticMemAllocator::deallocate(data - data[-1],
                                          in_uiCapacity * sizeof(double) + overhead, accountName);
}

// A null pointer is no argument of memmove, not even for no bytes.
void copyValues(double* out_pTo, const double* in_pFrom, std::size_t in_uiCount) {
    if (in_uiCount != 0) {
        std::memmove(out_pTo, in_pFrom, in_uiCount * sizeof(double));
    }
}

// Doubling keeps a sequence of growing steps linear; the limit keeps the product in range.
std::size_t grownCapacity(std::size_t in_uiSize, std::size_t in_uiNeeded) {
    if (in_uiNeeded > maxSize) {
        throw std::bad_alloc();
    }
    const std::size_t doubled = in_uiSize > maxSize / 2 ? maxSize : 2 * in_uiSize;
    return doubled > in_uiNeeded ? doubled : in_uiNeeded;
}

} // namespace

DoubleVector::DoubleVector(std::initializer_list<double> in_values)
    : m_pBegin(allocate(in_values.size())),
      m_pEnd(m_pBegin + in_values.size()),
      m_pCapacityEnd(m_pEnd) {
    copyValues(m_pBegin, in_values.begin(), in_values.size());
}

DoubleVector::DoubleVector(const DoubleVector& in_source)
    : m_pBegin(allocate(in_source.size())),
      m_pEnd(m_pBegin + in_source.size()),
      m_pCapacityEnd(m_pEnd) {
    copyValues(m_pBegin, in_source.m_pBegin, in_source.size());
}

DoubleVector::DoubleVector(DoubleVector&& inout_source) noexcept
    : m_pBegin(std::exchange(inout_source.m_pBegin, nullptr)),
      m_pEnd(std::exchange(inout_source.m_pEnd, nullptr)),
      m_pCapacityEnd(std::exchange(inout_source.m_pCapacityEnd, nullptr)) {}

DoubleVector::~DoubleVector() {
    release(m_pBegin, capacity());
}

void DoubleVector::renew_i(std::size_t in_uiCount) {
    double* const block = allocate(in_uiCount);
    release(m_pBegin, capacity());
    m_pBegin = block;
    m_pCapacityEnd = block + in_uiCount;
}

inline void DoubleVector::prepare(std::size_t in_uiCount) {
    if (in_uiCount > capacity()) {
        renew_i(in_uiCount);
    }
    m_pEnd = m_pBegin + in_uiCount;
}

DoubleVector& DoubleVector::operator=(const DoubleVector& in_source) {
    const double* const values = in_source.m_pBegin;
    const std::size_t count = in_source.size();
    prepare(count);
    copyValues(m_pBegin, values, count);
    return *this;
}

DoubleVector& DoubleVector::operator=(DoubleVector&& inout_source) noexcept {
    if (this != &inout_source) {
        release(m_pBegin, capacity());
        m_pBegin = std::exchange(inout_source.m_pBegin, nullptr);
        m_pEnd = std::exchange(inout_source.m_pEnd, nullptr);
        m_pCapacityEnd = std::exchange(inout_source.m_pCapacityEnd, nullptr);
    }
    return *this;
}

DoubleVector& DoubleVector::operator+=(const DoubleVector& in_other) {
    kernels().m_Add(m_pBegin, in_other.m_pBegin, m_pBegin, size());
    return *this;
}

DoubleVector& DoubleVector::operator-=(const DoubleVector& in_other) {
    kernels().m_Subtract(m_pBegin, in_other.m_pBegin, m_pBegin, size());
    return *this;
}

DoubleVector& DoubleVector::operator*=(double in_dFactor) {
    kernels().m_Multiply(m_pBegin, in_dFactor, m_pBegin, size());
    return *this;
}

DoubleVector& DoubleVector::operator/=(double in_dDivisor) {
    kernels().m_Divide(m_pBegin, in_dDivisor, m_pBegin, size());
    return *this;
}

void DoubleVector::setSum(const DoubleVector& in_a, const DoubleVector& in_b) {
    const std::size_t count = in_a.size();
    prepare(count);
    kernels().m_Add(in_a.m_pBegin, in_b.m_pBegin, m_pBegin, count);
}

void DoubleVector::setDifference(const DoubleVector& in_a, const DoubleVector& in_b) {
    const std::size_t count = in_a.size();
    prepare(count);
    kernels().m_Subtract(in_a.m_pBegin, in_b.m_pBegin, m_pBegin, count);
}

void DoubleVector::setProduct(const DoubleVector& in_v, double in_dFactor) {
    const std::size_t count = in_v.size();
    prepare(count);
    kernels().m_Multiply(in_v.m_pBegin, in_dFactor, m_pBegin, count);
}

void DoubleVector::setQuotient(const DoubleVector& in_v, double in_dDivisor) {
    const std::size_t count = in_v.size();
    prepare(count);
    kernels().m_Divide(in_v.m_pBegin, in_dDivisor, m_pBegin, count);
}

void DoubleVector::insert(double* in_pPosition, const double* in_pFirst, const double* in_pLast) {
    const auto count = static_cast<std::size_t>(in_pLast - in_pFirst);
    if (count == 0) {
        return;
    }
    const std::size_t oldSize = size();
    const auto before = static_cast<std::size_t>(in_pPosition - m_pBegin);
    const std::size_t behind = oldSize - before;
    if (count > maxSize - oldSize) {
        throw std::bad_alloc();
    }

    if (count > capacity() - oldSize) {
        const std::size_t newCapacity = grownCapacity(oldSize, oldSize + count);
        double* const block = allocate(newCapacity);
        copyValues(block, m_pBegin, before);
        copyValues(block + before, in_pFirst, count);
        copyValues(block + before + count, in_pPosition, behind);
        release(m_pBegin, capacity());
        m_pBegin = block;
        m_pCapacityEnd = block + newCapacity;
    } else {
        // What of the range lies at or behind the position in this vector moves with the tail.
        std::size_t staying = count;
        const std::less<const double*> isBefore;
        if (!isBefore(in_pFirst, m_pBegin) && isBefore(in_pFirst, m_pEnd)) {
            staying = isBefore(in_pFirst, in_pPosition)
                          ? static_cast<std::size_t>(in_pPosition - in_pFirst)
                          : 0;
            staying = staying < count ? staying : count;
        }
        copyValues(in_pPosition + count, in_pPosition, behind);
        copyValues(in_pPosition, in_pFirst, staying);
        copyValues(in_pPosition + staying, in_pFirst + staying + (staying < count ? count : 0),
                   count - staying);
    }
    m_pEnd = m_pBegin + oldSize + count;
}

bool DoubleVector::average(double& out_dAverage) const {
    if (empty()) {
        return false;
    }
    out_dAverage = kernels().m_Sum(m_pBegin, m_pEnd) / static_cast<double>(size());
    return true;
}

bool DoubleVector::averagePower(double& out_dAveragePower) const {
    if (empty()) {
        return false;
    }
    out_dAveragePower = kernels().m_SumOfSquares(m_pBegin, m_pEnd) / static_cast<double>(size());
    return true;
}

std::ostream& DoubleVector::write(std::ostream& inout_stream) const {
    inout_stream.put('[');
    for (const double* value = m_pBegin; value != m_pEnd; ++value) {
        if (value != m_pBegin) {
            inout_stream.put(' ');
        }
        // A NaN has a sign that means nothing.
        const double shown = std::isnan(*value) ? std::numeric_limits<double>::quiet_NaN() : *value;
        char text[32];
        const auto result = std::to_chars(text, text + sizeof(text), shown);
        inout_stream.write(text, result.ptr - text);
    }
    return inout_stream.put(']');
}

std::ostream& operator<<(std::ostream& inout_stream, const DoubleVector& in_vector) {
    return in_vector.write(inout_stream);
}

void DoubleVector::resize_i(std::size_t in_uiSize) {
    moveTo_i(grownCapacity(size(), in_uiSize));
    m_pEnd = m_pBegin + in_uiSize;
}

void DoubleVector::grow_i() {
    const std::size_t count = size();
    if (count == maxSize) {
        throw std::bad_alloc();
    }
    moveTo_i(grownCapacity(count, count + 1));
}

void DoubleVector::moveTo_i(std::size_t in_uiCapacity) {
    const std::size_t count = size();
    double* const block = allocate(in_uiCapacity);
    copyValues(block, m_pBegin, count);
    release(m_pBegin, capacity());
    m_pBegin = block;
    m_pEnd = block + count;
    m_pCapacityEnd = block + in_uiCapacity;
}

} // namespace Velmora::Math
