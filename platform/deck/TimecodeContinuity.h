// Whether the tape's timecode runs on from one frame to the next. Pure function, any thread.
#pragma once

#include "platform/SMPTETime.h"

namespace merro::platform::deck {

/// Whether `to` is one frame later than `from`, midnight included. In 525/60 both ways of counting run on:
/// with frames 00 and 01 left out at the start of every minute but each tenth (drop frame, SMPTE 12M), and
/// with all of them. Two missing timecodes run on; one that appears or disappears does not.
[[nodiscard]] bool timecodeRunsOn(const TimecodeValue& from, const TimecodeValue& to);

} // namespace merro::platform::deck
