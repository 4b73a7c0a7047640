// A device that goes away while it is recorded from, and comes back.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

using std::chrono::seconds;

TapeScript oneTake() {
    return TapeScript().take({.frames = 100, .timecode = "00:00:00:00", .date = "14:00:00"});
}

Equipment goesAwayAt(int frame, platform::Duration awayFor) {
    Equipment loose;
    loose.faults.goesAwayAtFrame = frame;
    loose.faults.awayFor = awayFor;
    return loose;
}

const std::string kUntilThen = did({"0001", "14:00:00", "00:00:00:00", "00:00:01:04", "00:00:01:04"});

TEST(Device, thatGoesAwayForGoodIsTheEndOfTheTape) {
    LoggingWorld world(oneTake(), goesAwayAt(30, seconds(0)));
    world.set(BXMCDetectEndTape, true);

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.journal(), (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                                        "disconnected", kUntilThen, "end"}))
        << "no command reaches a device that is not there";
    EXPECT_EQ(world.movie("0001"), frames(0, 29));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 29}));
    EXPECT_TRUE(world.framework.inputDevicesWithMediaType(platform::MediaType::Muxed).empty());
    EXPECT_EQ(world.controller->selectedVideoDevice(), world.deck);
    EXPECT_EQ(world.controller->controllableDevice(), nullptr);
    world.expectAllFilesClosed();
}

TEST(Device, thatGoesAwayWithoutEndOfTapeDetectionCanBeStoppedByHand) {
    LoggingWorld world(oneTake(), goesAwayAt(30, seconds(0)));

    world.start();
    world.playToEnd();
    EXPECT_TRUE(world.controller->isRecording());
    world.stop();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
}

TEST(Device, thatComesBackIsLoggedOnInANewRecording) {
    LoggingWorld world(oneTake(), goesAwayAt(30, seconds(5)));
    world.set(BXMCDetectEndTape, true);
    world.start();
    world.playToEnd();
    EXPECT_EQ(world.entries({"disconnected", "connected", "end"}),
              (Entries{"disconnected", "end", "connected"}));
    world.forgetJournal();

    world.controller->setSelectedVideoDevice(world.deck);
    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0002",
                       did({"0002", "14:00:01", "00:00:01:05", "00:00:03:24", "00:00:02:19"}), "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}))
        << "the device was chosen anew: no timecode is known, and the tape is not run back";
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 29), frames(30, 99)}));
}

TEST(Device, thatComesBackWhileItIsRecordedFromEndsTheRecordingWhenItIsChosenAgain) {
    LoggingWorld world(oneTake(), goesAwayAt(30, seconds(2)));

    world.start();
    world.playToEnd();
    world.controller->setSelectedVideoDevice(world.deck);

    // The buttons are brought up to date, and asking a tape that stands whether it plays ends a recording.
    EXPECT_FALSE(world.controller->isRecording());
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
    world.expectAllFilesClosed();
}

TEST(Device, thatComesBackAndIsPlayedByHandDeliversNothingUntilItIsOpenedAgain) {
    LoggingWorld world(oneTake(), goesAwayAt(30, seconds(2)));

    world.start();
    world.playToEnd();
    EXPECT_FALSE(world.deck->isOpen());
    EXPECT_NE(world.controller->controllableDevice(), nullptr);
    world.stop();

    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"})) << "it takes commands again";
}

TEST(Device, thatIsNotConnectedCannotBeChosen) {
    LoggingWorld world(oneTake(), goesAwayAt(0, seconds(0)));
    world.controller->setDevicePlaying(true);
    world.playToEnd();
    world.forgetJournal();

    world.controller->setSelectedVideoDevice(world.deck);

    EXPECT_EQ(world.alertsShown(),
              (Entries{"alert \"Simulated deck\" cannot be opened because it is not connected"}));
    EXPECT_FALSE(world.controller->hasRecordingDevice());
}

TEST(Device, thatIgnoresThePlayCommandRecordsNothingUntilItIsPlayed) {
    Equipment stubborn;
    stubborn.faults.commandsIgnoredPercent = 100;
    LoggingWorld world(oneTake(), stubborn);
    world.set(BXMCDetectEndTape, true);

    world.start();
    world.playToEnd();

    EXPECT_TRUE(world.controller->isRecording()) << "no frame has armed the end-of-tape timer";
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001"}));
    world.stop();
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", did({.id = "0001", .aspect = 0}), "end"}));
}

TEST(Device, changedToNoneWhileRecordingKeepsTheRecordingOn) {
    LoggingWorld world(oneTake());

    world.start();
    world.playTo(29);
    world.controller->setSelectedVideoDevice(nullptr);
    world.playToEnd();
    EXPECT_TRUE(world.controller->isRecording());
    world.stop();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kUntilThen, "end"}));
    EXPECT_FALSE(world.deck->isOpen());
    EXPECT_EQ(world.movie("0001"), frames(0, 29));
}

} // namespace
} // namespace merro::test
