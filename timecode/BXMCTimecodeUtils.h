// Arithmetic on SMPTE timecodes: comparing, stepping, adding, subtracting, counting frames, reading text.
//
// Deliberately simple: no drop-frame correction, no wrap at 24 hours. Stateless, any thread; results are
// values. Fields are read as signed 16-bit numbers, computed in 32 bits and stored back cut to 16; nothing is
// range-checked. A missing TimecodeValue counts as 00:00:00:00 of type 0, that is, of 24 frames a second.
#pragma once

#include "platform/SMPTETime.h"

#include <cstdint>
#include <string_view>

namespace merro {

/// All zero: stands for "no timecode" where a record is needed.
inline constexpr SMPTETime nullTimecode{};

class BXMCTimecodeUtils {
public:
    BXMCTimecodeUtils() = delete;

    /// Timecode frames a second, as `mType` says; 30 for a type that does not exist. Drop-frame types count
    /// 30 frames in every second.
    [[nodiscard]] static int maxFrameForTimecode(const SMPTETime& timecode);

    /// `timecode` moved by `count` frames, which may be negative; all but the four time fields is kept. A
    /// step back over the start of a second ends one second earlier than a plain borrow, with frames from the
    /// frame rate to twice it less one: at 25, ten frames back from 00:00:10:05 is 00:00:08:45.
    [[nodiscard]] static SMPTETime addNbFrameToTimecode(int count, const SMPTETime& timecode);

    /// 1 when `first` is the greater, -1 when it is the smaller, 0 when hours, minutes, seconds and frames
    /// are equal.
    [[nodiscard]] static int timecodeCompareWith(const SMPTETime& first, const SMPTETime& second);

    [[nodiscard]] static TimecodeValue generateTimecodeValueWithHourMinuteSecondFrame(std::int16_t hour,
                                                                                      std::int16_t minute,
                                                                                      std::int16_t second,
                                                                                      std::int16_t frame);

    /// Reads "hours:minutes:seconds:frames", each ":" may be a ".". A component that is no number reads as 0,
    /// what follows the fourth is ignored. Throws std::out_of_range when there are fewer than four.
    [[nodiscard]] static TimecodeValue generateTimecodeValueWithTimecodeString(std::string_view text);

    /// The fields of `first` and `second` added one by one, with at most one carry each, and none from a
    /// field that is exactly full; the frames are not reduced by what they carry. `timebase` is in frames a
    /// second; 0 takes it from the type of `first`. The result has type 0.
    [[nodiscard]] static TimecodeValue
    addTimecodeToTimecodeWithTimebase(const TimecodeValue& first, const TimecodeValue& second, int timebase);

    /// `second` minus `first` with at most one borrow each; hours are negative when `first` is the later one.
    /// `timebase` and the result's type as above.
    [[nodiscard]] static TimecodeValue subTimecodeFromTimecodeWithTimebase(const TimecodeValue& first,
                                                                           const TimecodeValue& second,
                                                                           int timebase);

    /// Frames from 00:00:00:00, in 32 bits with wrap-around. `timebase` as above, from `value` itself.
    [[nodiscard]] static std::int32_t timecodeValueAsFramesWithTimebase(const TimecodeValue& value,
                                                                        int timebase);
};

} // namespace merro
