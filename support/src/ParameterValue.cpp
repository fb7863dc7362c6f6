#include <velmora/ParameterValue.h>

#include <velmora/LogSite.h>

#include <cstring>
#include <ostream>
#include <utility>

namespace Velmora {

namespace {

char* copyText(const char* in_szText, std::size_t in_uiLength) {
    char* szCopy = new char[in_uiLength + 1];
    std::memcpy(szCopy, in_szText, in_uiLength);
    szCopy[in_uiLength] = '\0';
    return szCopy;
}

} // namespace

ParameterValue::ParameterValue(int in_iValue) noexcept : m_iTag(IntTag) {
    m_payload.m_iValue = in_iValue;
}

ParameterValue::ParameterValue(float in_fValue) noexcept : m_iTag(FloatTag) {
    m_payload.m_fValue = in_fValue;
}

ParameterValue::ParameterValue(const char* in_szText) : m_iTag(StringTag) {
    initUnionFromString(in_szText, nullptr);
}

ParameterValue::ParameterValue(const ParameterValue& in_rhs)
    : m_iTag(in_rhs.m_iTag), m_payload(in_rhs.m_payload) {
    if (m_iTag == StringTag) {
        m_payload.m_szText = nullptr;
        initUnionFromString(in_rhs.getString(), nullptr);
    }
}

ParameterValue::ParameterValue(ParameterValue&& inout_rhs) noexcept
    : m_iTag(std::exchange(inout_rhs.m_iTag, EmptyTag)),
      m_payload(std::exchange(inout_rhs.m_payload, Payload{nullptr})) {}

ParameterValue::~ParameterValue() {
    deallocateString();
}

ParameterValue& ParameterValue::operator=(const ParameterValue& in_rhs) {
    if (this != &in_rhs) {
        *this = ParameterValue(in_rhs);
    }
    return *this;
}

ParameterValue& ParameterValue::operator=(ParameterValue&& inout_rhs) noexcept {
    std::swap(m_iTag, inout_rhs.m_iTag);
    std::swap(m_payload, inout_rhs.m_payload);
    return *this;
}

void ParameterValue::setTag(int in_iTag) {
    deallocateString();
    m_iTag = in_iTag;
    switch (in_iTag) {
    case IntTag:
        m_payload.m_iValue = 0;
        break;
    case FloatTag:
        m_payload.m_fValue = 0.0F;
        break;
    default:
        m_payload.m_szText = nullptr;
    }
}

void ParameterValue::initUnionFromString(const char* in_szText, const char* in_pEnd) {
    if (m_iTag != StringTag) {
        VELMORA_ASSERT_FAIL("m_iTag == StringTag");
        return;
    }
    const char* szText = in_szText == nullptr ? "" : in_szText;
    const std::size_t uiLength = in_szText == nullptr || in_pEnd == nullptr
                                     ? std::strlen(szText)
                                     : static_cast<std::size_t>(in_pEnd - in_szText);
    // Copied before the old text goes, which may be the source.
    char* szCopy = copyText(szText, uiLength);
    deallocateString();
    m_payload.m_szText = szCopy;
}

void ParameterValue::deallocateString() noexcept {
    if (m_iTag == StringTag) {
        delete[] m_payload.m_szText;
        m_payload.m_szText = nullptr;
    }
}

const char* ParameterValue::getString() const noexcept {
    return m_iTag == StringTag && m_payload.m_szText != nullptr ? m_payload.m_szText : "";
}

ParameterValue::operator int() const noexcept {
    return m_iTag == IntTag ? m_payload.m_iValue : 0;
}

ParameterValue::operator float() const noexcept {
    return m_iTag == FloatTag ? m_payload.m_fValue : 0.0F;
}

bool operator==(const ParameterValue& in_a, const ParameterValue& in_b) noexcept {
    if (in_a.m_iTag != in_b.m_iTag) {
        return false;
    }
    switch (in_a.m_iTag) {
    case ParameterValue::StringTag:
        return std::strcmp(in_a.getString(), in_b.getString()) == 0;
    case ParameterValue::IntTag:
        return in_a.m_payload.m_iValue == in_b.m_payload.m_iValue;
    case ParameterValue::FloatTag:
        return in_a.m_payload.m_fValue == in_b.m_payload.m_fValue;
    default:
        return true;
    }
}

bool operator!=(const ParameterValue& in_a, const ParameterValue& in_b) noexcept {
    return !(in_a == in_b);
}

std::ostream& operator<<(std::ostream& inout_stream, const ParameterValue& in_value) {
    switch (in_value.getTag()) {
    case ParameterValue::StringTag:
        return inout_stream << in_value.getString();
    case ParameterValue::IntTag:
        return inout_stream << static_cast<int>(in_value);
    case ParameterValue::FloatTag:
        return inout_stream << static_cast<float>(in_value);
    default:
        return inout_stream;
    }
}

} // namespace Velmora
