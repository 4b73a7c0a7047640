// What is no DV ends the recording with an alert, and files that cannot go on are changed.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

TapeScript takeWithForeignFrame(std::size_t sizeBytes) {
    return TapeScript()
        .take({.frames = 40, .timecode = "00:00:00:00", .date = "14:00:00"})
        .foreign(sizeBytes)
        .take({.frames = 40, .timecode = "00:00:01:16", .date = "14:00:01"});
}

const std::string kUntilThen = did({"0001", "14:00:00", "00:00:00:00", "00:00:01:14", "00:00:01:14"});

TEST(ForeignFrame, inTheMiddleOfATapeShowsAnAlertAndThenStopsTheRecording) {
    LoggingWorld world(takeWithForeignFrame(143'999));

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.journal(), (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                                        "alert Cannot capture this stream.", kUntilThen, "deck 0 1", "end"}));
    EXPECT_FALSE(world.controller->isRecording());
    EXPECT_EQ(world.movie("0001"), frames(0, 39)) << "without the frame that is no DV";
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 39}));
    world.expectAllFilesClosed();
}

TEST(ForeignFrame, theAlertSaysWhatTheUserCanDo) {
    LoggingWorld world(takeWithForeignFrame(300'000));

    world.start();
    world.playToEnd();

    ASSERT_EQ(world.alerts->shown().size(), 1U);
    EXPECT_EQ(
        world.alerts->shown()[0].informativeText,
        "The input video stream is not a DV stream. Please ensure that your connected device is playing "
        "back its content in DV format and try again.\nCapture will now stop.");
}

TEST(ForeignFrame, stopsBeforeTheFramesAfterItWhateverTheAfterRecordAction) {
    LoggingWorld world(takeWithForeignFrame(119'999));
    world.set(BXMCActionAfterRecord, 0);

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1"}));
    EXPECT_EQ(world.deck->delivered().back(), 80);
    EXPECT_EQ(world.movie("0001"), frames(0, 39));
}

TEST(ForeignFrame, withTheStopActionTheSessionStopsFromWithinTheFrame) {
    LoggingWorld world(takeWithForeignFrame(143'999));
    world.set(BXMCActionAfterRecord, 1);

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 0"}));
    EXPECT_FALSE(world.controller->session()->isRunning());
    EXPECT_EQ(world.movie("0001"), frames(0, 39));
    world.expectAllFilesClosed();
}

TEST(ForeignFrame, showsTheAlertAlsoWhenNothingIsRecorded) {
    LoggingWorld world(takeWithForeignFrame(143'999));

    world.controller->setDevicePlaying(true);
    world.playToEnd();

    EXPECT_EQ(world.journal(), (Entries{"deck 10000 1", "alert Cannot capture this stream."}));
}

TEST(ForeignFrame, theAlertIsShownForEachSuchFrame) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 5, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .foreign(1)
                           .foreign(120'001)
                           .take({.frames = 5, .timecode = "00:00:00:05", .date = "14:00:00"}));

    world.controller->setDevicePlaying(true);
    world.playToEnd();

    EXPECT_EQ(world.alertsShown().size(), 2U);
}

TEST(ForeignFrame, whileTheAlertIsUpTheTapeRunsOnAndTheMainThreadIsFree) {
    LoggingWorld world(takeWithForeignFrame(143'999));
    world.set(BXMCActionAfterRecord, 0);
    world.alerts->whileUp = [&](const platform::Alert&) { world.clock.sleepFor(std::chrono::seconds(1)); };

    world.start();
    world.playTo(39);
    world.passTime(std::chrono::milliseconds(500)); // the alert is up by now
    EXPECT_TRUE(world.controller->isRecording());
    world.stop();
    EXPECT_FALSE(world.controller->isRecording());
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 39));
    EXPECT_EQ(world.deck->deck().framesLost(), 24) << "the frames of that second, but for the one under way";
}

TEST(ForeignFrame, theEndOfTapeTimerFiresWhileTheAlertIsUp) {
    LoggingWorld world(takeWithForeignFrame(143'999));
    world.set(BXMCDetectEndTape, true);
    world.alerts->whileUp = [&](const platform::Alert&) { world.clock.sleepFor(std::chrono::minutes(1)); };

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
}

TEST(ForcedFileChange, withoutSceneDetectionOpensTheNextClip) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 50, .timecode = "00:00:02:00", .date = "17:00:00"}));
    world.set(BXMCDetectScene, false);
    world.movies.breakAfter("0001.mov", 30);

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:04", "00:00:01:04"}), "will 0002",
                       did({"0002", "14:00:01", "00:00:01:05", "00:00:03:24", "00:00:02:19"}), "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"})) << "the tape runs through";
    EXPECT_EQ(world.movie("0001"), frames(0, 29));
    EXPECT_EQ(world.movie("0002"), frames(30, 99));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 29}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{30, 80, 99}));
    world.expectAllFilesClosed();
}

TEST(ForcedFileChange, withSceneDetectionDoesNothing) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 50, .timecode = "00:00:02:00", .date = "17:00:00"}));
    world.movies.breakAfter("0001.mov", 30);

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24"}), "will 0002",
                       did({"0002", "17:00:00", "00:00:02:00", "00:00:03:24", "00:00:01:24"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 29));
    EXPECT_EQ(world.movies.movie("0001.mov").framesLost, 20);
    EXPECT_EQ(world.movie("0002"), frames(50, 99)) << "the next clip has a movie again";
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 49}));
}

} // namespace
} // namespace merro::test
