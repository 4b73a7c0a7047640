// A tape is cut where its recording date jumps; clips, reports, thumbnails and movies are exactly the takes.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

/// Three takes: frames 0 to 59, 60 to 99 and 100 to 129.
TapeScript threeTakes() {
    return TapeScript()
        .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
        .take({.frames = 40, .timecode = "00:00:02:10", .date = "15:30:00", .isWide = true})
        .take({.frames = 30, .timecode = "00:00:04:00", .date = "2005-03-18 09:00:00"});
}

TEST(PlainTape, everyTakeBecomesAClipAndIsReportedWhenTheNextBegins) {
    LoggingWorld world(threeTakes());

    world.log();

    EXPECT_EQ(world.journal(),
              (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}), "will 0002",
                       "log END (00:00:02.09)", "log START (00:00:02.10)",
                       did({"0002", "15:30:00", "00:00:02:10", "00:00:03:24", "00:00:01:14", 0}), "will 0003",
                       "log END (00:00:03.24)", "log START (00:00:04.00)",
                       did({"0003", "2005-03-18 09:00:00", "00:00:04:00", "00:00:05:04", "00:00:01:04"}),
                       "deck 0 1", "end"}));
    EXPECT_EQ(world.controller->processNote(), "Recording stopped");
}

TEST(PlainTape, aReportHoldsValuesOfTheDocumentedTypes) {
    LoggingWorld world(threeTakes());

    world.log();

    SMPTETime duration; // made by subtraction, which knows no type
    duration.mSeconds = 2;
    duration.mFrames = 9;
    platform::Dictionary expected{
        {"clipId", "0001"},
        {"clipStartTimecode", timecode("00:00:00:00")},
        {"clipEndTimecode", timecode("00:00:02:09")},
        {"clipDuration", TimecodeValue::valueWithSMPTETime(duration)},
        {"clipAspectRatio", 1},
    };
    platform::Dictionary first = world.reports.at(0);
    ASSERT_NE(platform::find(first, "clipRecordingDate"), nullptr);
    ASSERT_NE(platform::find(first, "clipRecordingDate")->getIf<platform::DateRef>(), nullptr);
    first.erase("clipRecordingDate");
    EXPECT_EQ(first, expected);
}

TEST(PlainTape, theThumbnailsAreTheFirstFrameASampleEveryTwoSecondsAndTheLastFrame) {
    LoggingWorld world(threeTakes());

    world.log();

    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 59}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60, 99}));
    EXPECT_EQ(world.thumbnails("0003"), (std::vector{100, 129}));
    world.expectAllFilesClosed();
}

TEST(PlainTape, theMovieOfAClipHoldsItsFramesAndNoOthers) {
    LoggingWorld world(threeTakes());

    world.log();

    EXPECT_EQ(world.movie("0001"), frames(0, 59));
    EXPECT_EQ(world.movie("0002"), frames(60, 99));
    EXPECT_EQ(world.movie("0003"), frames(100, 129));
    EXPECT_EQ(world.movies.all().size(), 3U);
}

} // namespace
} // namespace merro::test
