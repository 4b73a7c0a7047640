// The frames after a cut that are in no clip.
#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using SkipAfterCut = LoggingFixture;

TEST_F(SkipAfterCut, theNextClipOpensAsManyFramesAfterTheCutAsAreToBeSkipped) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliverRun(5, "01:00:00:00", "10:00:00");
    deliver("01:00:00:05", "11:00:00"); // the cut
    EXPECT_TRUE(controller->isPrerolling());
    EXPECT_EQ(text(TimecodeValue::valueWithSMPTETime(controller->startTimecode())), "01:00:00:08");
    deliverRun(2, "01:00:00:06", "11:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1"}));
    deliver("01:00:00:08", "11:00:00");
    EXPECT_FALSE(controller->isPrerolling());
    EXPECT_EQ(messages().back(), "will 2");
    deliver("01:00:00:09", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(report(1), "01:00:00:08 - 01:00:00:09 11:00:00");
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{8, 9}));
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing", "/2.mov", "nothing"}));
}

TEST_F(SkipAfterCut, skippedFramesAreNotDecodedAndMoveNoDate) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    deliver("01:00:00:02", "12:00:00");
    EXPECT_EQ(text(controller->currentDate()), "11:00:00");
    EXPECT_EQ(text(controller->lastTimecodeValue()), "01:00:00:01");
    EXPECT_TRUE(controller->lastFrameData().isNull());
}

TEST_F(SkipAfterCut, aSkipEndsAtALaterTimecodeWhenTheOneToBeReachedIsMissing) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    deliver("01:00:00:10", "11:00:00");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SkipAfterCut, aSkipOnATapeWithoutTimecodesEndsAfterItsFrames) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliver("", "10:00:00");
    deliver("", "11:00:00"); // the cut
    deliver("", "11:00:00");
    deliver("", "11:00:00");
    EXPECT_EQ(messages().back(), "did 1");
    deliver("", "11:00:00");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SkipAfterCut, aSkipEndsAfterItsFramesWhenTheTimecodeBeginsAnew) {
    connectDeck();
    set(BXMCNbDropFrame, 2);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00"); // the cut
    deliver("00:00:00:00", "11:00:00");
    EXPECT_EQ(messages().back(), "did 1");
    deliver("00:00:00:01", "11:00:00");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SkipAfterCut, aStopWhileFramesAreSkippedReportsNothing) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
    EXPECT_FALSE(controller->isPrerolling());
}

TEST_F(SkipAfterCut, aRecordingStartedAfterAStopWithinASkipDoesNotGoOnSkipping) {
    connectDeck();
    set(BXMCNbDropFrame, 3);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    controller->setRecording(false);
    controller->setRecording(true);
    const auto frame = deliver("00:00:00:00", "11:00:00");
    EXPECT_EQ(text(controller->clipStartTimecode()), "00:00:00:00");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SkipAfterCut, aTakeThatEndsWithinTheSkipLeavesAClipOfOneFrame) {
    // The frame that ends the skip opens a clip, and is a new take against the frame that began the skip.
    connectDeck();
    set(BXMCNbDropFrame, 2);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    deliver("01:00:00:02", "12:00:00");
    deliver("01:00:00:03", "12:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2", "did 2"}));
    EXPECT_EQ(report(1), "01:00:00:03 - 01:00:00:03 -");
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{3}));
    deliver("01:00:00:04", "12:00:00");
    deliver("01:00:00:05", "12:00:00");
    EXPECT_EQ(messages().back(), "will 3");
}

TEST_F(SkipAfterCut, aTakeThatEndsWithinTheSkipGoesOnAtOnceWhenNothingIsSkippedAnyMore) {
    connectDeck();
    set(BXMCNbDropFrame, 1);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    set(BXMCNbDropFrame, 0);
    deliver("01:00:00:02", "12:00:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2", "did 2", "will 3", "did 3", "end"}));
    EXPECT_EQ(framesIn(thumbnails(3)), (std::vector<int>{2}));
}

} // namespace
} // namespace merro::test
