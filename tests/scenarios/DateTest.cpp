// What recording dates do on real tapes: stand still, go back, are missing, pass midnight, meet the night of
// a clock change.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"
#include "tests/timecode/TimeZone.h"

namespace merro::test {
namespace {

/// The number of clips that a tape of takes with these dates gives, all in one running timecode.
Entries messagesOf(const std::vector<std::string>& dates, int framesEach = 25) {
    TapeScript script;
    int frame = 0;
    for (const std::string& date : dates) {
        std::string start = "00:00:00:00";
        start[7] = static_cast<char>('0' + frame / 25);
        script.take({.frames = framesEach, .timecode = start, .date = date});
        frame += framesEach;
    }
    LoggingWorld world(script);
    world.log();
    return world.messages();
}

TEST(Date, theFullHourIsNoJump) {
    EXPECT_EQ(messagesOf({"13:59:59", "14:00:00", "14:00:01"}),
              (Entries{"begin", "will 0001",
                       did({"0001", "13:59:59", "00:00:00:00", "00:00:02:24", "00:00:02:24"}), "end"}));
}

TEST(Date, midnightAndTheEndOfTheYearAreNoJump) {
    EXPECT_EQ(
        messagesOf({"2005-12-31 23:59:59", "2006-01-01 00:00:00"}),
        (Entries{"begin", "will 0001",
                 did({"0001", "2005-12-31 23:59:59", "00:00:00:00", "00:00:01:24", "00:00:01:24"}), "end"}));
}

TEST(Date, aSecondMoreThanTheClockIsACut) {
    // One second is what the clock does; two are a pause.
    EXPECT_EQ(messagesOf({"14:00:00", "14:00:02"}),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:00:24", "00:00:00:24"}), "will 0002",
                       did({"0002", "14:00:02", "00:00:01:00", "00:00:01:24", "00:00:00:24"}), "end"}));
}

TEST(Date, aClockThatWasSetBackIsACut) {
    EXPECT_EQ(messagesOf({"14:00:00", "13:59:59"}),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:00:24", "00:00:00:24"}), "will 0002",
                       did({"0002", "13:59:59", "00:00:01:00", "00:00:01:24", "00:00:00:24"}), "end"}));
}

TEST(Date, aClockThatStandsStillMakesOneClipOfTheTape) {
    EXPECT_EQ(messagesOf({"14:00:00", "14:00:00", "14:00:00"}).size(), 4U);
}

TEST(Date, withoutSceneDetectionNothingIsCut) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 25, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 25, .timecode = "00:00:01:00", .date = "18:00:00"})
                           .take({.frames = 25, .timecode = "00:00:02:00", .date = "10:00:00"}));
    world.set(BXMCDetectScene, false);

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:24", "00:00:02:24"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 74));
}

TEST(Date, aTapeWithoutDatesIsOneClipWithoutADate) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 60, .timecode = "00:00:00:00"})
                           .take({.frames = 60, .timecode = "00:10:00:00", .isWide = true}));

    world.log();

    // Without a date the aspect ratio is that of the newest frame.
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001",
                                         did({.id = "0001",
                                              .start = "00:00:00:00",
                                              .end = "00:10:02:09",
                                              .duration = "00:10:02:09",
                                              .aspect = 0}),
                                         "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 119));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 60, 110, 119}));
}

TEST(Date, aStretchWithoutDatesBelongsToTheClipAroundIt) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 25, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 10, .timecode = "00:00:01:00"})
                           .take({.frames = 25, .timecode = "00:00:01:10", .date = "14:00:01"})
                           .take({.frames = 10, .timecode = "00:00:02:10"})
                           .take({.frames = 25, .timecode = "00:00:02:20", .date = "14:20:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:19", "00:00:02:19"}), "will 0002",
                       did({"0002", "14:20:00", "00:00:02:20", "00:00:03:19", "00:00:00:24"}), "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 69));
    EXPECT_EQ(world.movie("0002"), frames(70, 94));
}

TEST(Date, theClipOfAStartWithoutDatesIsDatedByItsFirstDatedFrame) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 10, .timecode = "00:00:00:00", .isWide = true})
                           .take({.frames = 40, .timecode = "00:00:00:10", .date = "14:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24", 1}), "end"}));
}

TEST(Date, junkDatesAreTakenAsCalendarsDo) {
    // Month 0 of 2005 is December 2004, day 0 the day before the first; the second take is a jump back.
    LoggingWorld world(TapeScript()
                           .take({.frames = 25, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 25, .timecode = "00:00:01:00", .date = "14:00:01"})
                           .damage(30, [](DVFrameBuilder& frame) { frame.setRecordingDate(2005, 0, 0); }));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:04", "00:00:01:04"}), "will 0002",
                       did({"0002", "2004-11-30 14:00:01", "00:00:01:05", "00:00:01:05", "00:00:00:00"}),
                       "will 0003", did({"0003", "14:00:01", "00:00:01:06", "00:00:01:24", "00:00:00:18"}),
                       "end"}));
    EXPECT_EQ(world.firstMovies(3), (std::vector<std::vector<int>>{frames(0, 29), {30}, frames(31, 49)}));
}

/// Europe/Paris sets its clocks forward from 02:00 to 03:00 on 27 March 2005; a camera does not.
const std::vector<std::string> kSpringNight{"2005-03-27 01:59:59", "2005-03-27 02:00:00"};
const std::vector<std::string> kSpringMorning{"2005-03-27 02:59:59", "2005-03-27 03:00:00"};
/// And back from 03:00 to 02:00 on 30 October 2005.
const std::vector<std::string> kAutumnMorning{"2005-10-30 02:59:59", "2005-10-30 03:00:00"};

std::size_t clipsOf(const std::vector<std::string>& dates) {
    return (messagesOf(dates).size() - 2) / 2;
}

TEST(Date, inATimeZoneWithoutClockChangesTheNightOfTheChangeMakesNoCut) {
    const TimeZone zone("UTC");
    EXPECT_EQ(clipsOf(kSpringNight), 1U);
    EXPECT_EQ(clipsOf(kSpringMorning), 1U);
    EXPECT_EQ(clipsOf(kAutumnMorning), 1U);
}

TEST(Date, inATimeZoneWithClockChangesTheHourThatDoesNotExistEndsWithACut) {
    const TimeZone zone("Europe/Paris");
    // 02:00:00 does not exist and is moved forward to 03:00:00, one second after 01:59:59.
    EXPECT_EQ(clipsOf(kSpringNight), 1U);
    // 02:59:59 is moved to 03:59:59; 03:00:00 then goes back by an hour less a second.
    EXPECT_EQ(clipsOf(kSpringMorning), 2U);
}

TEST(Date, inATimeZoneWithClockChangesTheHourThatExistsTwiceEndsWithACut) {
    const TimeZone zone("Europe/Paris");
    // 02:59:59 is the earlier of the two, an hour and a second before 03:00:00.
    EXPECT_EQ(clipsOf(kAutumnMorning), 2U);
}

TEST(Date, takesOfOneFrameAreClipsOfOneFrame) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 1, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 1, .timecode = "00:00:00:01", .date = "15:00:00"})
                           .take({.frames = 1, .timecode = "00:00:00:02", .date = "16:00:00"}));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:00:00", "00:00:00:00"}), "will 0002",
                       did({"0002", "15:00:00", "00:00:00:01", "00:00:00:01", "00:00:00:00"}), "will 0003",
                       did({"0003", "16:00:00", "00:00:00:02", "00:00:00:02", "00:00:00:00"}), "end"}));
    EXPECT_EQ(world.firstMovies(3), (std::vector<std::vector<int>>{{0}, {1}, {2}}));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(world.thumbnails("000" + std::to_string(i + 1)), (std::vector{i})) << "once, not twice";
    world.expectAllFilesClosed();
}

} // namespace
} // namespace merro::test
