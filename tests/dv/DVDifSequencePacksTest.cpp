#include "dv/DVDifSequence.h"
#include "tests/dv/HandMadeFrame.h"

#include <gtest/gtest.h>

#include <tuple>

namespace merro {
namespace {

using test::HandMadeFrame;
using test::PackBytes;

DVDifSequence decoded(const HandMadeFrame& made, unsigned index = 0) {
    DVDifSequence sequence(made.frame(), index);
    sequence.decodeSequence();
    return sequence;
}

DVDifSequence decodedPack(const PackBytes& pack) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.putSubcode(0, 0, pack);
    return decoded(made);
}

void expectTime(const SMPTETime& time, int hours, int minutes, int seconds, int frames) {
    EXPECT_EQ(time.mHours, hours);
    EXPECT_EQ(time.mMinutes, minutes);
    EXPECT_EQ(time.mSeconds, seconds);
    EXPECT_EQ(time.mFrames, frames);
}

TEST(TimecodePack, HoldsFramesSecondsMinutesHours) {
    const DVDifSequence sequence = decodedPack({0x13, 0x24, 0x59, 0x59, 0x23});
    EXPECT_TRUE(sequence.timecodeOk());
    expectTime(sequence.timeCode(), 23, 59, 59, 24);
}

TEST(TimecodePack, HasFlagBitsAboveItsDigitsThatDoNotCount) {
    expectTime(decodedPack({0x13, 0xE4, 0xD9, 0xD9, 0xE3}).timeCode(), 23, 59, 59, 24);
}

TEST(TimecodePack, OfACameraIsRead) {
    // 525/60 Digital8: 00:00:02:17, drop and colour bits set
    expectTime(decodedPack({0x13, 0xD7, 0x82, 0x80, 0xC0}).timeCode(), 0, 0, 2, 17);
}

TEST(TimecodePack, IsFoundInAnyOfTheTwelveSyncBlocks) {
    for (unsigned syncBlock = 0; syncBlock < 12; ++syncBlock) {
        HandMadeFrame made(HandMadeFrame::size625);
        made.putSubcode(0, syncBlock, {0x13, 0x04, 0x03, 0x02, 0x01});
        expectTime(decoded(made).timeCode(), 1, 2, 3, 4);
    }
}

TEST(TimecodePack, IsOverruledByALaterOne) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.putSubcode(0, 0, {0x13, 0x01, 0, 0, 0}).putSubcode(0, 5, {0x13, 0x02, 0, 0, 0});
    EXPECT_EQ(decoded(made).timeCode().mFrames, 2);
    made.putSubcode(0, 11, {0x13, 0x03, 0, 0, 0});
    EXPECT_EQ(decoded(made).timeCode().mFrames, 3);
}

TEST(TimecodePack, IsTheSameOneWhenDecodedAlone) {
    for (unsigned last = 0; last < 12; ++last) {
        HandMadeFrame made(HandMadeFrame::size625);
        for (unsigned syncBlock = 0; syncBlock <= last; syncBlock += last == 0 ? 1 : last)
            made.putSubcode(0, syncBlock,
                            {0x13, static_cast<std::uint8_t>(syncBlock == last ? 7 : 3), 0, 0, 0});
        DVDifSequence sequence(made.frame(), 0);
        sequence.decodeTimecode();
        EXPECT_EQ(sequence.timeCode().mFrames, 7) << last;
        EXPECT_EQ(sequence.timeCode(), decoded(made).timeCode()) << last;
    }
}

void expectDate(const DVDifSequence& sequence, int year, int month, int day) {
    ASSERT_NE(sequence.captureDateTime(), nullptr);
    EXPECT_TRUE(sequence.captureDateTime()->isDateSet());
    EXPECT_EQ(sequence.captureDateTime()->year(), year);
    EXPECT_EQ(sequence.captureDateTime()->monthOfYear(), month);
    EXPECT_EQ(sequence.captureDateTime()->dayOfMonth(), day);
}

TEST(RecordingDatePack, HoldsDayMonthYear) {
    const DVDifSequence sequence = decodedPack({0x62, 0xFF, 0x31, 0x12, 0x99});
    expectDate(sequence, 1999, 12, 31);
    EXPECT_FALSE(sequence.captureDateTime()->isTimeSet());
    EXPECT_EQ(sequence.date(), nullptr);
}

// The century turns at 25: a host's catalogue has the tapes of 1995 to 2024 in order.
TEST(RecordingDatePack, HasItsYearBetween1925And2024) {
    expectDate(decodedPack({0x62, 0x00, 0x01, 0x01, 0x24}), 2024, 1, 1);
    expectDate(decodedPack({0x62, 0x00, 0x01, 0x01, 0x25}), 1925, 1, 1);
    expectDate(decodedPack({0x62, 0x00, 0x01, 0x01, 0x00}), 2000, 1, 1);
}

TEST(RecordingDatePack, HasBitsAboveItsDigitsThatDoNotCount) {
    expectDate(decodedPack({0x62, 0xFF, 0xC8, 0xE7, 0x24}), 2024, 7, 8); // a camera's
    expectDate(decodedPack({0x62, 0xFF, 0xF1, 0xF2, 0x05}), 2005, 12, 31);
}

TEST(RecordingDatePack, OfJunkIsReadAsItStands) {
    expectDate(decodedPack({0x62, 0xFF, 0xFF, 0xFF, 0xFF}), 2065, 25,
               45); // 15 + 10 x 15 = 165 years after 1900
    expectDate(decodedPack({0x62, 0xFF, 0xC0, 0xE0, 0x05}), 2005, 0, 0);
}

void expectTimeOfDay(const DVDifSequence& sequence, int hours, int minutes, int seconds) {
    ASSERT_NE(sequence.captureDateTime(), nullptr);
    EXPECT_TRUE(sequence.captureDateTime()->isTimeSet());
    EXPECT_EQ(sequence.captureDateTime()->hourOfDay(), hours);
    EXPECT_EQ(sequence.captureDateTime()->minuteOfHour(), minutes);
    EXPECT_EQ(sequence.captureDateTime()->secondOfMinute(), seconds);
}

TEST(RecordingTimePack, HoldsSecondsMinutesHours) {
    const DVDifSequence sequence = decodedPack({0x63, 0x12, 0x09, 0x05, 0x23});
    expectTimeOfDay(sequence, 23, 5, 9);
    EXPECT_FALSE(sequence.captureDateTime()->isDateSet());
    EXPECT_EQ(sequence.date(), nullptr);
}

TEST(RecordingTimePack, HasBitsAboveItsDigitsThatDoNotCount) {
    expectTimeOfDay(decodedPack({0x63, 0xFF, 0xD8, 0xD5, 0xD9}), 19, 55, 58); // a camera's
}

TEST(RecordingPacks, MakeADateTogetherInEitherOrder) {
    const PackBytes date{0x62, 0xFF, 0x17, 0x03, 0x05};
    const PackBytes time{0x63, 0xFF, 0x22, 0x03, 0x14};
    for (const auto& [first, second] : {std::pair(date, time), std::pair(time, date)}) {
        HandMadeFrame made(HandMadeFrame::size625);
        made.putSubcode(0, 1, first).putSubcode(0, 8, second);
        const DVDifSequence sequence = decoded(made);
        expectDate(sequence, 2005, 3, 17);
        expectTimeOfDay(sequence, 14, 3, 22);
        EXPECT_EQ(sequence.date()->instant(),
                  platform::dateFromCalendar({2005, 3, 17, 14, 3, 22})->instant());
    }
}

TEST(RecordingPacks, AreKeptFromTheFirstOfTheirKind) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.putSubcode(0, 5, {0x62, 0xFF, 0x17, 0x03, 0x05}).putSubcode(0, 6, {0x62, 0xFF, 0x18, 0x04, 0x06});
    made.putSubcode(0, 4, {0x63, 0xFF, 0x22, 0x03, 0x14}).putSubcode(0, 11, {0x63, 0xFF, 0x23, 0x04, 0x15});
    expectDate(decoded(made), 2005, 3, 17);
    expectTimeOfDay(decoded(made), 14, 3, 22);
}

TEST(SubcodePacks, OfOtherKindsAndEmptyOnesAreIgnored) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.putSubcode(0, 0, {0x14, 1, 1, 1, 1}).putSubcode(0, 1, {0x00, 1, 1, 1, 1});
    const DVDifSequence sequence = decoded(made);
    EXPECT_FALSE(sequence.timecodeOk());
    EXPECT_EQ(sequence.captureDateTime(), nullptr);
}

/// Source control and source in the places of an even and of an odd sequence.
DVDifSequence decodedVaux(unsigned index, const PackBytes& control, const PackBytes& source) {
    HandMadeFrame made(HandMadeFrame::size625);
    const unsigned block = index % 2 == 1 ? 3 : 5;
    const unsigned sourceByte = index % 2 == 1 ? 3 : 48;
    made.put(index, block, sourceByte, {source[0], source[1], source[2], source[3], source[4]});
    made.put(index, block, sourceByte + 5, {control[0], control[1], control[2], control[3], control[4]});
    return decoded(made, index);
}

constexpr PackBytes ordinarySource{0x60, 0xFF, 0xFF, 0x20, 0xFF};

TEST(VauxSourceControl, SaysFourToThreeOnlyForDisplayModeZero) {
    for (const unsigned index : {0U, 1U, 4U, 11U}) {
        EXPECT_EQ(decodedVaux(index, {0x61, 0x3F, 0xC8, 0xFC, 0xFF}, ordinarySource).aspectRatio(), 1)
            << index;
        EXPECT_EQ(decodedVaux(index, {0x61, 0x3F, 0xCA, 0xFC, 0xFF}, ordinarySource).aspectRatio(), 0)
            << index;
        EXPECT_EQ(decodedVaux(index, {0x61, 0x3F, 0xC9, 0xFC, 0xFF}, ordinarySource).aspectRatio(), 0)
            << index;
        EXPECT_EQ(decodedVaux(index, {0x61, 0x3F, 0xCC, 0xFC, 0xFF}, ordinarySource).aspectRatio(), 0)
            << index;
    }
    EXPECT_EQ(decodedVaux(0, {0x61, 0, 0x02, 0, 0}, ordinarySource).aspectRatio(), 0);
    EXPECT_EQ(decodedVaux(0, {0x61, 0, 0x00, 0, 0}, ordinarySource).aspectRatio(), 1);
}

TEST(VauxSourceControl, SaysStillWhereBit5IsClear) {
    EXPECT_TRUE(decodedVaux(0, {0x61, 0x3F, 0xC8, 0xDF, 0xFF}, ordinarySource).stillPicture());
    EXPECT_FALSE(decodedVaux(0, {0x61, 0x3F, 0xC8, 0x20, 0xFF}, ordinarySource).stillPicture());
}

// The inverse of the bit: a host that has stored the flag with its clips would see all of them change.
TEST(VauxSourceControl, SaysInterlacedWhereBit4IsClear) {
    EXPECT_TRUE(decodedVaux(0, {0x61, 0x3F, 0xC8, 0xEF, 0xFF}, ordinarySource).interlaced());
    EXPECT_FALSE(decodedVaux(0, {0x61, 0x3F, 0xC8, 0x10, 0xFF}, ordinarySource).interlaced());
}

TEST(VauxSource, SaysThePixelSampling) {
    for (const auto& [byte, sampling] : {std::pair<std::uint8_t, int>{0x00, 0},
                                         {0xE0, 0},
                                         {0x04, 4},
                                         {0x24, 4},
                                         {0x01, -1},
                                         {0x10, -1},
                                         {0x14, -1},
                                         {0xFF, -1}}) {
        for (const unsigned index : {0U, 1U})
            EXPECT_EQ(decodedVaux(index, {0x61, 0, 0, 0, 0}, {0x60, 0xFF, 0xFF, byte, 0xFF}).pixelSampling(),
                      sampling);
    }
}

TEST(VauxPacks, AreReadWhateverTheirType) {
    EXPECT_EQ(decodedVaux(0, {0xFF, 0xFF, 0xC8, 0xFC, 0xFF}, {0xFF, 0xFF, 0xFF, 0x04, 0xFF}).aspectRatio(),
              1);
    EXPECT_EQ(decodedVaux(0, {0xFF, 0xFF, 0xC8, 0xFC, 0xFF}, {0xFF, 0xFF, 0xFF, 0x04, 0xFF}).pixelSampling(),
              4);
}

TEST(VauxPacks, LieWhereTheIndexSaysAlsoWhenTheHeaderNamesAnotherSequence) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.renumber(2, 3).put(3, 5, 48, {0x60, 0xFF, 0xFF, 0x24, 0xFF}); // even place, odd sequence
    EXPECT_EQ(decoded(made, 2).pixelSampling(), 4);
}

} // namespace
} // namespace merro
