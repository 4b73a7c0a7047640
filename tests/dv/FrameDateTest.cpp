#include "dv/FrameDate.h"

#include "tests/dv/HandMadeFrame.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace merro {
namespace {

using test::HandMadeFrame;
using testing::ElementsAre;
using testing::IsEmpty;

class FindFrameDate : public testing::Test {
protected:
    FindFrameDate() { platform::setProcessLog(&m_log); }
    ~FindFrameDate() override { platform::setProcessLog(nullptr); }

    static void putDate(HandMadeFrame& made, unsigned sequence, std::uint8_t day = 0x17) {
        made.putSubcode(sequence, 1, {0x62, 0xFF, day, 0x03, 0x05});
    }
    static void putTime(HandMadeFrame& made, unsigned sequence) {
        made.putSubcode(sequence, 2, {0x63, 0xFF, 0x22, 0x03, 0x14});
    }
    static void putVaux(HandMadeFrame& made, unsigned sequence, std::uint8_t display, std::uint8_t source) {
        const unsigned block = sequence % 2 == 1 ? 3 : 5;
        const unsigned byte = sequence % 2 == 1 ? 3 : 48;
        made.put(sequence, block, byte, {0x60, 0xFF, 0xFF, source, 0xFF, 0x61, 0x3F, display, 0xCC, 0xFF});
    }

    test::RecordingLog m_log;
};

TEST_F(FindFrameDate, TakesTheFirstSequenceWithDateAndTime) {
    HandMadeFrame made(HandMadeFrame::size625);
    for (const unsigned sequence : {6U, 7U}) {
        putDate(made, sequence, sequence == 6 ? 0x17 : 0x18);
        putTime(made, sequence);
        putVaux(made, sequence, sequence == 6 ? 0xC8 : 0xCA, sequence == 6 ? 0x24 : 0x20);
    }

    const FrameDate found = findFrameDate(made.frame());

    ASSERT_NE(found.date, nullptr);
    EXPECT_EQ(found.date->instant(), platform::dateFromCalendar({2005, 3, 17, 14, 3, 22})->instant());
    EXPECT_EQ(found.captureDateTime->dayOfMonth(), 17);
    EXPECT_EQ(found.sequenceIndex, 6);
    EXPECT_EQ(found.aspectRatio, 1);
    EXPECT_EQ(found.pixelSampling, 4);
    EXPECT_TRUE(found.stillPicture);
    EXPECT_TRUE(found.interlaced);
    EXPECT_THAT(m_log.lines(), IsEmpty());
}

TEST_F(FindFrameDate, AnswersAsTheLastSequenceSearchedWhenThereIsNoDate) {
    HandMadeFrame made(HandMadeFrame::size625);
    putDate(made, 9);
    putVaux(made, 9, 0xC8, 0x24);
    putTime(made, 10); // 10 and 11 are not searched
    putDate(made, 10);

    const FrameDate found = findFrameDate(made.frame());

    EXPECT_EQ(found.date, nullptr);
    EXPECT_EQ(found.sequenceIndex, 9);
    EXPECT_TRUE(found.captureDateTime->isDateSet());
    EXPECT_FALSE(found.captureDateTime->isTimeSet());
    EXPECT_EQ(found.aspectRatio, 1);
    EXPECT_EQ(found.pixelSampling, 4);
}

TEST_F(FindFrameDate, NeedsDateAndTimeInOneSequence) {
    HandMadeFrame made(HandMadeFrame::size525);
    putDate(made, 5);
    putTime(made, 6);
    putDate(made, 8);
    putTime(made, 8);
    EXPECT_EQ(findFrameDate(made.frame()).sequenceIndex, 8);
}

TEST_F(FindFrameDate, TriesTheNextSequenceAfterOneThatRaises) {
    HandMadeFrame made(HandMadeFrame::size525);
    putDate(made, 5);
    putTime(made, 5);
    made.renumber(5, 13);
    putDate(made, 6, 0x18);
    putTime(made, 6);

    const FrameDate found = findFrameDate(made.frame());

    EXPECT_EQ(found.sequenceIndex, 6);
    EXPECT_EQ(found.captureDateTime->dayOfMonth(), 18);
    EXPECT_THAT(m_log.lines(), ElementsAre("Cannot decode DIF sequence 5: read past the end of the frame"));
}

TEST_F(FindFrameDate, HearsNothingFromASequenceThatRaises) {
    HandMadeFrame made(HandMadeFrame::size525);
    putVaux(made, 8, 0xC8, 0x24);
    made.renumber(9, 13);

    const FrameDate found = findFrameDate(made.frame());

    EXPECT_EQ(found.sequenceIndex, 8);
    EXPECT_EQ(found.aspectRatio, 1);
    EXPECT_EQ(found.pixelSampling, 4);
}

TEST_F(FindFrameDate, SurvivesAFrameOfWhichNothingCanBeRead) {
    const FrameDate found = findFrameDate(platform::FrameBytes::taking({1, 2, 3}));
    EXPECT_EQ(found.date, nullptr);
    EXPECT_EQ(found.sequenceIndex, -1);
    EXPECT_EQ(m_log.lines().size(), 10U);
    EXPECT_EQ(findFrameDate({}).sequenceIndex, -1);
}

TEST_F(FindFrameDate, NormalisesJunk) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.putSubcode(0, 1, {0x62, 0xFF, 0x00, 0x00, 0x05}); // day 0 of month 0 of 2005: 30 November 2004
    putTime(made, 0);
    EXPECT_EQ(findFrameDate(made.frame()).date->instant(),
              platform::dateFromCalendar({2004, 11, 30, 14, 3, 22})->instant());
}

} // namespace
} // namespace merro
