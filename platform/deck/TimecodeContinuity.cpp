#include "platform/deck/TimecodeContinuity.h"

#include <array>

namespace merro::platform::deck {

namespace {

using Digits = std::array<int, 4>; // hours, minutes, seconds, frames

Digits digits(const SMPTETime& time) {
    return {time.mHours, time.mMinutes, time.mSeconds, time.mFrames};
}

Digits nextFrame(Digits time, int framesPerSecond) {
    const std::array<int, 4> limits{24, 60, 60, framesPerSecond};
    for (std::size_t i = limits.size(); i-- > 0;) {
        if (++time[i] < limits[i])
            break;
        time[i] = 0;
    }
    return time;
}

} // namespace

bool timecodeRunsOn(const TimecodeValue& from, const TimecodeValue& to) {
    if (!from || !to)
        return !from && !to;
    const bool is625 = to.SMPTETimeValue().mType == kSMPTETimeType25;
    if (is625 != (from.SMPTETimeValue().mType == kSMPTETimeType25))
        return false;
    Digits expected = nextFrame(digits(from.SMPTETimeValue()), is625 ? 25 : 30);
    const Digits found = digits(to.SMPTETimeValue());
    if (found == expected)
        return true;
    const bool startsMinute = expected[2] == 0 && expected[3] == 0 && expected[1] % 10 != 0;
    expected[3] = 2;
    return !is625 && startsMinute && found == expected;
}

} // namespace merro::platform::deck
