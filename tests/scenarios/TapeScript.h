// What is on a tape, told take by take; the frames are made from it.
//
// Frames are counted from 0 as they lie on the tape, blank ones included. Each carries its number in picture
// bytes that nothing but these tests reads, so that a copy of it is known wherever it turns up.
#pragma once

#include "platform/Date.h"
#include "platform/deck/DVFrameBuilder.h"
#include "platform/deck/MemoryTape.h"
#include "platform/SMPTETime.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::test {

using platform::deck::DVFrameBuilder;
using platform::deck::DVSystem;

/// A stretch that the camera recorded in one go.
struct Take {
    int frames = 25;
    std::string timecode = {}; ///< of the first frame, "01:02:03:04", counted on from there; empty: none
    std::string date =
        {}; ///< "2005-03-17 14:00:00", or "14:00:00" of that day; the clock runs on; empty: none
    DVSystem system = DVSystem::System625_50;
    bool isWide = false;
    bool isDropFrame = false;    ///< frames 00 and 01 of each minute but each tenth are left out
    bool timecodeStands = false; ///< every frame has the first one's timecode
    bool clockStands = false;    ///< every frame has the first one's date
};

/// One frame as the tape describes it.
struct ScriptFrame {
    std::size_t sizeBytes = 0; ///< 0: blank tape
    TimecodeValue timecode;
    std::optional<platform::CalendarFields> date;
    DVSystem system = DVSystem::System625_50;
    bool isWide = false;
    std::vector<std::function<void(DVFrameBuilder&)>> damage;
};

class TapeScript {
public:
    TapeScript& take(const Take& take);
    TapeScript& blank(int frames);
    /// Something of `sizeBytes` that is no DV frame.
    TapeScript& foreign(std::size_t sizeBytes = 143'999);
    TapeScript& damage(int frame, std::function<void(DVFrameBuilder&)> damage);

    [[nodiscard]] int length() const { return static_cast<int>(m_frames.size()); }
    [[nodiscard]] const ScriptFrame& at(int index) const {
        return m_frames.at(static_cast<std::size_t>(index));
    }
    [[nodiscard]] ScriptFrame& at(int index) { return m_frames.at(static_cast<std::size_t>(index)); }

    /// The frame as it lies on the tape; null where the tape is blank.
    [[nodiscard]] platform::FrameBytes bytes(int index) const;

    /// All frames in memory, or, of a long tape, made when they are read.
    [[nodiscard]] std::unique_ptr<platform::deck::Tape> tape() const;

    /// The number of a frame, wherever it turns up; -1 when it carries none.
    [[nodiscard]] static int numberOf(std::span<const std::uint8_t> frame);

    /// The numbers of the frames that `file` consists of, each of which stands there byte for byte; ends with
    /// -1 where something else stands.
    [[nodiscard]] std::vector<int> framesIn(std::span<const std::uint8_t> file) const;

private:
    std::vector<ScriptFrame> m_frames;
};

/// "01:02:03:04", for 625/50 or 525/60; missing when empty.
[[nodiscard]] TimecodeValue timecode(const std::string& text, DVSystem system = DVSystem::System625_50);

/// "01:02:03:04", or "" when missing.
[[nodiscard]] std::string text(const TimecodeValue& value);

/// The frames from `first` to `last`, both included.
[[nodiscard]] std::vector<int> frames(int first, int last);

} // namespace merro::test
