#include <velmora/math/xpr/ScriptParser.h>

#include <istream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/OS.h>
#include <velmora/StringUtil.h>

#include "ScriptParserImpl.h"
#include "ScriptTooLong.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ScriptParser");

namespace {

/// Up to the end or a little beyond what a script may have.
void readAll(std::istream& inout_Stream, std::vector<char>& inout_vText) {
    constexpr std::size_t ChunkSize = 65536;
    inout_Stream.unsetf(std::ios::skipws);
    std::vector<char> vChunk(ChunkSize);
    do {
        inout_Stream.read(vChunk.data(), static_cast<std::streamsize>(ChunkSize));
        inout_vText.insert(inout_vText.end(), vChunk.data(), vChunk.data() + inout_Stream.gcount());
    } while (inout_Stream && inout_vText.size() <= ScriptParser::MaxScriptSize);
}

} // namespace

ScriptParser::ScriptParser() {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::ScriptParser");
}

ScriptParser::ScriptParser(const ScriptParser& in_Other)
    : m_pImpl(in_Other.m_pImpl),
      m_bInitialized(in_Other.m_bInitialized),
      m_strScriptName(in_Other.m_strScriptName),
      m_strFileDirectory(in_Other.m_strFileDirectory),
      m_vScriptText(in_Other.m_vScriptText),
      m_bFailed(in_Other.m_bFailed),
      m_pSavedExpression(in_Other.m_pSavedExpression),
      m_pCurrentFunction(in_Other.m_pCurrentFunction),
      m_pLastNamePosition(in_Other.m_pLastNamePosition),
      m_pCurrentPosition(in_Other.m_pCurrentPosition),
      m_pEndPosition(in_Other.m_pEndPosition) {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::ScriptParser copy");
}

ScriptParser& ScriptParser::operator=(const ScriptParser& in_Other) = default;

ScriptParser::~ScriptParser() {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::~ScriptParser");
}

bool ScriptParser::initialize(std::istream& inout_Stream, const char* in_szScriptName,
                              const char* in_szFileDirectory) {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::initialize");
    const Handle<ScriptParserImpl> pScriptParserImpl(new ScriptParserImpl);
    if (pScriptParserImpl.isNull()) {
        VELMORA_ASSERT_FAIL("!pScriptParserImpl.isNull()");
        return false;
    }
    pScriptParserImpl->setScriptParser(this);
    if (!OS::stripPathAndExtension(in_szScriptName, m_strScriptName)) {
        VELMORA_ASSERT_FAIL("OS::stripPathAndExtension( in_szScriptName, m_strScriptName )");
        return false;
    }
    m_strFileDirectory = in_szFileDirectory == nullptr ? "" : in_szFileDirectory;
    readAll(inout_Stream, m_vScriptText);

    const char* pText = m_vScriptText.data();
    const ScriptIterator first(pText, pText + m_vScriptText.size(), m_strScriptName.c_str());
    m_pLastNamePosition = new ScriptIterator(first);
    m_pCurrentPosition = new ScriptIterator(first);
    m_pEndPosition = new ScriptIterator;
    m_bFailed = false;
    m_pImpl = pScriptParserImpl;
    m_bInitialized = true;
    return true;
}

Handle<Expression> ScriptParser::getExpression() {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::getExpression");
    if (!m_bInitialized) {
        VELMORA_ASSERT_FAIL("m_bInitialized");
        return Handle<Expression>();
    }
    if (*m_pCurrentPosition == *m_pEndPosition) {
        return Handle<Expression>();
    }
    if (m_vScriptText.size() > MaxScriptSize) {
        VELMORA_LOG_ERROR(fileLogger(), scriptTooLong(m_strScriptName.c_str()));
        return endScript();
    }
    m_pSavedExpression = Handle<Expression>();
    try {
        bool bFull = false;
        while (m_pSavedExpression.isNull() && !bFull) {
            const ScriptParserImpl::Outcome outcome =
                m_pImpl->parseStatement(*m_pCurrentPosition, *m_pEndPosition);
            if (!outcome.m_bHit) {
                VELMORA_LOG_ERROR(fileLogger(), "syntax error:" << outcome.m_Stop);
                return endScript();
            }
            *m_pCurrentPosition = outcome.m_Stop;
            bFull = outcome.m_bFull;
        }
    } catch (const ScriptDefinitionError& error) {
        VELMORA_LOG_ERROR(fileLogger(),
                          "expression error:" << error.where << error.descriptor->getMessage());
        return endScript();
    } catch (const ScriptSyntaxError& error) {
        VELMORA_LOG_ERROR(fileLogger(), "syntax error:" << error.where << " " << error.descriptor);
        return endScript();
    }
    VELMORA_LOG_DEBUG(fileLogger(), "successfuly parsed a new expression");
    return m_pSavedExpression;
}

/// Behind an error: what is left of the script stays unread.
Handle<Expression> ScriptParser::endScript() {
    *m_pCurrentPosition = *m_pEndPosition;
    m_bFailed = true;
    m_pSavedExpression = Handle<Expression>();
    return m_pSavedExpression;
}

bool ScriptParser::replaceMacros(const std::string& in_strText, std::string& out_strText) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParser::getExpression");
    VELMORA_LOG_DEBUG(fileLogger(), "replacing macros in: " << in_strText);
    out_strText = in_strText;
    VELMORA_LOG_DEBUG(fileLogger(), "replacing: $FILE_DIR...");
    strFindAndReplace("$FILE_DIR", m_strFileDirectory, out_strText);
    VELMORA_LOG_DEBUG(fileLogger(),
                      "replaced macros in: \nbefore: " << in_strText << "\nafter: " << out_strText);
    return true;
}

} // namespace Velmora::Math::Xpr
