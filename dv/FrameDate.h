// The recording date of a frame: its DIF sequences searched in order until one has it.
//
// Cameras write date and time into the subcode of the second half of the sequences only. Any thread.
#pragma once

#include "platform/Date.h"
#include "platform/FrameBytes.h"
#include "timecode/DVFrameCaptureDateTime.h"

namespace merro {

/// What the search found, as the sequence said that ended it, or the last one searched when none had a date.
/// A sequence that cannot be read at all says nothing.
struct FrameDate {
    platform::DateRef date; ///< null unless a sequence had both date and time

    /// The recording date and time of that sequence, either of which may be missing; null when both are.
    DVFrameCaptureDateTimeRef captureDateTime;
    int aspectRatio = 0;    ///< aspect-ratio code: 0 is 16/9, 1 is 4/3
    int pixelSampling = -1; ///< 0, 4 or -1
    bool stillPicture = false;
    bool interlaced = false; ///< DVDifSequence::interlaced, the inverse of the pack's flag
    int sequenceIndex = -1;  ///< which sequence that is; -1 when none could be read
};

/// Decodes the sequences 0 to 9 of `frame` until one yields a date. A sequence that lies outside the frame,
/// or whose header block names one that does, costs one line in the process log, and the next one is tried.
/// Never throws for what is in the frame.
[[nodiscard]] FrameDate findFrameDate(const platform::FrameBytes& frame);

} // namespace merro
