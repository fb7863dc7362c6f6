#include "OptimizerKeyTable.h"

#include <functional>
#include <limits>

namespace Velmora::Math::Xpr {

namespace {

__extension__ using UInt128 = unsigned __int128;

/// A Mersenne prime and an arbitrary base below it.
constexpr std::uint64_t CheckPrime = (std::uint64_t(1) << 61) - 1;
constexpr std::uint64_t CheckBase = 1099511628211ULL;

std::uint64_t multiply(std::uint64_t in_uiA, std::uint64_t in_uiB) {
    return static_cast<std::uint64_t>(static_cast<UInt128>(in_uiA) * in_uiB % CheckPrime);
}

/// Keys of equal digest and different pieces are compared character by character, but no further.
constexpr std::size_t MaxCompared = std::size_t(1) << 20;

std::size_t hashPieces(const std::string& in_strHead,
                       const std::vector<OptimizerKeyTable::Number>& in_vRest) {
    std::size_t uiHash = std::hash<std::string>()(in_strHead);
    for (const OptimizerKeyTable::Number uiKey : in_vRest) {
        uiHash = (uiHash ^ uiKey) * 0x9E3779B97F4A7C15ULL;
        uiHash ^= uiHash >> 29;
    }
    return uiHash;
}

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
            if (place.m_uiRest < place.m_pKey->m_vRest.size()) {
                const Key& key = m_Table.m_vKeys[place.m_pKey->m_vRest[place.m_uiRest++]];
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
    while (uiCompared < MaxCompared) {
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

const OptimizerKeyTable::Number* OptimizerKeyTable::findPieces(std::size_t in_uiHash,
                                                               const Key& in_Key) const {
    const auto range = m_mapByPieces.equal_range(in_uiHash);
    for (auto ite = range.first; ite != range.second; ++ite) {
        const Key& key = m_vKeys[ite->second];
        if (key.m_vRest == in_Key.m_vRest && key.m_strHead == in_Key.m_strHead) {
            return &ite->second;
        }
    }
    return nullptr;
}

OptimizerKeyTable::Number OptimizerKeyTable::insert(std::string in_strHead,
                                                    std::vector<Number> in_vRest) {
    Key key{std::move(in_strHead), std::move(in_vRest), Digest()};
    const std::size_t uiHash = hashPieces(key.m_strHead, key.m_vRest);
    if (const Number* pKnown = findPieces(uiHash, key)) {
        return *pKnown;
    }
    key.m_Digest.append(key.m_strHead);
    for (const Number uiRest : key.m_vRest) {
        key.m_Digest.append(m_vKeys[uiRest].m_Digest);
    }
    // Other pieces can make the same text: a concatenation within a concatenation.
    const auto range = m_mapByDigest.equal_range(key.m_Digest.m_uiCheck);
    for (auto ite = range.first; ite != range.second; ++ite) {
        if (m_vKeys[ite->second].m_Digest == key.m_Digest && hasText(key, ite->second)) {
            return ite->second;
        }
    }
    const auto uiNumber = static_cast<Number>(m_vKeys.size());
    m_mapByPieces.emplace(uiHash, uiNumber);
    m_mapByDigest.emplace(key.m_Digest.m_uiCheck, uiNumber);
    m_vKeys.push_back(std::move(key));
    return uiNumber;
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
