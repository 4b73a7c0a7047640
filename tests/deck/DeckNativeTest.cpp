// The deck and the capture session on real threads in real time.
#include "platform/deck/Deck.h"
#include "platform/deck/MemoryTape.h"
#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"
#include "tests/deck/DeckFixture.h"
#include "tests/session/JournalRecorders.h"

#include <atomic>

namespace merro::platform::deck {
namespace {

class DeckInRealTime : public testing::Test {
protected:
    void load(std::unique_ptr<Tape> tape, DeckSettings settings) {
        deck = makeDeck(world.clock, world.threads, world.loop, notifications, std::move(tape),
                        std::move(settings));
        ASSERT_FALSE(deck->open());
        ASSERT_FALSE(session->addInput(framework.makeDeviceInput(deck)));
    }

    void command(TransportState wanted) {
        deck->setAttributeForKey(
            Dictionary{{std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), wanted.speed},
                       {std::string(QTCaptureDeviceAVCTransportControlsPlaybackModeKey), wanted.mode}},
            QTCaptureDeviceAVCTransportControlsAttribute);
    }

    NativeWorld world;
    NotificationCenter notifications;
    std::shared_ptr<test::Journal> journal = std::make_shared<test::Journal>();
    test::JournalRecorders recorders{journal};
    session::CaptureFramework framework{world.threads, world.loop, notifications, &recorders,
                                        session::WhenFull::Wait};
    std::shared_ptr<QTCaptureSession> session = framework.makeSession();
    std::shared_ptr<Deck> deck;
};

TEST_F(DeckInRealTime, playsToTheEndAndEveryFrameIsDeliveredOrCountedAsLost) {
    std::int64_t delivered = 0;
    const auto output = framework.makeMovieFileOutput();
    QTCaptureFileOutputDelegate delegate;
    delegate.didOutputSampleBuffer = [&](auto&, auto&, auto&) { ++delivered; };
    output->setDelegate(delegate);
    session->addOutput(output);
    DeckSettings settings;
    settings.mechanism = MechanismSettings::ideal();
    load(numberedTape(10), settings);
    const auto atEnd = notifications.addObserver(std::string(QTCaptureDeviceAttributeDidChangeNotification),
                                                 nullptr, [&](const Notification&) {
                                                     if (deck->position().frameIndex == 9)
                                                         world.loop.stop();
                                                 });
    session->startRunning();
    command(playing);
    EXPECT_TRUE(world.loop.run());
    session->stopRunning();
    EXPECT_EQ(delivered + framework.framesLost(), 10);
}

// Frames come as fast as they can while the main thread starts, stops, commands and switches files.
TEST_F(DeckInRealTime, startingAndStoppingThousandsOfTimesWhileFramesArriveLeavesNothingHanging) {
    constexpr int rounds = 2000;
    std::atomic<bool> mayBeCalled = false;
    std::atomic<std::int64_t> delivered = 0;
    const auto output = framework.makeMovieFileOutput();
    QTCaptureFileOutputDelegate delegate;
    delegate.didOutputSampleBuffer = [&](QTCaptureMovieFileOutput& from, const auto&, const auto&) {
        EXPECT_TRUE(mayBeCalled);
        if (++delivered % 7 == 0)
            from.recordToOutputFileURL("from the delegate");
        if (delivered % 50 == 0)
            session->stopRunning();
    };
    output->setDelegate(delegate);
    session->addOutput(output);
    DeckSettings settings;
    settings.mechanism = MechanismSettings::ideal();
    settings.mechanism.searchSpeeds[3] = {1000, 1};
    load(std::make_unique<MemoryTape>(std::vector<FrameBytes>(2'000'000, FrameBytes::taking({1}))), settings);
    command(playing);
    for (int round = 0; round < rounds; ++round) {
        mayBeCalled = true;
        session->startRunning();
        output->recordToOutputFileURL("from the main thread");
        if (round % 3 == 0)
            command(round % 2 == 0 ? paused : playing);
        if (round % 10 == 0)
            world.clock.sleepFor(std::chrono::microseconds(200));
        output->recordToOutputFileURL(std::nullopt);
        session->stopRunning();
        mayBeCalled = false;
    }
    EXPECT_GT(delivered, 0);
}

} // namespace
} // namespace merro::platform::deck
