// Starting: at once from a tape that plays or stands stopped; from pause at a known timecode the tape runs
// back for two seconds first, and the clip opens where recording was asked for.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

/// Frames 0 to 199, one take from 01:00:00:00 on.
TapeScript oneTake() {
    return TapeScript().take({.frames = 200, .timecode = "01:00:00:00", .date = "14:00:00"});
}

/// Plays to `frame` and pauses there.
void pauseAt(LoggingWorld& world, int frame) {
    world.controller->setDevicePlaying(true);
    world.playTo(frame);
    world.controller->setDevicePlaying(false);
    world.passTime(std::chrono::seconds(1));
    world.forgetJournal();
}

TEST(Start, fromAPausedTapeRunsItBackForTwoSecondsAndOpensTheClipAtTheTimecodeItStoodAt) {
    LoggingWorld world(oneTake());
    pauseAt(world, 80);

    world.log();

    EXPECT_EQ(
        world.journal(),
        (Entries{"begin", "deck -10000 1", "deck 10000 1", "will 0001", "log START (01:00:03.05)",
                 did({"0001", "14:00:03", "01:00:03:05", "01:00:07:24", "00:00:04:19"}), "deck 0 1", "end"}));
    EXPECT_EQ(world.movie("0001"), frames(80, 199));
    // 01:00:03:05 is frame 80; two seconds later are 130 and 180.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{80, 130, 180, 199}));
}

TEST(Start, theTapeRunsBackExactlyTwoSeconds) {
    LoggingWorld world(oneTake());
    pauseAt(world, 80);

    const platform::Moment before = world.clock.now();
    world.start();

    EXPECT_EQ(world.clock.now() - before, std::chrono::seconds(2));
    EXPECT_TRUE(world.controller->isRecording());
    EXPECT_TRUE(world.controller->isPrerolling());
    EXPECT_EQ(text(TimecodeValue::valueWithSMPTETime(world.controller->startTimecode())), "01:00:03:05");
    world.playTo(31);
    std::vector<int> forward = world.deck->delivered();
    forward.erase(forward.begin(), forward.end() - 2);
    EXPECT_EQ(forward, (std::vector{30, 31})) << "80 less fifty frames";
}

TEST(Start, lessThanTwoSecondsIntoTheTapeTheTapesStartStopsTheRunBack) {
    LoggingWorld world(oneTake());
    pauseAt(world, 20);

    world.log();

    EXPECT_EQ(world.commands(), (Entries{"deck -10000 1", "deck 10000 1", "deck 0 1"}));
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "01:00:00:20", "01:00:07:24", "00:00:07:04"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(20, 199));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{20, 70, 120, 170, 199}));
}

TEST(Start, aMechanismThatTakesItsTimeStillOpensTheClipAtTheStartTimecode) {
    Equipment camcorder;
    camcorder.mechanism = {};
    LoggingWorld world(oneTake(), camcorder);
    pauseAt(world, 80);
    const SMPTETime pausedAt = world.controller->currentTimecodeValue().SMPTETimeValue();

    world.log();

    // The tape ran on after the command to pause; where it stood is what the controller saw last.
    const int first = pausedAt.mSeconds * 25 + pausedAt.mFrames;
    EXPECT_GT(first, 80);
    EXPECT_EQ(world.movie("0001"), frames(first, 199));
    EXPECT_EQ(world.thumbnails("0001").front(), first);
    EXPECT_EQ(world.commands(), (Entries{"deck -10000 1", "deck 10000 1", "deck 0 1"}));
}

TEST(Start, aStopDuringTheRunBackReportsNoClip) {
    LoggingWorld world(oneTake());
    pauseAt(world, 80);

    world.start();
    world.playTo(50);
    world.stop();

    EXPECT_EQ(world.messages(), (Entries{"begin", "end"}));
    EXPECT_FALSE(world.controller->isPrerolling());
    EXPECT_TRUE(world.memoryFiles.paths().empty());
    EXPECT_TRUE(world.movies.all().empty());
}

TEST(Start, withTheTapePlayingTheClipBeginsWithTheNextFrame) {
    LoggingWorld world(oneTake());
    world.controller->setDevicePlaying(true);
    world.playTo(99);
    world.forgetJournal();

    world.log();

    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}));
    EXPECT_EQ(world.movie("0001"), frames(100, 199));
    EXPECT_EQ(didText(world.reports.at(0)),
              did({"0001", "14:00:04", "01:00:04:00", "01:00:07:24", "00:00:03:24"}));
}

TEST(Start, aPausedTapeWithoutATimecodeStartsAtOnce) {
    LoggingWorld world(TapeScript().take({.frames = 100, .date = "14:00:00"}));
    pauseAt(world, 20);

    world.log();

    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}));
    EXPECT_EQ(world.movie("0001"), frames(20, 99));
}

TEST(Start, switchingOnTwiceBeginsOnce) {
    LoggingWorld world(oneTake());

    world.start();
    world.playTo(100);
    world.start();
    EXPECT_EQ(world.controller->currentDate(), nullptr) << "cleared although nothing is switched";
    EXPECT_FALSE(world.controller->timecodeStartValue());
    world.playToEnd();
    world.stop();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "01:00:00:00", "01:00:07:24", "00:00:07:24"}), "end"}));
}

TEST(Start, switchingOnAgainForgetsTheDateSoThatAJumpRightThenIsNoCut) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 50, .timecode = "00:00:02:00", .date = "15:00:00"}));

    world.start();
    world.playTo(49);
    world.start();
    world.playToEnd();
    world.stop();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:03:24", "00:00:03:24"}), "end"}));
}

TEST(Start, twoRecordingsOneAfterTheOtherKnowNothingOfEachOther) {
    LoggingWorld world(
        TapeScript()
            .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
            .take({.frames = 60, .timecode = "00:00:02:10", .date = "15:00:00", .isWide = true}));
    world.set(BXMCActionAfterRecord, 0);

    world.start();
    world.playTo(39);
    world.stop();
    world.playTo(79); // previewing, across the jump of the date
    world.log();

    EXPECT_EQ(world.journal(),
              (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:14", "00:00:01:14"}), "end", "begin",
                       "deck 10000 1", "will 0002", "log START (00:00:03.05)",
                       did({"0002", "15:00:00", "00:00:03:05", "00:00:04:19", "00:00:01:14", 0}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 39));
    EXPECT_EQ(world.movie("0002"), frames(80, 119));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 39}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{80, 119}));
}

TEST(Start, afterAPauseTheSecondRecordingGoesOnExactlyWhereTheFirstEnded) {
    LoggingWorld world(oneTake());

    world.start();
    world.playTo(99);
    world.stop(); // pauses
    world.log();  // backs up and goes on

    EXPECT_EQ(world.commands(),
              (Entries{"deck 10000 1", "deck 0 1", "deck -10000 1", "deck 10000 1", "deck 0 1"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 99));
    EXPECT_EQ(world.movie("0002"), frames(99, 199)) << "the frame it stood at is in both";
}

} // namespace
} // namespace merro::test
