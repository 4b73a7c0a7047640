#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using SceneDetection = LoggingFixture;

TEST_F(SceneDetection, theFirstDatedFrameOfARecordingIsNoNewTake) {
    connectDeck();
    deliver("01:00:00:00", "09:00:00"); // before recording, hours earlier
    controller->setRecording(true);
    deliver("01:00:00:01", "");
    deliver("01:00:00:02", "10:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(SceneDetection, aSecondRecordingDoesNotMeasureAgainstTheDateOfTheOneBefore) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(false);
    controller->setRecording(true);
    deliver("02:00:00:00", "12:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end", "begin", "will 2"}));
}

TEST_F(SceneDetection, aDateThatStandsStillOrMovesOnByOneSecondIsTheSameTake) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "10:00:01");
    deliver("01:00:00:02", "10:00:01");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(SceneDetection, theFullHourIsNoJump) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "13:59:59");
    deliver("01:00:00:01", "14:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(SceneDetection, aJumpForwardOfMoreThanASecondIsANewTake) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "10:00:02");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2"}));
}

TEST_F(SceneDetection, anyJumpBackIsANewTake) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:01");
    deliver("01:00:00:01", "10:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2"}));
}

TEST_F(SceneDetection, fractionsOfASecondCount) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:03");
    const auto at = [](const platform::DateRef& date, int milliseconds) {
        return std::make_shared<const platform::Date>(date->instant() +
                                                      std::chrono::milliseconds(milliseconds));
    };
    controller->setCurrentDate(at(controller->currentDate(), -1000));
    deliver("01:00:00:01", "10:00:03"); // exactly a second on
    EXPECT_EQ(messages().back(), "will 1");
    controller->setCurrentDate(at(controller->currentDate(), -1001));
    deliver("01:00:00:02", "10:00:03");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SceneDetection, aFrameWithoutDateMakesNoCutAndMovesNoDate) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "");
    EXPECT_EQ(text(controller->currentDate()), "10:00:00");
    deliver("01:00:00:02", "10:00:02");
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SceneDetection, nothingIsCutWhileSceneDetectionIsOff) {
    connectDeck();
    set(BXMCDetectScene, false);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "12:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
    EXPECT_EQ(text(controller->currentDate()), "12:00:00");
}

TEST_F(SceneDetection, aCutReportsTheClipWithItsFirstAndLastFrameAndItsDate) {
    connectDeck();
    controller->setRecording(true);
    deliverRun(5, "01:00:00:00", "10:00:00");
    deliverRun(3, "01:00:00:05", "11:00:00");
    controller->setRecording(false);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:04 10:00:00");
    EXPECT_EQ(text(timecodeIn(reports[0], kBXMCClipDuration)), "00:00:00:04");
    EXPECT_EQ(report(1), "01:00:00:05 - 01:00:00:07 11:00:00");
}

TEST_F(SceneDetection, theClipIsClosedAndReportedBeforeTheNextOneOpens) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    std::vector<std::string> state;
    onDid = [&] {
        state.push_back(controller->moviePath().value_or("no movie") + ", " +
                        controller->thumbnailsPath().value_or("no thumbnails") +
                        ", open: " + std::to_string(surroundings.files.file(thumbnails(1)).openNow));
    };
    deliver("01:00:00:01", "11:00:00");
    EXPECT_EQ(state, (Entries{"no movie, no thumbnails, open: 0"}));
    EXPECT_EQ(controller->moviePath(), "/2.mov");
    EXPECT_EQ(controller->thumbnailsPath(), thumbnails(2));
    EXPECT_EQ(controller->clipId(), platform::Value("2"));
}

TEST_F(SceneDetection, theClipFieldsAreClearedBeforeTheHostIsAsked) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    std::string seen;
    onWill = [&] {
        seen = text(controller->clipStartTimecode()) + " " + text(controller->clipEndTimecode()) + " " +
               text(controller->clipRecordingDate());
    };
    deliver("01:00:00:01", "11:00:00");
    EXPECT_EQ(seen, "- - -");
}

TEST_F(SceneDetection, theAspectRatioIsThatOfTheFirstDatedFrame) {
    connectDeck();
    controller->setRecording(true);
    isWide = false;
    deliver("01:00:00:00", "10:00:00");
    isWide = true;
    deliver("01:00:00:01", "10:00:00");
    EXPECT_EQ(controller->clipAspectRatio(), 1);
    deliver("01:00:00:02", "11:00:00");
    EXPECT_EQ(controller->clipAspectRatio(), 0);
}

TEST_F(SceneDetection, aClipWithoutDatesTellsTheAspectRatioOfItsNewestFrame) {
    connectDeck();
    controller->setRecording(true);
    isWide = true;
    deliver("01:00:00:00", "");
    isWide = false;
    deliver("01:00:00:01", "");
    controller->setRecording(false);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:01 -");
    EXPECT_EQ(platform::find(reports[0], kBXMCClipAspectRatio)->integerValue(), 1);
}

TEST_F(SceneDetection, aClipThatOpensOnAnUndatedFrameTakesTheDateKnownLast) {
    connectDeck();
    set(BXMCDetectScene, false);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/1.mov");
    deliver("01:00:00:01", "");
    EXPECT_EQ(text(controller->clipRecordingDate()), "10:00:00");
}

TEST_F(SceneDetection, aTapeWithoutTimecodesIsCutAllTheSame) {
    connectDeck();
    controller->setRecording(true);
    for (int i = 0; i < 3; ++i)
        deliver("", "10:00:00");
    for (int i = 0; i < 3; ++i)
        deliver("", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2", "did 2", "end"}));
    EXPECT_EQ(report(0), "- - - 10:00:00");
    EXPECT_EQ(platform::find(reports[0], kBXMCClipDuration), nullptr);
    EXPECT_EQ(movies(), (Entries{"/1.mov", "/2.mov", "nothing"}));
}

TEST_F(SceneDetection, aTakeWithoutTimecodesAfterOneWithThemGetsItsMovie) {
    connectDeck();
    controller->setRecording(true);
    deliverRun(3, "01:00:00:00", "10:00:00");
    deliver("", "11:00:00");
    EXPECT_EQ(movies(), (Entries{"/1.mov", "/2.mov"}));
    deliver("01:00:00:10", "11:00:00"); // past the last timecode of the first clip
    EXPECT_EQ(movies(), (Entries{"/1.mov", "/2.mov"}));
}

TEST_F(SceneDetection, aDamagedFrameEndsNothing) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    platform::QTSampleBuffer junk = makeFrame("01:00:00:01", "");
    junk.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(144000, 0xFF));
    deliver(junk);
    deliver("01:00:00:02", "10:00:00");
    EXPECT_TRUE(controller->isRecording());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

// --- What every frame brings, recording or not ---

TEST_F(SceneDetection, theTimecodeIsShownWhetherRecordingOrNot) {
    deliver("01:02:03:04", "10:00:00");
    EXPECT_EQ(text(controller->currentTimecodeValue()), "01:02:03:04");
    EXPECT_EQ(controller->timecodeView()->timecode().mMinutes, 2);
    EXPECT_EQ(controller->currentDate(), nullptr);
}

TEST_F(SceneDetection, aFrameWithoutTimecodeLeavesTheCurrentOne) {
    deliver("01:02:03:04", "");
    deliver("", "");
    EXPECT_EQ(text(controller->currentTimecodeValue()), "01:02:03:04");
}

TEST_F(SceneDetection, theDateIsShownOverThePicture) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    EXPECT_EQ(text(controller->timecodeView()->date()), "10:00:00");
}

// --- Frames that are no DV ---

class NoDVFrame : public LoggingFixture, public ::testing::WithParamInterface<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Lengths, NoDVFrame,
                         ::testing::Values(1U, 119999U, 120001U, 143999U, 144001U, 240000U, 288000U));

} // namespace

TEST_P(NoDVFrame, raisesTheAlertAndEndsTheRecording) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    platform::QTSampleBuffer frame = makeFrame("01:00:00:01", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(GetParam()));
    bool wasRecordingDuringAlert = false;
    surroundings.alerts.whileUp = [&](const platform::Alert&) {
        wasRecordingDuringAlert = controller->isRecording();
    };
    deliver(frame);
    ASSERT_EQ(surroundings.alerts.shown().size(), 1U);
    EXPECT_EQ(surroundings.alerts.shown()[0].messageText, "Cannot capture this stream.");
    EXPECT_EQ(
        surroundings.alerts.shown()[0].informativeText,
        "The input video stream is not a DV stream. Please ensure that your connected device is playing back "
        "its content in DV format and try again.\nCapture will now stop.");
    EXPECT_TRUE(wasRecordingDuringAlert);
    EXPECT_FALSE(controller->isRecording());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "01:00:00:00"); // that of the odd frame is not taken
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:00 10:00:00");
}

namespace {

TEST_F(SceneDetection, aFrameThatIsNoDVRaisesTheAlertAlsoWhileNothingIsRecorded) {
    platform::QTSampleBuffer frame = makeFrame("01:00:00:01", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(1000));
    deliver(frame);
    EXPECT_EQ(surroundings.alerts.shown().size(), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(SceneDetection, framesOfBothSystemsAreDV) {
    platform::QTSampleBuffer frame = makeFrame("01:00:00:01", "");
    frame.bytesForAllSamples = platform::deck::DVFrameBuilder(platform::deck::DVSystem::System525_60).frame();
    ASSERT_EQ(frame.lengthForAllSamples(), 120000U);
    deliver(frame);
    EXPECT_TRUE(surroundings.alerts.shown().empty());
}

} // namespace
} // namespace merro::test
