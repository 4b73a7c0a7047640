// What each frame of a tape says about itself, one JSON object a frame.
#pragma once

#include "platform/deck/Tape.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace merro::host {

/// Frames, counted from 0; both ends are included.
struct FrameRange {
    std::int64_t first = 0;
    std::int64_t last = INT64_MAX;
};

/// "A-B", "A-" or "A". Throws Failure (usage) for any other form, or when B lies before A.
[[nodiscard]] FrameRange parseFrameRange(const std::string& text);

/// {"frame", "offset", "size", "system", "timecode", "timecodeType", "recordingDate", "recordingTime",
/// "aspectRatio", "stillPicture", "interlaced", "pixelSampling", "sequence"}. Timecode and its type (the
/// number of the frame rate, 1 is 25 and 3 is 30 frames a second) are what most sequences of the frame say;
/// from recordingDate on it is what the sequence says at which the search for a date ended. `offset` is null
/// where the frame does not lie in a file at one place, "sequence" where no sequence could be read. No line
/// break.
[[nodiscard]] std::string frameJson(std::int64_t index, const platform::deck::TapeFrame& frame);

/// One line for people under headingForPeople().
[[nodiscard]] std::string frameLine(std::int64_t index, const platform::deck::TapeFrame& frame);
[[nodiscard]] std::string headingForPeople();

/// Hands over each frame of the range that is on the tape, blank stretches left out; `receiver` answers
/// whether to go on. The number of frames handed over.
std::int64_t
forEachFrame(platform::deck::Tape& tape, const FrameRange& range,
             const std::function<bool(std::int64_t, const platform::deck::TapeFrame&)>& receiver);

} // namespace merro::host
