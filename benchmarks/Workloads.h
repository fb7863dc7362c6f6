#pragma once

#include "Report.h"

namespace Velmora::Benchmarks {

/// Each measures one kind of work beside its references and adds to the report. Throws
/// `WrongResult` if the library or a reference computes something else than it should.

/// `((a*x + b*x) - c*x) / d` over frames: chains of operators.
void measureElements(Report& inout_Report);

/// `{sum(x), max(x), averagePower(x)}` over frames.
void measureSummary(Report& inout_Report);

/// 32 features that have nearly all in common.
void measureSharing(Report& inout_Report);

/// Trees of operators over single numbers.
void measureTrees(Report& inout_Report);

/// A detector of voice and tones.
void measureDetector(Report& inout_Report);

} // namespace Velmora::Benchmarks
