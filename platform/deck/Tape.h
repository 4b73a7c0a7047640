// What lies in the deck: a list of DV frames and blank stretches.
#pragma once

#include "platform/FrameBytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace merro::platform::deck {

struct TapeFrame {
    platform::FrameBytes bytes;    ///< one whole DV frame; null where the tape is blank
    std::int64_t offsetBytes = -1; ///< where the frame lies in its file; -1 where there is no such place
};

/// A stretch of a tape file that is no frame.
struct TapeFinding {
    std::int64_t offsetBytes = 0;
    std::int64_t lengthBytes = 0;
    std::string what; ///< "bytes that are no DV frame", "a frame that is cut short"
};

/// Read by one thread at a time. Frames are counted from 0 and do not change while the tape exists.
class Tape {
public:
    virtual ~Tape() = default;

    /// The frame, or none past the end of the tape. Reading on from where one has read is cheap; going far
    /// ahead for the first time may have to look at what lies between.
    [[nodiscard]] virtual std::optional<TapeFrame> frameAt(std::int64_t index) = 0;

    /// Frames on the tape: exact once the end has been read, an estimate before.
    [[nodiscard]] virtual std::int64_t frameCount() const = 0;
    [[nodiscard]] virtual bool isFrameCountExact() const { return false; }

    /// What was found while reading so far, in tape order. Any thread.
    [[nodiscard]] virtual std::vector<TapeFinding> findings() const { return {}; }
};

} // namespace merro::platform::deck
