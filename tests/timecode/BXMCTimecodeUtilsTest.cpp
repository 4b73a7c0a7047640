#include "timecode/BXMCTimecodeUtils.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace merro {
namespace {

using Utils = BXMCTimecodeUtils;

SMPTETime timecode(int hours, int minutes, int seconds, int frames, std::uint32_t type = kSMPTETimeType25) {
    SMPTETime time;
    time.mType = type;
    time.mHours = static_cast<std::int16_t>(hours);
    time.mMinutes = static_cast<std::int16_t>(minutes);
    time.mSeconds = static_cast<std::int16_t>(seconds);
    time.mFrames = static_cast<std::int16_t>(frames);
    return time;
}

TimecodeValue boxed(int hours, int minutes, int seconds, int frames, std::uint32_t type = 0) {
    return TimecodeValue::valueWithSMPTETime(timecode(hours, minutes, seconds, frames, type));
}

SMPTETime stepped(int count, const SMPTETime& from) {
    return Utils::addNbFrameToTimecode(count, from);
}

TEST(MaxFrameForTimecode, IsTheFrameRateOfTheType) {
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, kSMPTETimeType24)), 24);
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, kSMPTETimeType25)), 25);
    for (const std::uint32_t type :
         {kSMPTETimeType30Drop, kSMPTETimeType30, kSMPTETimeType2997, kSMPTETimeType2997Drop})
        EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, type)), 30) << type;
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, kSMPTETimeType60)), 60);
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, kSMPTETimeType5994)), 60);
}

TEST(MaxFrameForTimecode, OfATypeThatDoesNotExistIsThirty) {
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, 8)), 30);
    EXPECT_EQ(Utils::maxFrameForTimecode(timecode(0, 0, 0, 0, 9)), 30);
}

TEST(NullTimecode, IsAllZero) {
    EXPECT_EQ(nullTimecode, SMPTETime{});
}

TEST(AddNbFrame, StaysWithinTheSecondWhenItCan) {
    EXPECT_EQ(stepped(3, timecode(1, 2, 3, 4)), timecode(1, 2, 3, 7));
    EXPECT_EQ(stepped(-4, timecode(1, 2, 3, 4)), timecode(1, 2, 3, 0));
}

TEST(AddNbFrame, CarriesIntoSecondsMinutesAndHours) {
    EXPECT_EQ(stepped(1, timecode(0, 0, 0, 24)), timecode(0, 0, 1, 0));
    EXPECT_EQ(stepped(1, timecode(0, 0, 59, 24)), timecode(0, 1, 0, 0));
    EXPECT_EQ(stepped(1, timecode(0, 59, 59, 24)), timecode(1, 0, 0, 0));
}

TEST(AddNbFrame, CarriesManySeconds) {
    // 3700 seconds of 25 frames and 6 frames: one hour, one minute, forty seconds
    EXPECT_EQ(stepped(3700 * 25 + 6, timecode(0, 0, 0, 0)), timecode(1, 1, 40, 6));
}

TEST(AddNbFrame, ReducesFramesThatAreTooManyAlready) {
    EXPECT_EQ(stepped(0, timecode(0, 0, 0, 60)), timecode(0, 0, 2, 10));
}

TEST(AddNbFrame, NeverWrapsHours) {
    EXPECT_EQ(stepped(1, timecode(23, 59, 59, 24)), timecode(24, 0, 0, 0));
}

TEST(AddNbFrame, GivesDropFrameNoSpecialTreatment) {
    EXPECT_EQ(stepped(1, timecode(0, 0, 59, 29, kSMPTETimeType30Drop)),
              timecode(0, 1, 0, 0, kSMPTETimeType30Drop));
}

TEST(AddNbFrame, BackOverASecondEndsInTheUpperRangeOneSecondEarlier) {
    // 5 - 10 = -5; +25 = 20, still below 25; +25 = 45, two seconds taken
    EXPECT_EQ(stepped(-10, timecode(0, 0, 10, 5)), timecode(0, 0, 8, 45));
    // -25 + 25 = 0, still below 25; +25 = 25
    EXPECT_EQ(stepped(-25, timecode(0, 0, 10, 0)), timecode(0, 0, 8, 25));
}

TEST(AddNbFrame, BorrowsFromMinutesAndHours) {
    // -1 + 25 + 25 = 49; two seconds before 01:00:00
    EXPECT_EQ(stepped(-1, timecode(1, 0, 0, 0)), timecode(0, 59, 58, 49));
    EXPECT_EQ(stepped(-1, timecode(0, 0, 0, 0)), timecode(-1, 59, 58, 49));
}

TEST(AddNbFrame, KeepsEverythingButTheTimeFields) {
    SMPTETime from = timecode(1, 2, 3, 4, kSMPTETimeType30);
    from.mFlags = 7;
    from.mCounter = 11;
    from.mSubframes = 3;
    from.mSubframeDivisor = 80;

    const SMPTETime to = stepped(100, from);

    EXPECT_EQ(to.mType, kSMPTETimeType30);
    EXPECT_EQ(to.mFlags, 7U);
    EXPECT_EQ(to.mCounter, 11U);
    EXPECT_EQ(to.mSubframes, 3);
    EXPECT_EQ(to.mSubframeDivisor, 80);
}

TEST(AddNbFrame, CutsFieldsTo16Bits) {
    EXPECT_EQ(stepped(1, timecode(32767, 59, 59, 24)), timecode(-32768, 0, 0, 0));
}

TEST(CompareTimecodes, IsDecidedByTheFirstFieldThatDiffers) {
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(2, 0, 0, 0), timecode(1, 59, 59, 24)), 1);
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(1, 1, 59, 24), timecode(1, 2, 0, 0)), -1);
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(1, 1, 2, 0), timecode(1, 1, 1, 24)), 1);
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(1, 1, 1, 3), timecode(1, 1, 1, 4)), -1);
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(1, 2, 3, 4), timecode(1, 2, 3, 4)), 0);
}

TEST(CompareTimecodes, IsSigned) {
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(-1, 59, 59, 0), timecode(0, 0, 0, 0)), -1);
}

TEST(CompareTimecodes, IgnoresAllButTheTimeFields) {
    SMPTETime other = timecode(1, 2, 3, 4, kSMPTETimeType30);
    other.mFlags = 1;
    other.mCounter = 2;
    other.mSubframes = 3;
    other.mSubframeDivisor = 4;
    EXPECT_EQ(Utils::timecodeCompareWith(timecode(1, 2, 3, 4), other), 0);
}

TEST(GenerateTimecode, FromNumbersTakesThemAsTheyAre) {
    EXPECT_EQ(Utils::generateTimecodeValueWithHourMinuteSecondFrame(30, 70, -1, 99), boxed(30, 70, -1, 99));
}

TEST(GenerateTimecode, FromTextSplitsAtColonsAndDots) {
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("01:02:03:04"), boxed(1, 2, 3, 4));
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("01:02:03.04"), boxed(1, 2, 3, 4));
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("01.02.03.04"), boxed(1, 2, 3, 4));
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("1:2:3:4"), boxed(1, 2, 3, 4));
}

TEST(GenerateTimecode, FromTextReadsLeadingDigits) {
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("12h:x: 7:-5f"), boxed(12, 0, 7, -5));
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString(":::"), boxed(0, 0, 0, 0));
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("99:99:99:99"), boxed(99, 99, 99, 99));
}

TEST(GenerateTimecode, FromTextIgnoresWhatFollowsTheFourthComponent) {
    EXPECT_EQ(Utils::generateTimecodeValueWithTimecodeString("1:2:3:4:5"), boxed(1, 2, 3, 4));
}

TEST(GenerateTimecode, FromTextOfFewerThanFourComponentsRaises) {
    EXPECT_THROW((void)Utils::generateTimecodeValueWithTimecodeString("10:20:30"), std::out_of_range);
    EXPECT_THROW((void)Utils::generateTimecodeValueWithTimecodeString(""), std::out_of_range);
}

TimecodeValue sum(const TimecodeValue& first, const TimecodeValue& second, int timebase) {
    return Utils::addTimecodeToTimecodeWithTimebase(first, second, timebase);
}

TEST(AddTimecode, CarriesASecondButLeavesTheFrames) {
    EXPECT_EQ(sum(boxed(0, 0, 0, 20), boxed(0, 0, 0, 10), 25), boxed(0, 0, 1, 30));
}

TEST(AddTimecode, CarriesNothingFromAFieldThatIsExactlyFull) {
    EXPECT_EQ(sum(boxed(0, 0, 0, 20), boxed(0, 0, 0, 5), 25), boxed(0, 0, 0, 25));
    EXPECT_EQ(sum(boxed(0, 0, 30, 0), boxed(0, 0, 30, 0), 25), boxed(0, 0, 60, 0));
    EXPECT_EQ(sum(boxed(0, 30, 0, 0), boxed(0, 30, 0, 0), 25), boxed(0, 60, 0, 0));
}

TEST(AddTimecode, CarriesOnceEach) {
    EXPECT_EQ(sum(boxed(0, 0, 31, 0), boxed(0, 0, 30, 0), 25), boxed(0, 1, 1, 0));
    EXPECT_EQ(sum(boxed(0, 31, 0, 0), boxed(0, 30, 0, 0), 25), boxed(1, 1, 0, 0));
    EXPECT_EQ(sum(boxed(0, 0, 100, 0), boxed(0, 0, 100, 0), 25), boxed(0, 1, 140, 0));
    EXPECT_EQ(sum(boxed(0, 100, 0, 0), boxed(0, 100, 0, 0), 25), boxed(1, 140, 0, 0));
    EXPECT_EQ(sum(boxed(0, 0, 0, 40), boxed(0, 0, 0, 40), 25), boxed(0, 0, 1, 80));
    // 60 seconds and 26 frames: 61 seconds carry a minute, 61 minutes an hour
    EXPECT_EQ(sum(boxed(0, 60, 60, 13), boxed(0, 0, 0, 13), 25), boxed(1, 1, 1, 26));
    EXPECT_EQ(sum(boxed(20, 0, 0, 0), boxed(20, 0, 0, 0), 25), boxed(40, 0, 0, 0));
}

TEST(AddTimecode, WithTimebaseZeroTakesTheFirstValuesType) {
    EXPECT_EQ(sum(boxed(0, 0, 0, 14, kSMPTETimeType25), boxed(0, 0, 0, 14, kSMPTETimeType30), 0),
              boxed(0, 0, 1, 28));
    EXPECT_EQ(sum(boxed(0, 0, 0, 14, kSMPTETimeType30), boxed(0, 0, 0, 14, kSMPTETimeType25), 0),
              boxed(0, 0, 0, 28));
}

TEST(AddTimecode, CountsAMissingValueAsZeroOfTwentyFourFrames) {
    EXPECT_EQ(sum({}, boxed(0, 0, 0, 25, kSMPTETimeType25), 0), boxed(0, 0, 1, 25));
    EXPECT_EQ(sum(boxed(1, 2, 3, 4), {}, 25), boxed(1, 2, 3, 4));
}

TimecodeValue difference(const TimecodeValue& first, const TimecodeValue& second, int timebase) {
    return Utils::subTimecodeFromTimecodeWithTimebase(first, second, timebase);
}

TEST(SubTimecode, IsTheSecondMinusTheFirst) {
    EXPECT_EQ(difference(boxed(1, 2, 3, 4), boxed(2, 4, 6, 8), 25), boxed(1, 2, 3, 4));
}

TEST(SubTimecode, BorrowsFromEachField) {
    EXPECT_EQ(difference(boxed(0, 0, 0, 1), boxed(1, 0, 0, 0), 25), boxed(0, 59, 59, 24));
    EXPECT_EQ(difference(boxed(0, 0, 0, 1), boxed(0, 0, 2, 0), 25), boxed(0, 0, 1, 24));
    EXPECT_EQ(difference(boxed(0, 0, 1, 0), boxed(0, 2, 0, 0), 25), boxed(0, 1, 59, 0));
    EXPECT_EQ(difference(boxed(0, 1, 0, 0), boxed(2, 0, 0, 0), 25), boxed(1, 59, 0, 0));
}

TEST(SubTimecode, HasNegativeHoursWhenTheFirstIsLater) {
    EXPECT_EQ(difference(boxed(0, 0, 1, 0), boxed(0, 0, 0, 0), 25), boxed(-1, 59, 59, 0));
}

TEST(SubTimecode, BorrowsOnceEach) {
    EXPECT_EQ(difference(boxed(0, 0, 0, 60), boxed(0, 0, 5, 0), 25), boxed(0, 0, 4, -35));
    EXPECT_EQ(difference(boxed(0, 0, 100, 0), boxed(0, 5, 0, 0), 25), boxed(0, 4, -40, 0));
    EXPECT_EQ(difference(boxed(0, 100, 0, 0), boxed(5, 0, 0, 0), 25), boxed(4, -40, 0, 0));
}

TEST(SubTimecode, WithTimebaseZeroTakesTheTypeOfTheOneSubtracted) {
    EXPECT_EQ(difference(boxed(0, 0, 0, 1, kSMPTETimeType30), boxed(0, 0, 1, 0, kSMPTETimeType25), 0),
              boxed(0, 0, 0, 29));
    EXPECT_EQ(difference({}, boxed(0, 0, 1, -1), 0), boxed(0, 0, 0, 23));
}

TEST(TimecodeAsFrames, CountsEveryField) {
    // 3600 + 120 + 3 = 3723 seconds of 25 frames, and 4
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase(boxed(1, 2, 3, 4), 25), 93079);
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase(boxed(0, 0, -1, 0), 25), -25);
}

TEST(TimecodeAsFrames, WithTimebaseZeroTakesTheValuesType) {
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase(boxed(0, 0, 2, 1, kSMPTETimeType30), 0), 61);
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase(boxed(0, 0, 2, 1), 0), 49);
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase({}, 0), 0);
}

TEST(TimecodeAsFrames, WrapsAroundIn32Bits) {
    // 32767 h of 60 frames are 7077672000 frames; less 2^33 that is -1512262592
    EXPECT_EQ(Utils::timecodeValueAsFramesWithTimebase(boxed(32767, 0, 0, 0), 60), -1512262592);
}

TEST(TimecodeValue, IsComparedByContentAndMayBeMissing) {
    EXPECT_EQ(boxed(1, 2, 3, 4), boxed(1, 2, 3, 4));
    const TimecodeValue missing;
    EXPECT_FALSE(boxed(0, 0, 0, 0) == missing);
    EXPECT_EQ(missing.SMPTETimeValue(), nullTimecode);
}

} // namespace
} // namespace merro
