// What a movie's header has to say about its frames, read from the first one (IEC 61834-2 and -4, SMPTE
// 314M).
//
// Plain values and functions; any thread.
#pragma once

#include "platform/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace merro::platform::ffmpeg {

inline constexpr std::size_t kFrameBytes525_60 = 120000;
inline constexpr std::size_t kFrameBytes625_50 = 144000;

/// Whether a frame of 25 Mb/s DV has this many bytes.
[[nodiscard]] constexpr bool isFrameSize(std::size_t bytes) {
    return bytes == kFrameBytes525_60 || bytes == kFrameBytes625_50;
}

struct DVFrameFacts {
    bool is525_60 = false; ///< else 625/50
    bool isWide = false;   ///< the picture is meant to be shown at 16:9
    /// 4:1:1 sampling in 625/50 (SMPTE 314M), where IEC 61834 has 4:2:0.
    bool is411 = false;
    bool isDropFrame = false;                    ///< as most timecode packs say; 525/60 only
    std::optional<CalendarFields> recordingDate; ///< as findFrameDate reads it; none when it cannot be true
};

/// `frame` has 120000 or 144000 bytes. What the frame does not say stays as it is in DVFrameFacts{}.
[[nodiscard]] DVFrameFacts factsOfFrame(std::span<const std::uint8_t> frame);

} // namespace merro::platform::ffmpeg
