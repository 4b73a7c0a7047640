// Stopping by hand, and skipping frames after a cut.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

/// Frames 0 to 49 and 50 to 99.
TapeScript twoTakes() {
    return TapeScript()
        .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
        .take({.frames = 50, .timecode = "00:00:02:00", .date = "15:00:00"});
}

const std::string kFirst = did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24"});

TEST(Stop, byHandInTheMiddleOfAClipEndsItWithTheNewestFrame) {
    LoggingWorld world(twoTakes());

    world.start();
    world.playTo(69);
    world.stop();
    world.playToEnd();

    EXPECT_EQ(
        world.journal(),
        (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)", kFirst, "will 0002",
                 "log END (00:00:01.24)", "log START (00:00:02.00)",
                 did({"0002", "15:00:00", "00:00:02:00", "00:00:02:19", "00:00:00:19"}), "deck 0 1", "end"}));
    EXPECT_EQ(world.movie("0002"), frames(50, 69));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{50, 69}));
    EXPECT_TRUE(world.controller->isDevicePause());
    world.expectAllFilesClosed();
}

TEST(Stop, beforeTheFirstFrameReportsTheClipThatWasOpened) {
    LoggingWorld world(TapeScript().blank(100));

    world.start();
    world.passTime(std::chrono::seconds(1));
    world.stop();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", did({.id = "0001", .aspect = 0}), "end"}));
    EXPECT_TRUE(world.thumbnails("0001").empty());
    EXPECT_TRUE(world.movies.all().empty());
}

TEST(Stop, twiceEndsOnce) {
    LoggingWorld world(twoTakes());

    world.log();
    world.stop();

    EXPECT_EQ(world.entries({"end"}), (Entries{"end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"})) << "one after-record action";
}

TEST(Stop, withoutARecordingSaysNothing) {
    LoggingWorld world(twoTakes());

    world.stop();

    EXPECT_TRUE(world.journal().empty());
}

TEST(Skip, theNextClipOpensAsManyFramesAfterTheCutAsAskedFor) {
    LoggingWorld world(twoTakes());
    world.set(BXMCNbDropFrame, 3);

    world.log();

    // The cut is at frame 50, 00:00:02:00; the clip opens at 00:00:02:03.
    EXPECT_EQ(
        world.journal(),
        (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)", kFirst,
                 "log END (00:00:01.24)", "will 0002", "log START (00:00:02.03)",
                 did({"0002", "15:00:00", "00:00:02:03", "00:00:03:24", "00:00:01:21"}), "deck 0 1", "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.movie("0002"), frames(53, 99));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{53, 99}));
}

TEST(Skip, aStopWhileFramesAreSkippedReportsNoClip) {
    LoggingWorld world(twoTakes());
    world.set(BXMCNbDropFrame, 20);

    world.start();
    world.playTo(60);
    world.stop();

    EXPECT_EQ(world.journal(), (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                                        kFirst, "log END (00:00:01.24)", "deck 0 1", "end"}));
    EXPECT_FALSE(world.controller->isPrerolling());
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 49}));
    world.expectAllFilesClosed();
}

TEST(Skip, theNextRecordingAfterSuchAStopSkipsNothing) {
    LoggingWorld world(twoTakes());
    world.set(BXMCNbDropFrame, 20);
    world.set(BXMCActionAfterRecord, 0);

    world.start();
    world.playTo(60);
    world.stop();
    world.log();

    EXPECT_EQ(world.movie("0002"), frames(61, 99));
}

TEST(Skip, aTakeThatEndsWithinTheSkipIsNoClip) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 5, .timecode = "00:00:02:00", .date = "15:00:00"})
                           .take({.frames = 40, .timecode = "00:00:02:05", .date = "15:00:00"}));
    world.set(BXMCNbDropFrame, 10);

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002",
                       did({"0002", "15:00:00", "00:00:02:10", "00:00:03:19", "00:00:01:09"}), "end"}));
    EXPECT_EQ(world.movie("0002"), frames(60, 94));
}

TEST(Skip, anotherJumpMeetsTheFrameThatEndsTheSkipWhichIsThenAClipOfItsOwn) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 5, .timecode = "00:00:02:00", .date = "15:00:00"})
                           .take({.frames = 40, .timecode = "00:00:02:05", .date = "16:00:00"}));
    world.set(BXMCNbDropFrame, 10);

    world.log();

    // Frame 60 opens a clip, and its date has jumped since frame 50: the clip ends again at once, before a
    // date of its own is known.
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002",
                       did({"0002", "", "00:00:02:10", "00:00:02:10", "00:00:00:00"}), "will 0003",
                       did({"0003", "16:00:00", "00:00:02:20", "00:00:03:19", "00:00:00:24"}), "end"}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60}));
    EXPECT_EQ(world.movie("0003"), frames(70, 94));
}

TEST(Skip, whereTimecodeStartsAgainTheSkipEndsWhenItsFramesHavePassed) {
    // At the jump the timecode says 09:59:59:20; the one to be reached, 10:00:00:05, never comes.
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 2, .timecode = "09:59:59:20", .date = "15:00:00"})
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "15:00:00"}));
    world.set(BXMCNbDropFrame, 10);

    world.log();

    EXPECT_EQ(world.movie("0002"), frames(60, 111));
}

} // namespace
} // namespace merro::test
