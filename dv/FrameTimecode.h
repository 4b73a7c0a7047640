// The timecode of a whole frame, decided by a vote of its DIF sequences.
//
// The packs of a damaged frame contradict each other, and the stray one may come first: no single sequence
// can be trusted. Pure function, any thread; logs nothing, and allocates nothing as long as every sequence
// can be read.
#pragma once

#include "platform/FrameBytes.h"
#include "platform/SMPTETime.h"

namespace merro {

/// The timecode that most of the frame's 10 or 12 sequences carry, the earliest sequence winning a tie;
/// missing when none carries one. Hours, minutes, seconds and frames make two timecodes the same; mType is
/// that of the earliest sequence that carries the winner. A sequence that is not inside the frame, or whose
/// header block names one that is not, has no vote.
[[nodiscard]] TimecodeValue frameTimecode(const platform::FrameBytes& frame);

} // namespace merro
