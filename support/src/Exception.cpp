#include <velmora/Exception.h>

#include <ostream>

namespace Velmora {

Exception::Exception() = default;
Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    return "unspecified exception";
}

std::ostream& Exception::write(std::ostream& inout_stream) const {
    return inout_stream << what();
}

ExceptionWithMsg::ExceptionWithMsg(const char* in_szMessage)
    : m_strMessage(in_szMessage == nullptr ? "" : in_szMessage) {}

ExceptionWithMsg::ExceptionWithMsg(const std::string& in_strMessage)
    : m_strMessage(in_strMessage) {}

ExceptionWithMsg::~ExceptionWithMsg() = default;

const char* ExceptionWithMsg::what() const noexcept {
    return m_strMessage.c_str();
}

} // namespace Velmora
