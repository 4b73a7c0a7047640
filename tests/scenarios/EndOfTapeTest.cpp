// The recording ends by itself when no frame has come for a while, and leaves the tape as the user wants it.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Frames 0 to 49, then ten seconds of blank tape.
TapeScript takeAndBlankEnd() {
    return TapeScript().take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"}).blank(250);
}

const std::string kTheTake = did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24"});

/// A world whose recording ends by itself after `silence` without frames.
void endByItself(LoggingWorld& world, int silence, int action) {
    world.set(BXMCDetectEndTape, true);
    world.set(BXMCDetectEndTapeSecond, silence);
    world.set(BXMCActionAfterRecord, action);
}

/// When the host is told of the end.
platform::Moment momentOfEnd(LoggingWorld& world) {
    platform::Moment end{};
    world.onEnd = [&] { end = world.clock.now(); };
    world.start();
    world.playToEnd();
    return end;
}

TEST(EndOfTape, theTapeIsPausedASecondAfterTheLastFrame) {
    LoggingWorld world(takeAndBlankEnd());
    endByItself(world, 1, 2);

    const platform::Moment end = momentOfEnd(world);

    // The last frame passes 49 frames of 40 ms after the first.
    EXPECT_EQ(end, milliseconds(49 * 40) + seconds(1));
    EXPECT_EQ(world.journal(), (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                                        kTheTake, "deck 0 1", "end"}));
    EXPECT_TRUE(world.controller->isDevicePause());
    EXPECT_TRUE(world.controller->session()->isRunning());
    EXPECT_EQ(world.deck->deck().position().frameIndex, 49 + 25);
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 49}));
    world.expectAllFilesClosed();
}

TEST(EndOfTape, theTapeIsStoppedAndWithItTheSession) {
    LoggingWorld world(takeAndBlankEnd());
    endByItself(world, 3, 1);

    const platform::Moment end = momentOfEnd(world);

    EXPECT_EQ(end, milliseconds(49 * 40) + seconds(3));
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kTheTake, "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 0"}));
    EXPECT_FALSE(world.controller->session()->isRunning());
    EXPECT_EQ(world.deck->deck().position().frameIndex, 49 + 75);
}

TEST(EndOfTape, theTapeRunsOnWhenTheUserWantsNothingDone) {
    LoggingWorld world(takeAndBlankEnd());
    endByItself(world, 1, 0);

    const platform::Moment end = momentOfEnd(world);

    EXPECT_EQ(end, milliseconds(49 * 40) + seconds(1));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1"}));
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kTheTake, "end"}));
    EXPECT_TRUE(world.controller->session()->isRunning());
    EXPECT_EQ(world.deck->deck().position().frameIndex, 299) << "it ran to its physical end";
}

TEST(EndOfTape, anActionThatNobodyKnowsLeavesTheTapeAlone) {
    LoggingWorld world(takeAndBlankEnd());
    endByItself(world, 1, 7);

    (void)momentOfEnd(world);

    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1"}));
}

TEST(EndOfTape, theTapesPhysicalEndIsSilenceToo) {
    LoggingWorld world(TapeScript().take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"}));
    endByItself(world, 2, 2);

    EXPECT_EQ(momentOfEnd(world), milliseconds(49 * 40) + seconds(2));
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kTheTake, "end"}));
}

TEST(EndOfTape, aBlankStretchShorterThanTheLimitEndsNothing) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .blank(24) // 25 frame times from frame 49 to frame 74: just a second
                           .take({.frames = 50, .timecode = "00:00:02:00", .date = "16:00:00"})
                           .blank(100));
    endByItself(world, 2, 2);

    (void)momentOfEnd(world);

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kTheTake, "will 0002",
                       did({"0002", "16:00:00", "00:00:02:00", "00:00:03:24", "00:00:01:24"}), "end"}));
    EXPECT_EQ(world.movie("0002"), frames(74, 123));
}

TEST(EndOfTape, aBlankStretchThatIsLongerEndsTheRecordingAndTheRestIsNotLogged) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .blank(60)
                           .take({.frames = 50, .timecode = "00:00:02:00", .date = "16:00:00"}));
    endByItself(world, 2, 0);

    (void)momentOfEnd(world);

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kTheTake, "end"}));
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.deck->delivered().back(), 159) << "the tape went on";
}

TEST(EndOfTape, withoutDetectionTheRecordingGoesOnForEver) {
    LoggingWorld world(takeAndBlankEnd());

    world.start();
    world.playToEnd();

    EXPECT_TRUE(world.controller->isRecording());
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001"}));
}

TEST(EndOfTape, aRecordingThatNeverSeesAFrameNeverEndsByItself) {
    LoggingWorld world(TapeScript().blank(500));
    endByItself(world, 1, 2);

    world.start();
    world.playToEnd();

    EXPECT_TRUE(world.controller->isRecording());
}

TEST(EndOfTape, withNoSecondsTheRecordingEndsAlmostAtOnce) {
    LoggingWorld world(takeAndBlankEnd());
    endByItself(world, 0, 2);

    EXPECT_EQ(momentOfEnd(world), milliseconds(0));
    EXPECT_EQ(world.movie("0001"), frames(0, 0));
}

TEST(EndOfTape, aStopByHandLeavesNoTimerThatEndsTheNextRecording) {
    LoggingWorld world(
        TapeScript().blank(1).take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"}).blank(250));
    endByItself(world, 2, 0);

    world.start();
    world.playTo(50);
    world.passTime(milliseconds(1900));
    world.stop();
    world.start(); // on blank tape: nothing arms the timer
    world.playToEnd();

    EXPECT_TRUE(world.controller->isRecording());
    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kTheTake, "end", "begin", "will 0002"}));
}

} // namespace
} // namespace merro::test
