#include "platform/deck/TimecodeContinuity.h"

#include <gtest/gtest.h>

namespace merro::platform::deck {
namespace {

TimecodeValue timecode(SMPTETimeType type, int hours, int minutes, int seconds, int frames) {
    SMPTETime time;
    time.mType = type;
    time.mHours = static_cast<std::int16_t>(hours);
    time.mMinutes = static_cast<std::int16_t>(minutes);
    time.mSeconds = static_cast<std::int16_t>(seconds);
    time.mFrames = static_cast<std::int16_t>(frames);
    return TimecodeValue::valueWithSMPTETime(time);
}

TimecodeValue pal(int hours, int minutes, int seconds, int frames) {
    return timecode(kSMPTETimeType25, hours, minutes, seconds, frames);
}

TimecodeValue ntsc(int hours, int minutes, int seconds, int frames) {
    return timecode(kSMPTETimeType30Drop, hours, minutes, seconds, frames);
}

TEST(TimecodeContinuity, theNextFrameRunsOnAndNoOtherDoes) {
    EXPECT_TRUE(timecodeRunsOn(pal(1, 2, 3, 4), pal(1, 2, 3, 5)));
    EXPECT_FALSE(timecodeRunsOn(pal(1, 2, 3, 4), pal(1, 2, 3, 4)));
    EXPECT_FALSE(timecodeRunsOn(pal(1, 2, 3, 4), pal(1, 2, 3, 6)));
    EXPECT_FALSE(timecodeRunsOn(pal(1, 2, 3, 4), pal(0, 0, 0, 0)));
}

TEST(TimecodeContinuity, secondsMinutesHoursAndMidnightRunOn) {
    EXPECT_TRUE(timecodeRunsOn(pal(1, 2, 3, 24), pal(1, 2, 4, 0)));
    EXPECT_TRUE(timecodeRunsOn(pal(13, 59, 59, 24), pal(14, 0, 0, 0)));
    EXPECT_TRUE(timecodeRunsOn(pal(23, 59, 59, 24), pal(0, 0, 0, 0)));
    EXPECT_TRUE(timecodeRunsOn(ntsc(0, 0, 0, 24), ntsc(0, 0, 0, 25)));
}

TEST(TimecodeContinuity, in525LinesAMinuteMayStartAtFrame2) {
    EXPECT_TRUE(timecodeRunsOn(ntsc(0, 0, 59, 29), ntsc(0, 1, 0, 2)));
    EXPECT_TRUE(timecodeRunsOn(ntsc(0, 0, 59, 29), ntsc(0, 1, 0, 0))); // not drop frame
    EXPECT_FALSE(timecodeRunsOn(ntsc(0, 0, 59, 29), ntsc(0, 1, 0, 1)));
    EXPECT_FALSE(timecodeRunsOn(ntsc(0, 0, 58, 29), ntsc(0, 0, 59, 2)));
}

TEST(TimecodeContinuity, everyTenthMinuteStartsAtFrame0) {
    EXPECT_TRUE(timecodeRunsOn(ntsc(0, 9, 59, 29), ntsc(0, 10, 0, 0)));
    EXPECT_FALSE(timecodeRunsOn(ntsc(0, 9, 59, 29), ntsc(0, 10, 0, 2)));
    EXPECT_FALSE(timecodeRunsOn(ntsc(23, 59, 59, 29), ntsc(0, 0, 0, 2)));
}

TEST(TimecodeContinuity, in625LinesNoFrameIsLeftOut) {
    EXPECT_FALSE(timecodeRunsOn(pal(0, 0, 59, 24), pal(0, 1, 0, 2)));
}

TEST(TimecodeContinuity, aTimecodeThatAppearsOrDisappearsDoesNotRunOn) {
    EXPECT_TRUE(timecodeRunsOn({}, {}));
    EXPECT_FALSE(timecodeRunsOn({}, pal(0, 0, 0, 1)));
    EXPECT_FALSE(timecodeRunsOn(pal(0, 0, 0, 0), {}));
}

TEST(TimecodeContinuity, aChangeOfSystemDoesNotRunOn) {
    EXPECT_FALSE(timecodeRunsOn(pal(0, 0, 0, 1), ntsc(0, 0, 0, 2)));
}

} // namespace
} // namespace merro::platform::deck
