#include "dv/DVDifSequence.h"

#include "tests/dv/HandMadeFrame.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace merro {
namespace {

using test::HandMadeFrame;
using testing::ElementsAre;
using testing::IsEmpty;

class DifSequence : public testing::Test {
protected:
    DifSequence() { platform::setProcessLog(&m_log); }
    ~DifSequence() override { platform::setProcessLog(nullptr); }

    test::RecordingLog m_log;
};

TEST_F(DifSequence, StartsUndecoded) {
    const auto sequence =
        DVDifSequence::difSequenceWithDataForSequenceIndex(HandMadeFrame(HandMadeFrame::size625).frame(), 3);
    EXPECT_FALSE(sequence->decoded());
    EXPECT_EQ(sequence->sequenceIndex(), 3U);
    EXPECT_EQ(sequence->offset(), 36000U);
    EXPECT_EQ(sequence->sequenceNumber(), 0U);
    EXPECT_EQ(sequence->pixelSampling(), -1);
    EXPECT_EQ(sequence->aspectRatio(), 0);
    EXPECT_EQ(sequence->timeCode(), SMPTETime{});
    EXPECT_FALSE(sequence->timecodeOk());
    EXPECT_FALSE(sequence->systemOk());
    EXPECT_EQ(sequence->captureDateTime(), nullptr);
    EXPECT_EQ(sequence->date(), nullptr);
    EXPECT_FALSE(sequence->stillPicture());
    EXPECT_FALSE(sequence->interlaced());
    EXPECT_EQ(sequence->sectionCode(), "UNSET");
}

TEST_F(DifSequence, MovesWithItsIndex) {
    DVDifSequence sequence(HandMadeFrame(HandMadeFrame::size625).frame(), 3);
    sequence.setSequenceIndex(4);
    EXPECT_EQ(sequence.sequenceIndex(), 4U);
    EXPECT_EQ(sequence.offset(), 48000U);
}

TEST_F(DifSequence, StaysUndecodedOnANullFrame) {
    DVDifSequence sequence({}, 0);
    sequence.decodeSequence();
    sequence.decodeTimecode();
    EXPECT_FALSE(sequence.decoded());
    EXPECT_FALSE(sequence.systemOk());
}

TEST_F(DifSequence, ReadsTheHeaderBlock) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.put(11, 0, 0, {0x1F, 0xBF, 0x00, 0x80});
    DVDifSequence sequence(made.frame(), 11);

    sequence.decodeSequence();

    EXPECT_TRUE(sequence.decoded());
    EXPECT_EQ(sequence.sectionType(), kDIFSectionHeader);
    EXPECT_EQ(sequence.sequenceChannel(), 1U);
    EXPECT_EQ(sequence.sequenceNumber(), 11U);
    EXPECT_EQ(sequence.sequenceFlag(), 1U);
    EXPECT_EQ(sequence.timeCode().mType, kSMPTETimeType25);
    EXPECT_TRUE(sequence.systemOk());
}

TEST_F(DifSequence, KnowsTheSystemByTheFirstBitOfTheHeadersData) {
    for (const auto& [byte, type] : {std::pair<std::uint8_t, std::uint32_t>{0x80, 1}, {0x3F, 2}}) {
        HandMadeFrame made(HandMadeFrame::size525);
        made.put(0, 0, 3, {byte});
        DVDifSequence sequence(made.frame(), 0);
        sequence.decodeSequence();
        EXPECT_EQ(sequence.timeCode().mType, type);
    }
}

TEST_F(DifSequence, DecodesOnceUntilToldAgain) {
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(
        HandMadeFrame(HandMadeFrame::size525).putFrameNumber(0, 1).bytes());
    const platform::FrameBytes frame(bytes, *bytes);
    DVDifSequence sequence(frame, 0);
    sequence.decodeSequence();
    (*bytes)[80 + 6 + 1] = 2; // the timecode's frames

    sequence.decodeSequence();
    EXPECT_EQ(sequence.timeCode().mFrames, 1);
    sequence.setData(frame);
    EXPECT_TRUE(sequence.decoded());
    sequence.decodeSequence();
    EXPECT_EQ(sequence.timeCode().mFrames, 1);

    sequence.reDecodeSequence();
    EXPECT_EQ(sequence.timeCode().mFrames, 2);
}

TEST_F(DifSequence, DecodesAgainOnAnotherBuffer) {
    DVDifSequence sequence(HandMadeFrame(HandMadeFrame::size525).putFrameNumber(0, 1).frame(), 0);
    sequence.decodeSequence();

    sequence.setData(HandMadeFrame(HandMadeFrame::size525).putFrameNumber(0, 2).frame());
    EXPECT_FALSE(sequence.decoded());
    sequence.decodeSequence();

    EXPECT_EQ(sequence.timeCode().mFrames, 2);
}

TEST_F(DifSequence, ForgetsTheRecordingDateWhenSetUndecoded) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.putSubcode(0, 1, {0x62, 0xFF, 0x31, 0x12, 0x99});
    DVDifSequence sequence(made.frame(), 0);
    sequence.decodeSequence();
    ASSERT_NE(sequence.captureDateTime(), nullptr);

    sequence.setUndecoded();

    EXPECT_EQ(sequence.captureDateTime(), nullptr);
    EXPECT_FALSE(sequence.decoded());
    EXPECT_TRUE(sequence.systemOk());
}

TEST_F(DifSequence, LosesNothingToANullFrame) {
    DVDifSequence sequence(HandMadeFrame(HandMadeFrame::size525).putFrameNumber(0, 5).frame(), 0);
    sequence.decodeSequence();

    sequence.setData({});
    sequence.decodeSequence();

    EXPECT_FALSE(sequence.decoded());
    EXPECT_EQ(sequence.timeCode().mFrames, 5);
    EXPECT_TRUE(sequence.timecodeOk());
}

TEST_F(DifSequence, HandsOutTheBlocksOfTheSequenceThatItsHeaderNames) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.renumber(2, 7);
    DVDifSequence sequence(made.frame(), 2);
    EXPECT_EQ(sequence.getBlockAt(4).offset(), 320U); // sequence 0 before decoding

    sequence.decodeSequence();

    EXPECT_EQ(sequence.getBlockAt(4).offset(), 84320U); // (7 x 150 + 4) x 80
}

// A host sees the other sequence's timecode and date where a header block is damaged.
TEST_F(DifSequence, ReadsTheSubcodeOfTheSequenceThatItsHeaderNames) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.putFrameNumber(2, 2).putFrameNumber(7, 7).renumber(2, 7);
    DVDifSequence sequence(made.frame(), 2);
    sequence.decodeSequence();
    EXPECT_EQ(sequence.timeCode().mFrames, 7);
}

TEST_F(DifSequence, RaisesWhenItsHeaderNamesASequencePastTheEndOfTheFrame) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.renumber(2, 10);
    DVDifSequence sequence(made.frame(), 2);
    EXPECT_THROW(sequence.decodeSequence(), std::out_of_range);
    EXPECT_FALSE(sequence.decoded());
    EXPECT_THROW(sequence.decodeTimecode(), std::out_of_range);
}

TEST_F(DifSequence, RaisesWhenItLiesPastTheEndOfTheFrame) {
    const platform::FrameBytes frame = HandMadeFrame(HandMadeFrame::size525).frame();
    DVDifSequence sequence(frame, 10);
    EXPECT_THROW(sequence.decodeSequence(), std::out_of_range);
}

TEST_F(DifSequence, LogsSubcodeBlocksOfAWrongTypeAndReadsNeither) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.putFrameNumber(0, 5).put(0, 2, 0, {0x9F});
    DVDifSequence sequence(made.frame(), 0);

    sequence.decodeSequence();

    EXPECT_FALSE(sequence.timecodeOk());
    EXPECT_TRUE(sequence.decoded());
    EXPECT_THAT(m_log.lines(), ElementsAre("Cannot decode subcode for SC0 and SC1 of type 1 and 4"));
}

TEST_F(DifSequence, LogsAVauxBlockOfAWrongTypeForEachOfItsPacks) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.put(0, 5, 0, {0x7F}).put(1, 3, 0, {0xFF});
    DVDifSequence even(made.frame(), 0);
    DVDifSequence odd(made.frame(), 1);

    even.decodeSequence();
    odd.decodeSequence();

    EXPECT_THAT(m_log.lines(),
                ElementsAre("Cannot decode Vaux Source Control Pack for VA of type 3 at block number 5",
                            "Cannot decode Vaux Source Pack for VA of type 3 at block number 5",
                            "Cannot decode Vaux Source Control Pack for VA of type 7 at block number 3",
                            "Cannot decode Vaux Source Pack for VA of type 7 at block number 3"));
    EXPECT_EQ(even.aspectRatio(), 0);
    EXPECT_EQ(even.pixelSampling(), -1);
}

TEST_F(DifSequence, DecodesTheTimecodeAloneWithoutDateOrLog) {
    HandMadeFrame made(HandMadeFrame::size625);
    made.putFrameNumber(0, 5).putSubcode(0, 1, {0x62, 0xFF, 0x31, 0x12, 0x99}).put(0, 5, 0, {0x7F});
    made.put(1, 1, 0, {0x7F});
    DVDifSequence sequence(made.frame(), 0);
    DVDifSequence damaged(made.frame(), 1);

    sequence.decodeTimecode();
    damaged.decodeTimecode();

    EXPECT_TRUE(sequence.timecodeOk());
    EXPECT_EQ(sequence.timeCode().mFrames, 5);
    EXPECT_EQ(sequence.timeCode().mType, kSMPTETimeType25);
    EXPECT_EQ(sequence.captureDateTime(), nullptr);
    EXPECT_FALSE(sequence.decoded());
    EXPECT_FALSE(damaged.timecodeOk());
    EXPECT_THAT(m_log.lines(), IsEmpty());
}

TEST_F(DifSequence, IsRecognisedByItsSections) {
    HandMadeFrame made(HandMadeFrame::size525);
    for (unsigned block = 6; block < 150; ++block)
        made.put(0, block, 0, {static_cast<std::uint8_t>(block % 16 == 6 ? 0x7F : 0x9F)});
    EXPECT_TRUE(DVDifSequence(made.frame(), 0).containsExpectedSections());

    for (const unsigned block : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 149U}) {
        HandMadeFrame damaged = made;
        damaged.put(0, block, 0, {0xBF});
        EXPECT_FALSE(DVDifSequence(damaged.frame(), 0).containsExpectedSections()) << block;
    }
}

TEST_F(DifSequence, IsRecognisedByTheSectionsOfTheSequenceThatItsHeaderNames) {
    HandMadeFrame made(HandMadeFrame::size525);
    for (unsigned block = 6; block < 150; ++block)
        made.put(0, block, 0, {0x9F}); // only sequence 0 is whole
    DVDifSequence sequence(made.frame(), 1);
    EXPECT_TRUE(sequence.containsExpectedSections());

    sequence.decodeSequence();

    EXPECT_FALSE(sequence.containsExpectedSections());
}

TEST_F(DifSequence, IsRecognisedAsFarAsAShortBufferGoes) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.bytes().resize(6 * 80 + 79);
    EXPECT_TRUE(DVDifSequence(made.frame(), 0).containsExpectedSections());
    made.bytes().resize(80);
    EXPECT_TRUE(DVDifSequence(made.frame(), 0).containsExpectedSections());
    made.bytes().resize(79);
    EXPECT_FALSE(DVDifSequence(made.frame(), 0).containsExpectedSections());
    EXPECT_FALSE(DVDifSequence({}, 0).containsExpectedSections());
}

TEST_F(DifSequence, SharesItsRecordingDate) {
    DVDifSequence sequence({}, 0);
    const auto date = DVFrameCaptureDateTime::dateWithYearMonthDayHoursMinutesSeconds(2005, 3, 17, 14, 3, 22);
    sequence.setCaptureDateTime(date);
    EXPECT_EQ(sequence.captureDateTime(), date);
    EXPECT_EQ(sequence.date()->instant(), date->date()->instant());
}

} // namespace
} // namespace merro
