#pragma once

#include <stdexcept>
#include <string>

#include <velmora/Handle.h>
#include <velmora/LimitedObjPtr.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Evaluator.h>

namespace Velmora::Benchmarks {

/// A result that isn't what it should be: whatever was measured is worth nothing.
class WrongResult : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Is the graph optimised and sealed, or only linked?
enum class Graph { Linked, Optimized };

/// A program that has loaded a script and is ready for its first frame.
class Host {
public:
    /// Throws `WrongResult` for a script that doesn't load; the cause is in the log.
    explicit Host(const std::string& in_strScript, Graph in_eGraph = Graph::Optimized);

    /// By the names that the script gives them. Throws `WrongResult` for an unknown name.
    Handle<Math::Xpr::Variable> getInput(const std::string& in_strName);
    Handle<Math::Xpr::Expression> getFeature(const std::string& in_strName);

private:
    Math::Xpr::Evaluator m_Evaluator;
};

/// An evaluator whose scripts are given as texts.
void configureForTexts(Math::Xpr::Evaluator& out_Evaluator);

/// Errors of scripts go to the standard error.
void showErrors();

/// The value of an expression, without a copy. Null when it can't be computed.
inline const Math::DoubleVector* evaluate(Math::Xpr::Expression& inout_Feature) {
    LimitedObjPtr<Math::DoubleVector> pValue;
    return inout_Feature.evaluate(pValue) ? pValue.get() : nullptr;
}

/// The same, for a check: throws `WrongResult` where there is no value.
const Math::DoubleVector& evaluateOrThrow(Math::Xpr::Expression& inout_Feature);

} // namespace Velmora::Benchmarks
