#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include "math/xpr/src/GraphWalk.h"

namespace Velmora::Testing {

/// Reads a log while it lives, and walks over a graph, all of it, whenever a line comes.
class WalkingReader {
public:
    WalkingReader(const char* in_szLogger, const Math::Xpr::ExpressionBaseImpl& in_Root)
        : m_Logger(log4cplus::Logger::getInstance(in_szLogger)),
          m_pAppender(new Appender(in_Root)) {
        m_Logger.addAppender(log4cplus::SharedAppenderPtr(m_pAppender.get()));
    }

    ~WalkingReader() { m_Logger.removeAppender(log4cplus::SharedAppenderPtr(m_pAppender.get())); }
    WalkingReader(const WalkingReader&) = delete;
    WalkingReader& operator=(const WalkingReader&) = delete;

    unsigned countLines() const { return m_pAppender->m_uiLines; }

private:
    class Appender : public log4cplus::Appender {
    public:
        explicit Appender(const Math::Xpr::ExpressionBaseImpl& in_Root) : m_Root(in_Root) {}
        ~Appender() override { destructorImpl(); }
        void close() override {}

        unsigned m_uiLines = 0;

    protected:
        void append(const log4cplus::spi::InternalLoggingEvent&) override {
            ++m_uiLines;
            Math::Xpr::GraphWalk::isShort(m_Root);
            // The marks of walks are no part of what a node is.
            Math::Xpr::GraphWalk().collect(const_cast<Math::Xpr::ExpressionBaseImpl&>(m_Root));
        }

    private:
        const Math::Xpr::ExpressionBaseImpl& m_Root;
    };

    log4cplus::Logger m_Logger;
    log4cplus::helpers::SharedObjectPtr<Appender> m_pAppender;
};

} // namespace Velmora::Testing
