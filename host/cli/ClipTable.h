// What a run has brought, for people.
//
// Pure functions; any thread. Texts end with a line break each, or are empty.
#pragma once

#include "host/shared/LoggingRun.h"

#include <string>

namespace merro::host {

/// One line a clip: clip, date, start, end, duration, frames lost, movie.
[[nodiscard]] std::string clipTable(const RunResult& result);

/// What of the tape file was no frame, with its place in the file; the first few and how many more.
[[nodiscard]] std::string findingsSummary(const TapeEntry& tape);

/// How much was logged in what time, what is missing, and where everything lies.
[[nodiscard]] std::string runSummary(const RunResult& result, double elapsedSeconds, int framesPerSecond);

} // namespace merro::host
