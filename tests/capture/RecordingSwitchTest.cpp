#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using namespace std::chrono_literals;
using RecordingSwitch = LoggingFixture;

TEST_F(RecordingSwitch, startPlaysTheTapeAndOpensAClipWithTheHostsAnswer) {
    connectDeck();
    controller->setRecording(true);
    EXPECT_EQ(journal(), (Entries{"begin", "deck speed 10000 mode 1", "will 1"}));
    EXPECT_EQ(controller->clipId(), platform::Value("1"));
    EXPECT_EQ(controller->moviePath(), "/1.mov");
    EXPECT_EQ(controller->thumbnailsPath(), thumbnails(1));
    EXPECT_EQ(controller->processNote(), "Recording started");
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(RecordingSwitch, theHostIsToldBeforeAnythingIsDoneToTheTape) {
    connectDeck(kPaused);
    std::vector<Transport> commandsAtBegin{kPaused};
    onBegin = [&] { commandsAtBegin = deck->commands(); };
    controller->setRecording(true);
    EXPECT_TRUE(commandsAtBegin.empty());
}

TEST_F(RecordingSwitch, stopClosesTheFilesThenReportsThenTreatsTheTapeThenEnds) {
    connectDeck();
    set(BXMCActionAfterRecord, 2);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.journal->clear();
    int filesOpenAtReport = -1;
    onDid = [&] { filesOpenAtReport = surroundings.files.file(thumbnails(1)).openNow; };
    controller->setRecording(false);
    EXPECT_EQ(journal(), (Entries{"1 record nothing", "did 1", "deck speed 0 mode 1", "end"}));
    EXPECT_EQ(filesOpenAtReport, 0);
    EXPECT_EQ(controller->moviePath(), std::nullopt);
    EXPECT_EQ(controller->thumbnailsPath(), std::nullopt);
    EXPECT_EQ(text(controller->timecodeEndValue()), "01:00:00:00");
    EXPECT_EQ(controller->processNote(), "Recording stopped");
    EXPECT_FALSE(controller->isRecording());
}

TEST_F(RecordingSwitch, startingTwiceBeginsOnceButClearsTheMarksBothTimes) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    controller->setTimecodeStartValue(timecode("01:00:00:00"));
    controller->setTimecodeEndValue(timecode("01:00:00:00"));
    controller->setRecording(true);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
    EXPECT_EQ(text(controller->timecodeStartValue()), "-");
    EXPECT_EQ(text(controller->timecodeEndValue()), "-");
    EXPECT_EQ(controller->currentDate(), nullptr);
}

TEST_F(RecordingSwitch, stoppingWhatIsStoppedSendsNothing) {
    connectDeck();
    controller->setRecording(false);
    EXPECT_TRUE(journal().empty());
    EXPECT_EQ(controller->processNote(), "");
}

TEST_F(RecordingSwitch, theOverlayIsShownWhileRecording) {
    EXPECT_TRUE(controller->timecodeView()->isHidden());
    controller->setRecording(true);
    EXPECT_FALSE(controller->timecodeView()->isHidden());
    controller->setRecording(false);
    EXPECT_TRUE(controller->timecodeView()->isHidden());
}

TEST_F(RecordingSwitch, switchingIsAnnounced) {
    Entries seen;
    const auto observation =
        controller->announcements().addObserver("", [&](const std::string& key, platform::Change change) {
            if (change == platform::Change::Did &&
                (key == "recording" || key == "processNote" || key == "clipId"))
                seen.push_back(key);
        });
    controller->setRecording(true);
    EXPECT_EQ(seen, (Entries{"recording", "clipId", "processNote"}));
}

TEST_F(RecordingSwitch, startRunsASessionThatStandsStill) {
    connectDeck();
    controller->stopDevice();
    surroundings.journal->clear();
    controller->setRecording(true);
    EXPECT_EQ(journal(), (Entries{"begin", "deck speed 10000 mode 1", "start", "will 1"}));
}

// --- After the recording ---

TEST_F(RecordingSwitch, theTapeIsLeftPlayingWithActionNothing) {
    connectDeck();
    set(BXMCActionAfterRecord, 0);
    controller->setRecording(true);
    deck->forgetCommands();
    controller->setRecording(false);
    EXPECT_TRUE(deck->commands().empty());
    EXPECT_TRUE(surroundings.capture.session->isRunning());
}

TEST_F(RecordingSwitch, tapeAndSessionAreStoppedWithActionStop) {
    connectDeck();
    set(BXMCActionAfterRecord, 1);
    controller->setRecording(true);
    surroundings.journal->clear();
    controller->setRecording(false);
    EXPECT_EQ(journal(), (Entries{"1 record nothing", "did 1", "deck speed 0 mode 0", "stop", "end"}));
}

TEST_F(RecordingSwitch, anUnknownActionLeavesTheTapeAlone) {
    connectDeck();
    set(BXMCActionAfterRecord, 3);
    controller->setRecording(true);
    deck->forgetCommands();
    controller->setRecording(false);
    EXPECT_TRUE(deck->commands().empty());
}

// --- What the host answers ---

TEST_F(RecordingSwitch, withoutMoviesTheMoviePathIsNotTaken) {
    connectDeck();
    set(BXMCCaptureMovie, false);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    EXPECT_EQ(controller->moviePath(), std::nullopt);
    EXPECT_EQ(movies(), (Entries{"nothing"}));
}

TEST_F(RecordingSwitch, anAnswerWithoutPathsMakesAClipWithoutFilesThatIsReported) {
    connectDeck();
    answer = platform::Dictionary{};
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_TRUE(surroundings.files.paths().empty());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did -", "end"}));
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:00 10:00:00");
}

TEST_F(RecordingSwitch, emptyPathsAreNoPaths) {
    connectDeck();
    answer = platform::Dictionary{{std::string(kBXMCMoviePath), ""}, {std::string(kBXMCThumbnailsPath), ""}};
    controller->setRecording(true);
    EXPECT_EQ(controller->moviePath(), std::nullopt);
    EXPECT_EQ(controller->thumbnailsPath(), std::nullopt);
    EXPECT_TRUE(surroundings.files.paths().empty());
}

TEST_F(RecordingSwitch, aHostThatAnswersNothingIsRecordedForAllTheSame) {
    connectDeck();
    controller->setDelegate(std::make_shared<BXMCControllerDelegate>());
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(controller->processNote(), "Recording stopped");
    EXPECT_TRUE(messages().empty());
}

TEST_F(RecordingSwitch, aHostThatIsGoneIsSentNothing) {
    connectDeck();
    host.reset();
    controller->setRecording(true);
    controller->setRecording(false);
    EXPECT_EQ(controller->delegate(), nullptr);
    EXPECT_TRUE(messages().empty());
}

TEST_F(RecordingSwitch, aHostThatOnlyHearsReportsGetsOneForEachTake) {
    connectDeck();
    host->mccontrollerWillRecord = nullptr;
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    deliver("01:00:00:01", "11:00:00");
    controller->setRecording(false);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:00 10:00:00");
    EXPECT_EQ(report(1), "01:00:00:01 - 01:00:00:01 11:00:00");
}

TEST_F(RecordingSwitch, aHostThatOnlyHearsReportsMaySetIdentifierAndPathsByHand) {
    connectDeck();
    host->mccontrollerWillRecord = nullptr;
    controller->setClipId(platform::Value("mine"));
    controller->setMoviePath("/mine.mov");
    controller->setThumbnailsPath("/mine.thumbnails");
    controller->setRecording(true);
    deliverRun(2, "01:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "did mine", "end"}));
    EXPECT_EQ(movies(), (Entries{"/mine.mov", "nothing"}));
    EXPECT_EQ(framesIn("/mine.thumbnails"), (std::vector<int>{0, 1}));
}

TEST_F(RecordingSwitch, aClipThatNeverGotAFrameIsReported) {
    connectDeck();
    controller->setRecording(true);
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
    EXPECT_EQ(platform::find(reports[0], kBXMCClipStartTimecode), nullptr);
    EXPECT_EQ(platform::find(reports[0], kBXMCClipDuration), nullptr);
}

// --- Preroll ---

TEST_F(RecordingSwitch, fromPauseTheTapeRunsBackForTwoSecondsBeforeItPlays) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    controller->setStartTimecode(timecode("05:00:00:00").SMPTETimeValue());
    Entries whileAsleep;
    surroundings.clock.whileAsleep = [&] {
        whileAsleep = journal();
        EXPECT_FALSE(controller->isRecording());
        EXPECT_TRUE(controller->isPrerolling());
        EXPECT_EQ(controller->startTimecode(), SMPTETime{});
    };
    controller->setRecording(true);
    EXPECT_EQ(whileAsleep, (Entries{"begin", "deck speed -10000 mode 1"}));
    EXPECT_EQ(surroundings.clock.sleeps(), (std::vector<platform::Duration>{2s}));
    EXPECT_EQ(journal(), (Entries{"begin", "deck speed -10000 mode 1", "deck speed 10000 mode 1"}));
    EXPECT_TRUE(controller->isRecording());
    EXPECT_TRUE(controller->isPrerolling());
    EXPECT_EQ(controller->startTimecode(), timecode("01:00:00:00").SMPTETimeValue());
    EXPECT_EQ(controller->processNote(), "Recording started");
}

TEST_F(RecordingSwitch, afterAPrerollTheClipOpensAtTheFrameThatWasPausedOn) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true);
    deliverRun(3, "00:59:59:22", "09:59:59");
    EXPECT_EQ(messages(), (Entries{"begin"}));
    deliver("01:00:00:00", "10:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
    deliver("01:00:00:01", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:01 10:00:00");
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{4, 5}));
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing"}));
}

TEST_F(RecordingSwitch, aClipOfTheFrameThatEndsThePrerollAloneHasItOnce) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{1}));
}

TEST_F(RecordingSwitch, framesOfThePrerollAreShownButRecordNothing) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    surroundings.clock.whileAsleep = [&] { deliver("00:59:59:00", "09:59:00"); };
    controller->setRecording(true);
    EXPECT_EQ(messages(), (Entries{"begin"}));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "00:59:59:00");
    EXPECT_EQ(text(TimecodeValue::valueWithSMPTETime(controller->startTimecode())), "01:00:00:00");
    EXPECT_EQ(controller->currentDate(), nullptr);
}

TEST_F(RecordingSwitch, aStopBeforeTheStartTimecodeIsReachedReportsNothing) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true);
    deliver("00:59:59:00", "09:59:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "end"}));
    EXPECT_FALSE(controller->isPrerolling());
    EXPECT_TRUE(surroundings.files.paths().empty());
}

TEST_F(RecordingSwitch, withoutATimecodeSeenYetThereIsNoPreroll) {
    connectDeck(kPaused);
    controller->setRecording(true);
    EXPECT_TRUE(surroundings.clock.sleeps().empty());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(RecordingSwitch, aTapeThatPlaysIsNotRunBack) {
    connectDeck(kPlaying);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true);
    EXPECT_TRUE(surroundings.clock.sleeps().empty());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(RecordingSwitch, aDeckThatCannotBeDrivenIsNotRunBack) {
    deck->transportIsReadOnly = true;
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true);
    EXPECT_TRUE(surroundings.clock.sleeps().empty());
    EXPECT_TRUE(deck->commands().empty());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
}

TEST_F(RecordingSwitch, switchingOnOnceMoreDuringAPrerollBeginsNoSecondRecording) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    surroundings.clock.whileAsleep = [&] { controller->setRecording(true); };
    controller->setRecording(true);
    EXPECT_EQ(messages(), (Entries{"begin"}));
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(RecordingSwitch, switchingOnAndOffDuringAPrerollEndsTheRecording) {
    connectDeck(kPaused);
    deliver("01:00:00:00", "10:00:00");
    surroundings.clock.whileAsleep = [&] {
        controller->setRecording(true);
        controller->setRecording(false);
    };
    controller->setRecording(true);
    EXPECT_FALSE(controller->isRecording());
    EXPECT_EQ(messages(), (Entries{"begin", "end"}));
}

// --- Files that must be changed ---

TEST_F(RecordingSwitch, aForcedChangeOfFilesIsLeftToTheCutsWhileScenesAreDetected) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/1.mov");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
    EXPECT_EQ(controller->moviePath(), "/1.mov");
}

TEST_F(RecordingSwitch, aForcedChangeOfFilesEndsTheClipAndOpensTheNextWithoutTouchingTheTape) {
    connectDeck();
    set(BXMCDetectScene, false);
    controller->setRecording(true);
    deliverRun(3, "01:00:00:00", "10:00:00");
    deck->forgetCommands();
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/1.mov");
    EXPECT_EQ(text(controller->timecodeEndValue()), "01:00:00:02");
    deliverRun(2, "01:00:00:03", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2", "did 2", "end"}));
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:02 10:00:00");
    EXPECT_EQ(report(1), "01:00:00:03 - 01:00:00:04 10:00:00");
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing", "/2.mov", "nothing"}));
    EXPECT_TRUE(deck->commands().empty());
}

TEST_F(RecordingSwitch, aForcedChangeOfFilesWhileNoClipIsOpenDoesNothing) {
    connectDeck(kPaused);
    set(BXMCDetectScene, false);
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/old.mov");
    EXPECT_TRUE(messages().empty());
    deliver("01:00:00:00", "10:00:00");
    controller->setRecording(true); // waits for the start timecode
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/old.mov");
    EXPECT_EQ(messages(), (Entries{"begin"}));
}

} // namespace
} // namespace merro::test
