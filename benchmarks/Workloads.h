#pragma once

#include "Report.h"

namespace Velmora::Benchmarks {

/// Each measures one kind of work beside its references and adds to the report. Throws
/// `WrongResult` if the library or a reference computes something else than it should.

/// `((a*x + b*x) - c*x) / d` over frames: chains of operators.
void measureElements(Report& inout_Report, Effort in_eEffort);

/// `{sum(x), max(x), averagePower(x)}` over frames.
void measureSummary(Report& inout_Report, Effort in_eEffort);

/// 32 features that have nearly all in common.
void measureSharing(Report& inout_Report, Effort in_eEffort);

/// Trees of operators over single numbers.
void measureTrees(Report& inout_Report, Effort in_eEffort);

/// A detector of voice and tones.
void measureDetector(Report& inout_Report, Effort in_eEffort);

/// A tone's share of a frame, beside a Goertzel loop.
void measureCorrelator(Report& inout_Report, Effort in_eEffort);

/// 10,000 definitions, each from the two ahead of it: from the text to the frames.
void measureChain(Report& inout_Report, Effort in_eEffort);

/// The stages of loading, for scripts of several sizes and orders.
void measureLoading(Report& inout_Report, Effort in_eEffort);

/// How soon a script that is too large, too deep or without an end is refused.
void measureRefusals(Report& inout_Report, Effort in_eEffort);

/// What a graph that is ready for its frames takes.
void measureMemory(Report& inout_Report, Effort in_eEffort);

} // namespace Velmora::Benchmarks
