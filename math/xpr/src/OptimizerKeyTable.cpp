#include "OptimizerKeyTable.h"

#include <algorithm>
#include <utility>

namespace Velmora::Math::Xpr {

namespace {

__extension__ using UInt128 = unsigned __int128;

/// A Mersenne prime and an arbitrary base below it.
constexpr std::uint64_t CheckPrime = (std::uint64_t(1) << 61) - 1;
constexpr std::uint64_t CheckBase = 1099511628211ULL;

std::uint64_t multiply(std::uint64_t in_uiA, std::uint64_t in_uiB) {
    // What stands above the lower 61 bits counts once more: 2^61 is 1 modulo the prime.
    const UInt128 uiProduct = static_cast<UInt128>(in_uiA) * in_uiB;
    const std::uint64_t uiSum = (static_cast<std::uint64_t>(uiProduct) & CheckPrime) +
                                static_cast<std::uint64_t>(uiProduct >> 61);
    return uiSum >= CheckPrime ? uiSum - CheckPrime : uiSum;
}

/// Where texts are shortened, keys of equal digest and different pieces are compared character by
/// character no further than this, and aren't equal then.
constexpr std::size_t MaxCompared = std::size_t(1) << 20;

} // namespace

void OptimizerKeyTable::Digest::append(const std::string& in_strText) {
    for (const char c : in_strText) {
        const auto iCharacter = static_cast<signed char>(c);
        m_uiHash = m_uiHash * 5 + static_cast<std::uint64_t>(std::int64_t(iCharacter));
        m_uiHashPower *= 5;
        m_uiCheck = (multiply(m_uiCheck, CheckBase) + static_cast<unsigned char>(c)) % CheckPrime;
        m_uiCheckPower = multiply(m_uiCheckPower, CheckBase);
    }
    m_uiLength += in_strText.size();
}

void OptimizerKeyTable::Digest::append(const Digest& in_Other) {
    m_uiHash = m_uiHash * in_Other.m_uiHashPower + in_Other.m_uiHash;
    m_uiHashPower *= in_Other.m_uiHashPower;
    m_uiCheck = (multiply(m_uiCheck, in_Other.m_uiCheckPower) + in_Other.m_uiCheck) % CheckPrime;
    m_uiCheckPower = multiply(m_uiCheckPower, in_Other.m_uiCheckPower);
    m_uiLength += in_Other.m_uiLength;
}

bool OptimizerKeyTable::Digest::operator==(const Digest& in_Other) const {
    return m_uiHash == in_Other.m_uiHash && m_uiCheck == in_Other.m_uiCheck &&
           m_uiLength == in_Other.m_uiLength;
}

/// Reads the text of a key character by character, without putting it together.
class OptimizerKeyTable::Reader {
public:
    Reader(const OptimizerKeyTable& in_Table, const Key& in_Key) : m_Table(in_Table) {
        m_vPath.push_back({&in_Key, 0, 0});
    }

    /// A stretch of the text that hasn't been read; empty at the end.
    std::string_view peek() {
        while (!m_vPath.empty()) {
            Place& place = m_vPath.back();
            if (place.m_uiCharacter < place.m_pKey->m_strHead.size()) {
                return std::string_view(place.m_pKey->m_strHead).substr(place.m_uiCharacter);
            }
            if (place.m_uiRest < place.m_pKey->m_uiRestCount) {
                const std::size_t uiRest = place.m_pKey->m_uiRest + place.m_uiRest++;
                const Key& key = m_Table.m_vKeys[m_Table.m_vRests[uiRest]];
                m_vPath.push_back({&key, 0, 0});
            } else {
                m_vPath.pop_back();
            }
        }
        return std::string_view();
    }

    void skip(std::size_t in_uiCount) { m_vPath.back().m_uiCharacter += in_uiCount; }

private:
    struct Place {
        const Key* m_pKey;
        std::size_t m_uiCharacter;
        std::size_t m_uiRest;
    };

    const OptimizerKeyTable& m_Table;
    std::vector<Place> m_vPath;
};

bool OptimizerKeyTable::hasText(const Key& in_Key, Number in_uiOther) const {
    Reader one(*this, in_Key);
    Reader other(*this, m_vKeys[in_uiOther]);
    std::size_t uiCompared = 0;
    while (!m_bShorten || uiCompared < MaxCompared) {
        const std::string_view svOne = one.peek();
        const std::string_view svOther = other.peek();
        if (svOne.empty() || svOther.empty()) {
            return svOne.empty() && svOther.empty();
        }
        const std::size_t uiCount = std::min(svOne.size(), svOther.size());
        if (svOne.substr(0, uiCount) != svOther.substr(0, uiCount)) {
            return false;
        }
        one.skip(uiCount);
        other.skip(uiCount);
        uiCompared += uiCount;
    }
    return false;
}

bool OptimizerKeyTable::isEqual(const Key& in_Key, Number in_uiOther) const {
    const Key& other = m_vKeys[in_uiOther];
    if (!(other.m_Digest == in_Key.m_Digest)) {
        return false;
    }
    // Other pieces can make the same text: a concatenation within a concatenation.
    return (hasRest(in_Key, other) && other.m_strHead == in_Key.m_strHead) ||
           hasText(in_Key, in_uiOther);
}

bool OptimizerKeyTable::hasRest(const Key& in_Key, const Key& in_Other) const {
    const auto restOf = [this](const Key& in_Any) {
        return m_vRests.begin() + static_cast<std::ptrdiff_t>(in_Any.m_uiRest);
    };
    return in_Key.m_uiRestCount == in_Other.m_uiRestCount &&
           std::equal(restOf(in_Other),
                      restOf(in_Other) + static_cast<std::ptrdiff_t>(in_Other.m_uiRestCount),
                      restOf(in_Key));
}

OptimizerKeyTable::Number* OptimizerKeyTable::placeOf(const Key& in_Key) {
    const std::size_t uiMask = m_vPlaces.size() - 1;
    std::size_t uiPlace = in_Key.m_Digest.m_uiCheck & uiMask;
    while (m_vPlaces[uiPlace] != NoKey && !isEqual(in_Key, m_vPlaces[uiPlace])) {
        uiPlace = (uiPlace + 1) & uiMask;
    }
    return &m_vPlaces[uiPlace];
}

void OptimizerKeyTable::reserve(std::size_t in_uiKeys) {
    std::size_t uiPlaces = m_vPlaces.size();
    while (uiPlaces < 2 * in_uiKeys) {
        uiPlaces *= 2;
    }
    setPlaceCount(uiPlaces);
    m_vKeys.reserve(in_uiKeys);
    m_vRests.reserve(in_uiKeys);
}

/// A power of two.
void OptimizerKeyTable::setPlaceCount(std::size_t in_uiCount) {
    m_vPlaces.assign(in_uiCount, NoKey);
    const std::size_t uiMask = m_vPlaces.size() - 1;
    for (Number uiNumber = 0; uiNumber != m_vKeys.size(); ++uiNumber) {
        std::size_t uiPlace = m_vKeys[uiNumber].m_Digest.m_uiCheck & uiMask;
        while (m_vPlaces[uiPlace] != NoKey) {
            uiPlace = (uiPlace + 1) & uiMask;
        }
        m_vPlaces[uiPlace] = uiNumber;
    }
}

OptimizerKeyTable::Number OptimizerKeyTable::insert(std::string in_strHead,
                                                    const Numbers& in_vRest) {
    Key key{std::move(in_strHead), m_vRests.size(), in_vRest.size(), Digest()};
    m_vRests.insert(m_vRests.end(), in_vRest.begin(), in_vRest.end());
    key.m_Digest.append(key.m_strHead);
    for (const Number uiRest : in_vRest) {
        key.m_Digest.append(m_vKeys[uiRest].m_Digest);
    }
    if ((m_vKeys.size() + 1) * 2 > m_vPlaces.size()) {
        setPlaceCount(m_vPlaces.size() * 2);
    }
    Number* const pPlace = placeOf(key);
    if (*pPlace != NoKey) {
        m_vRests.resize(key.m_uiRest);
        return *pPlace;
    }
    const auto uiNumber = static_cast<Number>(m_vKeys.size());
    m_vKeys.push_back(std::move(key));
    return *pPlace = uiNumber;
}

std::size_t OptimizerKeyTable::getTextLimit() const {
    if (!m_bShorten) {
        return std::numeric_limits<std::size_t>::max();
    }
    return m_uiWritten < MaxTexts ? MaxText : ShortText;
}

std::string OptimizerKeyTable::text(Number in_uiKey) const {
    const std::size_t uiLimit = getTextLimit();
    std::string strText;
    Reader reader(*this, m_vKeys[in_uiKey]);
    for (std::string_view sv = reader.peek(); !sv.empty(); sv = reader.peek()) {
        if (sv.size() > uiLimit - strText.size()) {
            strText += "...";
            break;
        }
        strText += sv;
        reader.skip(sv.size());
    }
    m_uiWritten += strText.size();
    return strText;
}

} // namespace Velmora::Math::Xpr
