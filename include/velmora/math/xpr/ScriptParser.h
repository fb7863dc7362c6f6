#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include <velmora/CountedObjPtr.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Function.h>

namespace Velmora::Math::Xpr {

class ScriptIterator;

/// Reads one script and hands out its definitions one by one.
///
/// The order of calls is: construct, `initialize`, `getExpression` until it gives null, then
/// `failed` to tell the end of the script from an error. A parser reads one script, on one thread
/// at a time; parsers of several scripts may run on several threads.
///
/// A name that isn't an argument of the function in hand becomes a placeholder, which the linker
/// replaces. An error is written to the log at ERROR level with its position in the script, and
/// ends the script: what was handed out before stays good.
///
/// A script can't exhaust the stack, the time or the memory of its host: what is nested, chained or
/// listed beyond the limits below is refused with an ERROR line that has its position.
class VELMORA_EXPORT ScriptParser {
public:
    VELMORA_MEM_ACCOUNT("ScriptParser")

    /// How many bytes a script may have. A longer one is refused as a whole.
    static constexpr std::size_t MaxScriptSize = std::size_t{1} << 25;

    /// How many parentheses, brackets, braces, calls and unary plus may stand inside each other.
    static constexpr std::size_t MaxNesting = 1000;

    /// How many operators may work on each other's results in one definition, as in a + a + a.
    static constexpr std::size_t MaxOperatorDepth = 100000;

    /// How many definitions, arguments, elements and sides of operators one script may have
    /// together. Each takes up to three kilobytes while the script is linked. A script that has
    /// more by its commas and equals signs alone is refused as a whole, ahead of its first
    /// definition.
    static constexpr std::size_t MaxOperands = std::size_t{1} << 20;

    /// How many indices one range of a slice may list.
    static constexpr std::size_t MaxRangeSize = std::size_t{1} << 20;

    /// How many indices the ranges of one script may list together: a dozen characters make a list
    /// of megabytes.
    static constexpr std::size_t MaxRangesSize = std::size_t{1} << 22;

    /// How many indices and ranges one slice may have. They are joined one by one, so that each
    /// holds all those ahead of it.
    static constexpr std::size_t MaxIndices = 4096;

    /// A statement nested up to this depth reports a missing token once for each alternative of the
    /// grammar that misses it. Each level can double the reports and the time, so that in a
    /// statement nested deeper what has failed at a place isn't tried there again.
    static constexpr std::size_t MaxRepeatedNesting = 16;

    ScriptParser();
    /// Member by member: the copy shares the state of reading and goes on from the same position.
    /// The parser that was initialized must outlive it.
    ScriptParser(const ScriptParser& in_Other);
    ScriptParser& operator=(const ScriptParser& in_Other);
    virtual ~ScriptParser();

    /// Reads the whole stream, and clears the stream's `skipws`. The script's name is the stem of
    /// `in_szScriptName`, which may have a directory and an extension; `in_szFileDirectory` is what
    /// "$FILE_DIR" stands for in texts. False only for a name without a stem. A stream that can't
    /// be read is an empty script.
    bool initialize(std::istream& inout_Stream, const char* in_szScriptName,
                    const char* in_szFileDirectory);

    /// The next definition, named SCRIPT.NAME; null at the end of the script and behind an error.
    Handle<Expression> getExpression();

    /// Whether a statement has failed.
    bool failed() const { return m_bFailed; }

    /// The stem of the name that `initialize` was given.
    const char* getScriptName() const { return m_strScriptName.c_str(); }

protected:
    /// Copies a text with the directory of the script in the place of each "$FILE_DIR". True.
    bool replaceMacros(const std::string& in_strText, std::string& out_strText) const;

private:
    /// The grammar and its actions, which write into the fields below.
    class VELMORA_HIDDEN ScriptParserImpl;

    Handle<Expression> endScript();

    Handle<ScriptParserImpl> m_pImpl;
    bool m_bInitialized = false;
    std::string m_strScriptName;
    std::string m_strFileDirectory;
    std::vector<char> m_vScriptText;
    bool m_bFailed = false;
    Handle<Expression> m_pSavedExpression;
    /// The function that was defined last; null behind a variable.
    Handle<Function> m_pCurrentFunction;
    CountedObjPtr<ScriptIterator> m_pLastNamePosition;
    CountedObjPtr<ScriptIterator> m_pCurrentPosition;
    CountedObjPtr<ScriptIterator> m_pEndPosition;
};

} // namespace Velmora::Math::Xpr
