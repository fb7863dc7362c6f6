#pragma once

#include <velmora/Export.h>

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <stdexcept>

namespace Velmora::Math {

/// The value of every expression: a growable array of doubles.
///
/// Invariants:
/// - The object is three pointers: the first value, one past the last value, one past the room.
///   All three are null while there is no block.
/// - The first value lies on a multiple of 16 bytes.
/// - A block for n values is n * 8 + 17 bytes of DefaultStaticMemAllocator under the account
///   "\"DoubleVector\"", the quotes included. The byte before the first value holds the distance
///   from the block's address to the first value, 2 to 17.
///
/// The vector owns its block and never shares it. A pointer into it is valid until the next
/// operation that grows it, assigns to it or moves from it. One thread at a time uses a vector.
///
/// An operation that needs more room than there is throws std::bad_alloc and leaves the vector as
/// it was.
class VELMORA_EXPORT DoubleVector {
public:
    /// What algorithms of the standard library ask of a container.
    using value_type = double;
    using iterator = double*;
    using const_iterator = const double*;

    /// Empty, without a block.
    DoubleVector() = default;

    /// The values in their order; the capacity is their number. Explicit, because a domain value
    /// points at the vector that it is given, and a temporary made from braces would be gone.
    explicit DoubleVector(std::initializer_list<double> in_values);

    /// The same values in a block of its own; the capacity is the size of the source.
    DoubleVector(const DoubleVector& in_source);

    /// Takes the block over; the source is empty afterwards, without a block.
    DoubleVector(DoubleVector&& inout_source) noexcept;

    ~DoubleVector();

    /// Replaces the values by a copy. The block stays where it is when it is large enough.
    DoubleVector& operator=(const DoubleVector& in_source);

    /// Takes the block over and releases its own; the source is empty afterwards.
    DoubleVector& operator=(DoubleVector&& inout_source) noexcept;

    /// Element by element. The other vector has at least the size of this one: the caller checks.
    DoubleVector& operator+=(const DoubleVector& in_other);
    DoubleVector& operator-=(const DoubleVector& in_other);

    /// Every element times, or divided by, the factor.
    DoubleVector& operator*=(double in_dFactor);
    DoubleVector& operator/=(double in_dDivisor);

    /// Inserts a copy of [first, last) before the position, which lies in [begin(), end()]. The
    /// range may be part of this vector. Invalidates pointers into the vector when it grows.
    void insert(double* in_pPosition, const double* in_pFirst, const double* in_pLast);

    /// Becomes a + b, a - b, v * factor or v / divisor, element by element, in one pass; the same
    /// bits as a copy and the operator above. Of two vectors the second has at least the size of
    /// the first, which is that of the result: the caller checks.
    void setSum(const DoubleVector& in_a, const DoubleVector& in_b);
    void setDifference(const DoubleVector& in_a, const DoubleVector& in_b);
    void setProduct(const DoubleVector& in_v, double in_dFactor);
    void setQuotient(const DoubleVector& in_v, double in_dDivisor);

    /// The arithmetic mean: the pairwise sum over the number of elements. Infinite where the sum
    /// is. Returns false and leaves the output alone if there is no element.
    bool average(double& out_dAverage) const;

    /// The mean of the squared elements, in the unit of the elements squared. Returns false and
    /// leaves the output alone if there is no element.
    bool averagePower(double& out_dAveragePower) const;

    /// Writes "[", the values with single blanks between, "]"; each value in the shortest decimal
    /// form that reads back as the same double, a NaN as "nan", infinities as "inf" and "-inf".
    /// The stream's format has no influence.
    std::ostream& write(std::ostream& inout_stream) const;

    /// The number of values, and how many there is room for without a new block.
    std::size_t size() const { return static_cast<std::size_t>(m_pEnd - m_pBegin); }
    std::size_t capacity() const { return static_cast<std::size_t>(m_pCapacityEnd - m_pBegin); }
    bool empty() const { return m_pBegin == m_pEnd; }

    /// From the first value to the end behind the last; both null without a block.
    double* begin() { return m_pBegin; }
    double* end() { return m_pEnd; }
    const double* begin() const { return m_pBegin; }
    const double* end() const { return m_pEnd; }

    /// Removes the values and keeps the block.
    void clear() { m_pEnd = m_pBegin; }

    /// Sets the size and keeps the old values that fit; new elements have no defined value. Grows
    /// the block only beyond the capacity, then to at least double the size before.
    void resize(std::size_t in_uiSize) {
        if (in_uiSize > capacity()) {
            resize_i(in_uiSize);
        } else {
            m_pEnd = m_pBegin + in_uiSize;
        }
    }

    /// Appends a value. A full vector doubles its room, an empty one without a block gets room
    /// for one.
    void push_back(double in_dValue) {
        if (m_pEnd == m_pCapacityEnd) {
            grow_i();
        }
        *m_pEnd++ = in_dValue;
    }

    /// The element; throws std::out_of_range with the text "vector" if there is none.
    double& at(std::size_t in_uiIndex) {
        if (in_uiIndex >= size()) {
            throw std::out_of_range("vector");
        }
        return m_pBegin[in_uiIndex];
    }
    const double& at(std::size_t in_uiIndex) const {
        if (in_uiIndex >= size()) {
            throw std::out_of_range("vector");
        }
        return m_pBegin[in_uiIndex];
    }

    /// The element, unchecked.
    double& operator[](std::size_t in_uiIndex) { return m_pBegin[in_uiIndex]; }
    const double& operator[](std::size_t in_uiIndex) const { return m_pBegin[in_uiIndex]; }

private:
    /// Makes room for that many elements and takes the size; the old values are lost.
    void prepare(std::size_t in_uiCount);
    void renew_i(std::size_t in_uiCount);
    void resize_i(std::size_t in_uiSize);
    void grow_i();
    void moveTo_i(std::size_t in_uiCapacity);

    double* m_pBegin = nullptr;
    double* m_pEnd = nullptr;
    double* m_pCapacityEnd = nullptr;
};

/// Writes the vector as DoubleVector::write does.
VELMORA_EXPORT std::ostream& operator<<(std::ostream& inout_stream, const DoubleVector& in_vector);

} // namespace Velmora::Math
