#include "capture/EndOfTapeTimer.h"

#include "tests/capture/LoggingFixture.h"

#include <thread>

namespace merro::test {
namespace {

using namespace std::chrono_literals;
using EndOfTape = LoggingFixture;

class EndOfTapeTimer : public ::testing::Test {
protected:
    ManualRunLoop runLoop;
    platform::native::MemoryUserDefaults defaults;
    int stops = 0;
    std::unique_ptr<merro::EndOfTapeTimer> timer =
        std::make_unique<merro::EndOfTapeTimer>(runLoop, defaults, [this] { ++stops; });
};

TEST_F(EndOfTapeTimer, launchingSchedulesOneShotInAllModesThatAUserMayBeIn) {
    defaults.setObjectForKey(7, BXMCDetectEndTapeSecond);
    timer->launchStopCaptureTimer();
    ASSERT_EQ(runLoop.timers().size(), 1U);
    const auto scheduled = runLoop.timers()[0];
    EXPECT_EQ(scheduled->interval, 7s);
    EXPECT_EQ(scheduled->repeats, platform::Repeats::No);
    EXPECT_EQ(scheduled->modes, (std::set<platform::RunLoopMode>{platform::RunLoopMode::Default,
                                                                 platform::RunLoopMode::ModalPanel,
                                                                 platform::RunLoopMode::EventTracking}));
    runLoop.fire(scheduled);
    EXPECT_EQ(stops, 1);
}

TEST_F(EndOfTapeTimer, launchingAgainReplacesThePendingTimer) {
    timer->launchStopCaptureTimer();
    const auto first = runLoop.timers()[0];
    timer->launchStopCaptureTimer();
    EXPECT_FALSE(first->isValid);
    EXPECT_EQ(runLoop.timers().size(), 1U);
}

TEST_F(EndOfTapeTimer, aRequestIsHandedToTheMainThread) {
    timer->requestLaunch();
    EXPECT_TRUE(runLoop.timers().empty());
    runLoop.runPosted();
    EXPECT_EQ(runLoop.timers().size(), 1U);
}

TEST_F(EndOfTapeTimer, zeroSecondsMeanTheNextTurnOfTheLoop) {
    defaults.setObjectForKey(0, BXMCDetectEndTapeSecond);
    timer->launchStopCaptureTimer();
    EXPECT_EQ(runLoop.timers()[0]->interval, 0s);
}

TEST_F(EndOfTapeTimer, absurdSecondsDoNotOverflow) {
    defaults.setObjectForKey(std::int64_t{1} << 62, BXMCDetectEndTapeSecond);
    timer->launchStopCaptureTimer();
    EXPECT_GT(runLoop.timers()[0]->interval, 24h);
}

TEST_F(EndOfTapeTimer, cancellingInvalidatesThePendingTimer) {
    timer->launchStopCaptureTimer();
    timer->cancel();
    EXPECT_TRUE(runLoop.timers().empty());
}

TEST_F(EndOfTapeTimer, cancellingForgetsRequestsThatHaveNotArrivedYet) {
    timer->requestLaunch();
    timer->cancel();
    runLoop.runPosted();
    EXPECT_TRUE(runLoop.timers().empty());
}

TEST_F(EndOfTapeTimer, aTimerCancelledOnAnotherThreadStopsNothingEvenWhenItFiresFirst) {
    timer->launchStopCaptureTimer();
    const auto pending = runLoop.timers()[0];
    std::thread([this] { timer->cancel(); }).join();
    runLoop.fire(pending);
    EXPECT_EQ(stops, 0);
    runLoop.runPosted();
    EXPECT_TRUE(runLoop.timers().empty());
}

TEST_F(EndOfTapeTimer, aCancellationFromAnotherThreadDoesNotHitTheTimerStartedAfterIt) {
    std::thread([this] { timer->cancel(); }).join();
    timer->cancel();
    timer->launchStopCaptureTimer();
    runLoop.runPosted();
    EXPECT_EQ(runLoop.timers().size(), 1U);
}

TEST_F(EndOfTapeTimer, whatIsPostedFindsOutThatTheTimerIsGone) {
    timer->launchStopCaptureTimer();
    timer->requestLaunch();
    timer.reset();
    EXPECT_TRUE(runLoop.timers().empty());
    runLoop.runPosted();
    EXPECT_TRUE(runLoop.timers().empty());
}

// --- Within the controller ---

TEST_F(EndOfTape, theRecordingStopsWhenTheTimerFires) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    set(BXMCActionAfterRecord, 1);
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.runLoop.runPosted();
    ASSERT_EQ(surroundings.runLoop.timers().size(), 1U);
    surroundings.journal->clear();
    surroundings.runLoop.fire(surroundings.runLoop.timers()[0]);
    EXPECT_EQ(journal(), (Entries{"1 record nothing", "did 1", "deck speed 0 mode 0", "stop", "end"}));
}

TEST_F(EndOfTape, everyFrameStartsTheTimerAnewSkippedOnesToo) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    set(BXMCNbDropFrame, 5);
    controller->setRecording(true);
    for (const char* time : {"10:00:00", "11:00:00", "11:00:00"}) {
        deliver("01:00:00:00", time);
        const auto before = surroundings.runLoop.timers();
        surroundings.runLoop.runPosted();
        const auto after = surroundings.runLoop.timers();
        ASSERT_EQ(after.size(), 1U);
        EXPECT_NE(before, after);
    }
}

TEST_F(EndOfTape, aFrameThatIsNoDVStartsTheTimerBeforeTheAlert) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    controller->setRecording(true);
    std::size_t timersDuringAlert = 0;
    surroundings.alerts.whileUp = [&](const platform::Alert&) {
        surroundings.runLoop.runPosted();
        timersDuringAlert = surroundings.runLoop.timers().size();
    };
    platform::QTSampleBuffer frame = makeFrame("", "");
    frame.bytesForAllSamples = platform::FrameBytes::taking(std::vector<std::uint8_t>(7));
    deliver(frame);
    EXPECT_EQ(timersDuringAlert, 1U);
    EXPECT_TRUE(surroundings.runLoop.timers().empty()) << "the stop after the alert forgets it";
}

TEST_F(EndOfTape, aRecordingThatNeverReceivesAFrameHasNoTimer) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    controller->setRecording(true);
    surroundings.runLoop.runPosted();
    EXPECT_TRUE(surroundings.runLoop.timers().empty());
}

TEST_F(EndOfTape, framesStartNoTimerWhileDetectionIsOffOrNothingIsRecorded) {
    connectDeck();
    controller->setRecording(true);
    deliver("01:00:00:00", "10:00:00");
    surroundings.runLoop.runPosted();
    EXPECT_TRUE(surroundings.runLoop.timers().empty());
    controller->setRecording(false);
    set(BXMCDetectEndTape, true);
    deliver("01:00:00:01", "10:00:00");
    surroundings.runLoop.runPosted();
    EXPECT_TRUE(surroundings.runLoop.timers().empty());
}

TEST_F(EndOfTape, everySwitchForgetsTheTimerAlsoOneThatChangesNothing) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    controller->setRecording(true);
    for (const bool recording : {true, false, false}) {
        deliver("01:00:00:00", "10:00:00");
        surroundings.runLoop.runPosted();
        controller->setRecording(recording);
        EXPECT_TRUE(surroundings.runLoop.timers().empty());
    }
}

} // namespace
} // namespace merro::test
