#pragma once

#include <velmora/OutputStreamable.h>

#include <exception>
#include <string>

namespace Velmora {

/// The root of the system's exceptions. It writes its `what()`.
class VELMORA_EXPORT Exception : public std::exception, public OutputStreamable {
public:
    Exception();
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() override;

    /// A text of no cause in particular.
    const char* what() const noexcept override;
    std::ostream& write(std::ostream& inout_stream) const override;
};

/// An exception that is told by a text.
class VELMORA_EXPORT ExceptionWithMsg : public Exception {
public:
    /// Copies the text.
    explicit ExceptionWithMsg(const char* in_szMessage);
    explicit ExceptionWithMsg(const std::string& in_strMessage);
    ExceptionWithMsg(const ExceptionWithMsg&) = default;
    ExceptionWithMsg& operator=(const ExceptionWithMsg&) = default;
    ~ExceptionWithMsg() override;

    /// The text. It lives as long as the exception.
    const char* what() const noexcept override;

private:
    std::string m_strMessage;
};

} // namespace Velmora
