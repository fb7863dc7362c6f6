#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <unordered_map>

#include <boost/spirit/include/classic_exceptions.hpp>

#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/ScriptParser.h>

#include "ParsedNode.h"
#include "ScriptIterator.h"

namespace Velmora::Math::Xpr {

/// A statement that the grammar has no way to go on with: ends the script with this text.
using ScriptSyntaxError = boost::spirit::classic::parser_error<const char*, ScriptIterator>;

/// Keeps the statements of a script from nesting without bounds and from using up the time.
///
/// Two rules that a factor tries at one place, one after the other, may read the whole text of the
/// factor before they fail, so that each level of nesting can double the work. In a statement that
/// is nested deep, and once a script has caused much of such work, what a rule came to at a place
/// is remembered instead.
class StatementGuard {
public:
    /// Repeated trials in one script from which on results are remembered, however flat the
    /// statement: what one of `ScriptParser::MaxRepeatedNesting` levels can need.
    static constexpr std::size_t MaxRepeatedTrials = std::size_t{4}
                                                     << ScriptParser::MaxRepeatedNesting;
    /// The same for the characters that repeated trials read, of which long names and texts have
    /// many: what takes about a second.
    static constexpr std::size_t MaxRepeatedText = std::size_t{64} << 20;

    /// The rules that are tried at one place.
    enum class Rule { IfOperation, FunctionCall };

    /// What a rule came to at a place, where it ended if it matched, and the place behind the last
    /// name on its way if there was one.
    struct Result {
        bool m_bHit = false;
        ParsedNode<Expression> m_Value;
        ScriptIterator m_End;
        bool m_bNamed = false;
        ScriptIterator m_LastName;
    };

    /// One statement: nothing is remembered beyond it.
    class Statement {
    public:
        explicit Statement(StatementGuard& inout_Guard) : m_Guard(inout_Guard) {}
        ~Statement();
        Statement(const Statement&) = delete;
        Statement& operator=(const Statement&) = delete;

    private:
        StatementGuard& m_Guard;
    };

    /// One level of nesting, for the time of its life. Throws `ScriptSyntaxError` for one too many.
    class Level {
    public:
        Level(StatementGuard& inout_Guard, const ScriptIterator& in_Position);
        ~Level() { --m_Guard.m_uiLevel; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        StatementGuard& m_Guard;
    };

    class Trial;

private:
    struct RuleAtPlace {
        const char* m_pPlace;
        Rule m_Rule;
        friend bool operator==(const RuleAtPlace& in_A, const RuleAtPlace& in_B) {
            return in_A.m_pPlace == in_B.m_pPlace && in_A.m_Rule == in_B.m_Rule;
        }
    };
    struct RuleAtPlaceHash {
        std::size_t operator()(const RuleAtPlace& in_Key) const {
            return std::hash<const char*>()(in_Key.m_pPlace) * 2 +
                   static_cast<std::size_t>(in_Key.m_Rule);
        }
    };

    bool remembersResults() const {
        return m_bDeep || m_uiRepeatedTrials > MaxRepeatedTrials ||
               m_uiRepeatedText > MaxRepeatedText;
    }

    std::size_t m_uiLevel = 0;
    std::size_t m_uiLevelsEntered = 0;
    bool m_bDeep = false;
    std::size_t m_uiRepeatedTrials = 0;
    std::size_t m_uiRepeatedText = 0;
    /// The farthest place at which each rule was tried.
    std::array<const char*, 2> m_Farthest{};
    std::unordered_map<RuleAtPlace, Result, RuleAtPlaceHash> m_Results;
};

/// One way through a rule at a place.
class StatementGuard::Trial {
public:
    /// With the characters that have been read so far.
    Trial(StatementGuard& inout_Guard, Rule in_Rule, const ScriptIterator& in_Place,
          std::size_t in_uiTextRead);
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    /// The remembered result, with which nothing needs to be tried; null for none.
    const Result* findResult() const;
    /// The result of having tried, with the characters that have been read by now.
    void finish(const Result& in_Result, std::size_t in_uiTextRead);

private:
    StatementGuard& m_Guard;
    RuleAtPlace m_Key;
    bool m_bRepeated;
    std::size_t m_uiLevelsBefore;
    std::size_t m_uiTextBefore;
    std::size_t m_uiRepeatedTextBefore;
};

} // namespace Velmora::Math::Xpr
