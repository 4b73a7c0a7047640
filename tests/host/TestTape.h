// Small tapes for tests: grey frames with timecode and recording dates, made without an encoder.
#pragma once

#include "platform/deck/DVFrameBuilder.h"

#include <chrono>
#include <optional>
#include <string>

namespace merro::host::test {

using platform::CalendarFields;
using platform::deck::DVFrameBuilder;
using platform::deck::DVSystem;

/// A run of frames recorded in one go.
struct TestTake {
    int frames = 0;
    std::optional<CalendarFields> date; ///< of the first frame; it runs with the tape
    std::optional<int> timecodeFrame;   ///< of the first frame, counted from 00:00:00:00
};

/// The frames of the takes one after another, 625/50 unless said otherwise.
inline std::string testTape(const std::vector<TestTake>& takes, DVSystem system = DVSystem::System625_50) {
    const int perSecond = system == DVSystem::System625_50 ? 25 : 30;
    std::string bytes;
    for (const TestTake& take : takes) {
        for (int index = 0; index < take.frames; ++index) {
            DVFrameBuilder builder(system);
            if (take.date) {
                CalendarFields date = *take.date;
                date.seconds += index / perSecond;
                builder.setRecordingDateTime(platform::normalisedCalendar(date));
            }
            if (take.timecodeFrame) {
                const int frame = *take.timecodeFrame + index;
                SMPTETime timecode;
                timecode.mFrames = static_cast<std::int16_t>(frame % perSecond);
                timecode.mSeconds = static_cast<std::int16_t>(frame / perSecond % 60);
                timecode.mMinutes = static_cast<std::int16_t>(frame / perSecond / 60);
                builder.setTimecode(timecode);
            }
            builder.setPicture({});
            bytes.append(builder.bytes().begin(), builder.bytes().end());
        }
    }
    return bytes;
}

/// Two takes, of 30 and 10 frames, in 625/50: 14:03:22 from 00:00:00:00, and 15:00:00 from 00:00:01:05.
inline std::string tapeOfTwoTakes() {
    return testTape(
        {{30, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}, {10, CalendarFields{2005, 3, 17, 15, 0, 0}, 30}});
}

} // namespace merro::host::test
