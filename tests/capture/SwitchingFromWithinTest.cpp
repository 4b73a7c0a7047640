// Recording switched by a host from within its messages, and while a frame or an alert is at hand.
#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using SwitchingFromWithin = LoggingFixture;

TEST_F(SwitchingFromWithin, aHostThatStopsWhenToldOfTheBeginningGetsNoClip) {
    connectDeck();
    onBegin = [&] {
        controller->setRecording(false);
        EXPECT_FALSE(controller->isRecording());
    };
    controller->setRecording(true);
    EXPECT_EQ(messages(), (Entries{"begin", "end"}));
    EXPECT_TRUE(deck->commands().empty());
}

TEST_F(SwitchingFromWithin, aHostThatStopsWhenAskedForAClipGetsTheReportOfThatClip) {
    connectDeck();
    onWill = [&] { controller->setRecording(false); };
    controller->setRecording(true);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
    EXPECT_EQ(surroundings.files.file(thumbnails(1)).openNow, 0);
}

TEST_F(SwitchingFromWithin, aHostThatStopsAtAReportIsAskedForNoFurtherClip) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    onDid = [&] { controller->setRecording(false); };
    deliver("01:00:00:01", "11:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
    EXPECT_FALSE(controller->isRecording());
    deliver("01:00:00:02", "11:00:00");
    EXPECT_EQ(messages().back(), "end");
}

TEST_F(SwitchingFromWithin, aHostThatStopsAtTheReportOfAForcedChangeIsAskedForNoFurtherClip) {
    connectDeck();
    set(BXMCDetectScene, false);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    onDid = [&] { controller->setRecording(false); };
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/1.mov");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
}

TEST_F(SwitchingFromWithin, aHostThatStopsWhenAClipOpensAtACutGetsThatClipWithItsOneFrame) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    onWill = [&] { controller->setRecording(false); };
    deliver("01:00:00:01", "11:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "will 2", "did 2", "end"}));
    EXPECT_EQ(report(1), "01:00:00:01 - 01:00:00:01 11:00:00");
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{1}));
    EXPECT_EQ(surroundings.files.file(thumbnails(2)).openNow, 0);
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing", "/2.mov", "nothing"}))
        << "the marks are cleared when the frame at work has used them";
    EXPECT_EQ(text(controller->timecodeStartValue()), "-");
    EXPECT_EQ(controller->currentDate(), nullptr);
    EXPECT_EQ(journal().back(), "1 record nothing") << "only after the sample";
}

TEST_F(SwitchingFromWithin, aHostThatStopsAtTheReportOfACutKeepsTheCutFrameOutOfTheMovie) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    onDid = [&] { controller->setRecording(false); };
    deliver("", "11:00:00"); // no timecode that passes the end mark
    EXPECT_EQ(messages().back(), "end");
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing", "nothing"})) << "before the sample, and for the stop";
}

TEST_F(SwitchingFromWithin, aHostThatStartsAgainWhenToldOfTheEndGetsAWholeNewRecording) {
    connectDeck();
    controller->setRecording(true);
    onEnd = [&] {
        if (clipsOpened < 2)
            controller->setRecording(true);
    };
    controller->setRecording(false);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end", "begin", "will 2"}));
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(SwitchingFromWithin, aHostThatStopsAndStartsAtAReportGetsAnEndAndABeginning) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    onDid = [&] {
        onDid = nullptr;
        controller->setRecording(false);
        controller->setRecording(true);
    };
    deliver("01:00:00:01", "11:00:00");
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end", "begin", "will 2"}));
    deliver("01:00:00:02", "14:00:00"); // the first dated frame of the new recording
    EXPECT_EQ(messages().back(), "will 2");
}

TEST_F(SwitchingFromWithin, aFrameThatComesWhileRecordingIsBeingSwitchedOffIsInNoFile) {
    connectDeck();
    controller->setRecording(true);
    deliverRun(2, "01:00:00:00", "10:00:00");
    onDid = [&] { deliver("01:00:00:02", "10:00:00"); };
    controller->setRecording(false);
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:01 10:00:00");
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 1}));
}

TEST_F(SwitchingFromWithin, aFrameThatComesBeforeTheMovieIsEndedEndsIt) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    const auto observation = controller->announcements().addObserver(
        "recording", [&](const std::string&, platform::Change change) {
            if (change == platform::Change::Did)
                deliver("01:00:00:01", "10:00:00");
        });
    controller->setRecording(false);
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing", "nothing"}));
    EXPECT_EQ(report(0), "01:00:00:00 - 01:00:00:00 10:00:00");
}

TEST_F(SwitchingFromWithin, aStopFromWithinTheAlertMakesTheStopAfterItANoOp) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.alerts.whileUp = [&](const platform::Alert&) { controller->setRecording(false); };
    platform::QTSampleBuffer frame = makeFrame("", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(7));
    deliver(frame);
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
}

TEST_F(SwitchingFromWithin, aStopOfTheSessionWaitsForTheAlertToBeAnsweredButTheTapeStopsAtOnce) {
    connectDeck();
    set(BXMCActionAfterRecord, 1);
    controller->setRecording(true);
    surroundings.journal->clear();
    surroundings.alerts.whileUp = [&](const platform::Alert&) {
        controller->setRecording(false);
        note("answered");
    };
    platform::QTSampleBuffer frame = makeFrame("", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(7));
    deliver(frame);
    EXPECT_EQ(journal(),
              (Entries{"did 1", "deck speed 0 mode 0", "end", "answered", "stop", "1 record nothing"}));
}

TEST_F(SwitchingFromWithin, aSessionThatIsWantedAgainBeforeTheAlertIsAnsweredIsNotStopped) {
    connectDeck();
    set(BXMCActionAfterRecord, 1);
    controller->setRecording(true);
    surroundings.alerts.whileUp = [&](const platform::Alert&) {
        controller->setRecording(false);
        set(BXMCActionAfterRecord, 0);
        controller->setRecording(true);
    };
    platform::QTSampleBuffer frame = makeFrame("", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(7));
    deliver(frame);
    EXPECT_TRUE(surroundings.capture.session->isRunning());
}

} // namespace
} // namespace merro::test
