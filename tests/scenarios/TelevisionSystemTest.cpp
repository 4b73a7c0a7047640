// 525/60 tapes, drop-frame timecode, and tapes on which the system changes.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

constexpr DVSystem k525 = DVSystem::System525_60;

TEST(TelevisionSystem, a525TapeIsLoggedInItsOwnCounting) {
    LoggingWorld world(
        TapeScript()
            .take({.frames = 75, .timecode = "01:00:00:00", .date = "14:00:00", .system = k525})
            .take({.frames = 40, .timecode = "01:00:02:15", .date = "15:00:00", .system = k525}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "01:00:00:00", "01:00:02:14", "00:00:02:14"}), "will 0002",
                       did({"0002", "15:00:00", "01:00:02:15", "01:00:03:24", "00:00:01:09"}), "end"}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 60, 74})) << "two seconds of 30 frames";
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 74), frames(75, 114)}));
    EXPECT_EQ(world.memoryFiles.file("0002.thumbnails").bytes.size(), 240'000U);
}

TEST(TelevisionSystem, dropFrameTimecodeIsSampledAsItIsCounted) {
    // 00:00:59:29 is followed by 00:01:00:02: frame 60 of the take is 00:01:00:02, and one second later
    // (28 frames) begins 00:01:01:00.
    LoggingWorld world(TapeScript().take(
        {.frames = 150, .timecode = "00:00:58:00", .date = "14:00:00", .system = k525, .isDropFrame = true}));
    world.set(BXMCSampleInterval, 0);

    world.log();

    // Sampling points: 58:00, 59:00, 1:00:00 (the first past it is 1:00:02), then 1:01:02, 1:02:02.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 30, 60, 90, 120, 149}));
    EXPECT_EQ(world.movie("0001"), frames(0, 149)) << "the two numbers left out are no break";
    // Frame 149 is 89 frames after 1:00:02, with 28 in its second: 1:03:01.
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:58:00", "00:01:03:01", "00:00:05:01"}), "end"}));
}

TEST(TelevisionSystem, skippingOverTheMinuteCountsFramesThatThereAreNot) {
    // The cut is at 00:00:59:20; 15 frames later, plainly counted, is 00:01:00:05, which on a drop-frame tape
    // comes after 13 frames: 59:21 … 59:29 are nine, then 1:00:02 … 1:00:05.
    LoggingWorld world(
        TapeScript()
            .take({.frames = 20, .timecode = "00:00:59:00", .date = "14:00:00", .system = k525})
            .take({.frames = 60,
                   .timecode = "00:00:59:20",
                   .date = "15:00:00",
                   .system = k525,
                   .isDropFrame = true}));
    world.set(BXMCNbDropFrame, 15);

    world.log();

    EXPECT_EQ(world.movie("0002"), frames(33, 79));
    EXPECT_EQ(text(*platform::find(world.reports.at(1), kBXMCClipStartTimecode)->getIf<TimecodeValue>()),
              "00:01:00:05");
}

TEST(TelevisionSystem, aChangeWithinAClipKeepsEveryFrameAsItIs) {
    LoggingWorld world(
        TapeScript()
            .take({.frames = 40, .timecode = "00:00:00:00", .date = "14:00:00"})
            .take({.frames = 40, .timecode = "00:00:01:15", .date = "14:00:01", .system = k525}));
    world.set(BXMCSampleInterval, 0);

    world.log();

    // Samples at 0 s (frame 0) and 1 s (25); 2 s is 15 frames of the second system on, frame 55.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 25, 55, 79}));
    EXPECT_EQ(world.memoryFiles.file("0001.thumbnails").bytes.size(), 2U * 144'000 + 2U * 120'000);
    EXPECT_EQ(world.movie("0001"), frames(0, 79));
    EXPECT_EQ(world.messages().size(), 4U);
}

TEST(TelevisionSystem, aChangeBetweenTakesIsACutLikeAnyOther) {
    LoggingWorld world(
        TapeScript()
            .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
            .take({.frames = 60, .timecode = "00:00:02:00", .date = "16:00:00", .system = k525}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24"}), "will 0002",
                       did({"0002", "16:00:00", "00:00:02:00", "00:00:03:29", "00:00:01:29"}), "end"}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 49), frames(50, 109)}));
}

} // namespace
} // namespace merro::test
