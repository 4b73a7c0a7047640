// What timecode does on real tapes: it is missing, starts again, repeats, runs on over blank tape.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

TEST(Timecode, aTapeWithoutAnyIsCutByItsDates) {
    LoggingWorld world(
        TapeScript().take({.frames = 80, .date = "14:00:00"}).take({.frames = 60, .date = "15:00:00"}));

    world.log();

    EXPECT_EQ(world.journal(),
              (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                       did({.id = "0001", .date = "14:00:00"}), "will 0002", "log START (00:00:00.00)",
                       did({.id = "0002", .date = "15:00:00"}), "deck 0 1", "end"}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 79), frames(80, 139)}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 79})) << "its first and its last frame";
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{80, 139}));
}

TEST(Timecode, withoutAnySkippedFramesAreCounted) {
    LoggingWorld world(
        TapeScript().take({.frames = 50, .date = "14:00:00"}).take({.frames = 50, .date = "15:00:00"}));
    world.set(BXMCNbDropFrame, 10);

    world.log();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", did({.id = "0001", .date = "14:00:00"}),
                                         "will 0002", did({.id = "0002", .date = "15:00:00"}), "end"}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 49}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60, 99}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 49), frames(60, 99)}))
        << "the frames that are skipped are in no movie";
}

TEST(Timecode, startingAgainAtEachTakeIsNoHindrance) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "15:00:00"})
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "16:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}), "will 0002",
                       did({"0002", "15:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}), "will 0003",
                       did({"0003", "16:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}), "end"}));
    EXPECT_EQ(world.firstMovies(3), (std::vector{frames(0, 59), frames(60, 119), frames(120, 179)}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60, 110, 119}));
}

TEST(Timecode, startingAgainWithinATakeLosesNoFrame) {
    // A tape that was taken out and put in again: the camera's clock ran on, its counter did not.
    LoggingWorld world(TapeScript()
                           .take({.frames = 75, .timecode = "00:10:00:00", .date = "14:00:00"})
                           .take({.frames = 75, .timecode = "00:00:00:00", .date = "14:00:03"}));

    world.log();

    // 0 less ten minutes is minus an hour and fifty minutes, as timecodes subtract: hours do not wrap.
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:10:00:00", "00:00:02:24", "-1:50:02:24"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 149));
    // The next sample would be at 00:10:04:00, which never comes.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 149}));
}

TEST(Timecode, thatStandsStillGivesTheFirstFrameAndTheLast) {
    LoggingWorld world(
        TapeScript()
            .take({.frames = 80, .timecode = "00:00:05:00", .date = "14:00:00", .timecodeStands = true})
            .take({.frames = 40, .timecode = "00:00:05:00", .date = "15:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:05:00", "00:00:05:00", "00:00:00:00"}), "will 0002",
                       did({"0002", "15:00:00", "00:00:05:00", "00:00:06:14", "00:00:01:14"}), "end"}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 79), frames(80, 119)}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 79}));
}

TEST(Timecode, runningOnOverBlankTapeIsNoCut) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 25, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .blank(50)
                           .take({.frames = 25, .timecode = "00:00:03:00", .date = "14:00:01"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:03:24", "00:00:03:24"}), "end"}));
    std::vector<int> both = frames(0, 24);
    const std::vector<int> after = frames(75, 99);
    both.insert(both.end(), after.begin(), after.end());
    EXPECT_EQ(world.movie("0001"), both);
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 75, 99})) << "the sampling point lay in the gap";
}

TEST(Timecode, thatAppearsInTheMiddleOfAClipIsItsStart) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 30, .date = "14:00:00"})
                           .take({.frames = 60, .timecode = "00:00:07:00", .date = "14:00:01"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:07:00", "00:00:09:09", "00:00:02:09"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 89));
    // 00:00:02:00 is the first sampling point and 7 s the first timecode; two seconds later is frame 80.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 30, 80, 89}));
}

TEST(Timecode, thatDisappearsLeavesTheLastKnownOneAsTheEndOfAStop) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 30, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 20, .date = "14:00:01"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:04", "00:00:01:04"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 49}));
}

TEST(Timecode, thatDisappearsLeavesACutWithoutAnEnd) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 30, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 20, .date = "14:00:01"})
                           .take({.frames = 20, .timecode = "00:00:02:00", .date = "15:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", did({.id = "0001", .date = "14:00:00", .start = "00:00:00:00"}),
                       "will 0002", did({"0002", "15:00:00", "00:00:02:00", "00:00:02:19", "00:00:00:19"}),
                       "end"}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 49), frames(50, 69)}));
}

TEST(Timecode, pastMidnightRunsOn) {
    LoggingWorld world(TapeScript().take({.frames = 100, .timecode = "23:59:58:00", .date = "14:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "23:59:58:00", "00:00:01:24", "-24:00:03:24"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 99));
    // The next sampling point is 24:00:00:00, which never comes.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 99}));
}

} // namespace
} // namespace merro::test
