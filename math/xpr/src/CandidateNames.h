#pragma once

#include <cstddef>
#include <string>

namespace Velmora::Math::Xpr {

/// The names under which the linker seeks what a placeholder stands for, one after the other: the
/// first is mostly found, and the others needn't be made.
///
/// Of a name without a point: "name.name", which is what a script of that name defines under its
/// own name, then "name". Of two parts: "a.b", "b.b", "b". Of more, all that stands behind the
/// first point.
class CandidateNames {
public:
    explicit CandidateNames(const char* in_szName);

    /// False behind the last one.
    bool next(std::string& out_strCandidate);

private:
    /// The name, what stands behind its first point twice, with a point between, and that once: of
    /// a name without a point, all of it.
    enum class Form { Whole, Twice, Rest, None };

    const std::string m_strName;
    std::size_t m_uiRest = 0;
    Form m_eNext = Form::Twice;
};

} // namespace Velmora::Math::Xpr
