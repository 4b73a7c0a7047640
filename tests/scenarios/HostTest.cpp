// Hosts: without some messages, without paths, that stop or start from within a message, that go away.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

/// Frames 0 to 49, 50 to 99 and 100 to 149.
TapeScript threeTakes() {
    return TapeScript()
        .take({.frames = 50, .timecode = "00:00:00:00", .date = "14:00:00"})
        .take({.frames = 50, .timecode = "00:00:02:00", .date = "15:00:00"})
        .take({.frames = 50, .timecode = "00:00:04:00", .date = "16:00:00"});
}

const std::string kFirst = did({"0001", "14:00:00", "00:00:00:00", "00:00:01:24", "00:00:01:24"});
const std::string kSecond = did({"0002", "15:00:00", "00:00:02:00", "00:00:03:24", "00:00:01:24"});
const std::string kThird = did({"0003", "16:00:00", "00:00:04:00", "00:00:05:24", "00:00:01:24"});

TEST(Host, thatAnswersNoPathsGetsItsReportsAndNoFiles) {
    LoggingWorld world(threeTakes());
    world.answer = [](const std::string& clip) {
        return platform::Dictionary{{std::string(kBXMCClipId), clip}};
    };

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002", kSecond, "will 0003", kThird, "end"}));
    EXPECT_TRUE(world.memoryFiles.paths().empty());
    EXPECT_TRUE(world.movies.all().empty());
}

TEST(Host, thatAnswersNothingAtAllGetsReportsWithoutAnIdentifier) {
    LoggingWorld world(threeTakes());
    world.answer = [](const std::string&) { return platform::Dictionary{}; };

    world.log();

    EXPECT_EQ(didText(world.reports.at(1)),
              did({"", "15:00:00", "00:00:02:00", "00:00:03:24", "00:00:01:24"}));
    EXPECT_EQ(world.reports.size(), 3U);
}

TEST(Host, mayKnowItsClipsByNumbersOrWholeDictionaries) {
    LoggingWorld world(threeTakes());
    const platform::Dictionary identifier{{"tape", 12}, {"clip", 1}};
    world.answer = [&](const std::string&) {
        return platform::Dictionary{{std::string(kBXMCClipId), identifier}};
    };

    world.log();

    EXPECT_EQ(*platform::find(world.reports.at(0), kBXMCClipId), platform::Value(identifier));
}

TEST(Host, thatDoesNotAnswerDidRecordStillGetsItsFiles) {
    LoggingWorld world(threeTakes());
    world.host->mccontrollerDidRecordInfo = nullptr;

    world.log();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", "will 0002", "will 0003", "end"}));
    EXPECT_EQ(world.firstMovies(3), (std::vector{frames(0, 49), frames(50, 99), frames(100, 149)}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{50, 99}));
    world.expectAllFilesClosed();
}

TEST(Host, thatDoesNotAnswerDidRecordGetsNoSkippedFramesIntoItsMovies) {
    LoggingWorld world(threeTakes());
    world.host->mccontrollerDidRecordInfo = nullptr;
    world.set(BXMCNbDropFrame, 10);

    world.log();

    EXPECT_EQ(world.firstMovies(3), (std::vector{frames(0, 49), frames(60, 99), frames(110, 149)}));
}

TEST(Host, thatOnlyHearsOfTheEndHearsOfIt) {
    LoggingWorld world(threeTakes());
    world.host->mccontrollerBeginRecord = nullptr;
    world.host->mccontrollerWillRecord = nullptr;
    world.host->mccontrollerDidRecordInfo = nullptr;

    world.log();

    EXPECT_EQ(world.journal(), (Entries{"deck 10000 1", "log START (00:00:00.00)", "log START (00:00:02.00)",
                                        "log START (00:00:04.00)", "deck 0 1", "end"}));
    EXPECT_TRUE(world.movies.all().empty());
}

TEST(Host, thatIsNotThereIsNoHindrance) {
    LoggingWorld world(threeTakes());
    world.controller->setDelegate(nullptr);

    world.log();

    EXPECT_TRUE(world.messages().empty());
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}));
}

TEST(Host, thatStopsWhenAClipHasEndedIsAskedForNoOther) {
    LoggingWorld world(threeTakes());
    world.onDid = [&] { world.stop(); };

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kFirst, "end"}));
    EXPECT_FALSE(world.controller->isRecording());
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}));
    EXPECT_EQ(world.movies.all().size(), 1U);
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    world.expectAllFilesClosed();
}

TEST(Host, thatStopsWhenAClipOpensGetsThatClipReportedOnce) {
    LoggingWorld world(threeTakes());
    world.onWill = [&] {
        if (world.reports.size() == 1)
            world.stop();
    };

    world.start();
    world.playToEnd();

    const Entries messages = world.messages();
    ASSERT_EQ(messages.size(), 6U);
    EXPECT_EQ(messages[3], "will 0002");
    EXPECT_TRUE(messages[4].starts_with("did 0002 ")) << messages[4];
    EXPECT_EQ(messages[5], "end");
    EXPECT_EQ(world.movie("0001"), frames(0, 49));
    EXPECT_EQ(world.movie("0002"), frames(50, 50)) << "the frame at hand, and no other";
    EXPECT_EQ(world.thumbnails("0002"), frames(50, 50));
    world.expectAllFilesClosed();
}

TEST(Host, thatStopsWhenTheVeryFirstClipOpensGetsItReportedToo) {
    LoggingWorld world(threeTakes());
    world.onWill = [&] { world.stop(); };

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", did({.id = "0001", .aspect = 0}), "end"}));
    EXPECT_EQ(world.commands(), (Entries{"deck 10000 1", "deck 0 1"}));
}

TEST(Host, thatStopsAtTheBeginningGetsNoClip) {
    LoggingWorld world(threeTakes());
    world.onBegin = [&] { world.stop(); };

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "end"}));
    EXPECT_FALSE(world.controller->isRecording());
}

TEST(Host, thatStartsAgainWhenARecordingHasEndedLogsOn) {
    LoggingWorld world(threeTakes());
    world.set(BXMCActionAfterRecord, 0);
    bool again = true;
    world.onEnd = [&] {
        if (std::exchange(again, false))
            world.start();
    };

    world.start();
    world.playTo(69);
    world.stop();
    world.playToEnd();
    world.stop();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002",
                       did({"0002", "15:00:00", "00:00:02:00", "00:00:02:19", "00:00:00:19"}), "end", "begin",
                       "will 0003", did({"0003", "15:00:00", "00:00:02:20", "00:00:03:24", "00:00:01:04"}),
                       "will 0004", did({"0004", "16:00:00", "00:00:04:00", "00:00:05:24", "00:00:01:24"}),
                       "end"}));
    EXPECT_EQ(world.firstMovies(4),
              (std::vector{frames(0, 49), frames(50, 69), frames(70, 99), frames(100, 149)}));
}

TEST(Host, thatTakesItsTimeInAMessageLosesTheFramesOfThatTimeAndNoOthers) {
    LoggingWorld world(threeTakes());
    world.onDid = [&] { world.clock.sleepFor(std::chrono::milliseconds(400)); };

    world.log();

    // Ten frame times pass while frame 50 is being worked on, and again at the next cut.
    EXPECT_EQ(world.movie("0002").front(), 50);
    EXPECT_EQ(world.movie("0002").size() + world.movie("0003").size(), world.deck->delivered().size() - 50);
    EXPECT_EQ(static_cast<std::size_t>(world.framework.framesLost()) + world.deck->delivered().size(), 150U);
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002", kSecond, "will 0003", kThird, "end"}));
}

TEST(Host, thatDestroysTheControllerWhileRecordingGetsWholeFilesAndNoReport) {
    LoggingWorld world(threeTakes());

    world.start();
    world.playTo(69);
    world.controller.reset();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001", kFirst, "will 0002"}));
    EXPECT_EQ(world.movie("0002"), frames(50, 69));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{50, 69}));
    EXPECT_FALSE(world.deck->isOpen());
    world.expectAllFilesClosed();
}

TEST(Host, thatDestroysTheControllerWithTheEndOfTapeTimerRunningHearsNothingOfIt) {
    LoggingWorld world(threeTakes());
    world.set(BXMCDetectEndTape, true);

    world.start();
    world.playTo(20);
    world.controller.reset();
    world.playToEnd();

    EXPECT_EQ(world.messages(), (Entries{"begin", "will 0001"}));
}

TEST(Host, withAPlayButtonBoundEndsTheRecordingWhenTheTapeStops) {
    LoggingWorld world(threeTakes());
    world.bindPlayButton();

    world.start();
    world.playToEnd();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001", kFirst, "will 0002", kSecond, "will 0003", kThird, "end"}));
    EXPECT_EQ(world.movie("0003"), frames(100, 149)) << "down to the last frame";
}

TEST(Host, withAPlayButtonBoundEndsTheRecordingWhenSomebodyPausesTheTape) {
    LoggingWorld world(threeTakes());
    world.bindPlayButton();

    world.start();
    world.playTo(29);
    world.controller->setDevicePlaying(false);
    world.playToEnd();

    EXPECT_FALSE(world.controller->isRecording());
    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:01:04", "00:00:01:04"}), "end"}));
}

} // namespace
} // namespace merro::test
