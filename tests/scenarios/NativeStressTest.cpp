// Controller, session and deck together on the machine's own threads: recording is switched on and off
// thousands of times by the main thread while a fast deck delivers, movies are written by threads of their
// own, alerts are up and the host takes its time. What must hold every time: the messages in order, every
// clip reported once, its files begun and ended once, its frames those of its report and in no other clip.
// Meant for ThreadSanitizer too; a deadlock shows as the test's time-out.
#include "capture/BXMCController.h"
#include "capture/CaptureDefaults.h"
#include "platform/deck/Deck.h"
#include "platform/native/Clock.h"
#include "platform/native/HeadlessInterface.h"
#include "platform/native/MemoryUserDefaults.h"
#include "platform/native/RunLoop.h"
#include "platform/native/Threads.h"
#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"
#include "tests/scenarios/StressFakes.h"
#include "tests/support/FakeCompressionComponents.h"
#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingLog.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace merro::test {
namespace {

using std::chrono::microseconds;

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kSwitches = 800;
#else
constexpr int kSwitches = 1200;
#endif

struct Message {
    std::string what; ///< "begin", "will", "did", "end"
    int clip = 0;
    platform::Dictionary info;
};

class NativeStress : public testing::Test {
protected:
    void insert(int framesBetweenForeign) {
        platform::setProcessLog(&log);
        platform::deck::DeckSettings settings;
        settings.mechanism = platform::deck::MechanismSettings::ideal();
        settings.mechanism.searchSpeeds[3] = {40, 1}; // play: a frame a millisecond
        deck = platform::deck::makeDeck(clock, threads, runLoop, notifications,
                                        std::make_unique<EndlessTape>(framesBetweenForeign), settings);
        framework.addDevice(deck);
        controller = std::make_unique<BXMCController>(
            platform::Surroundings{shortNaps, runLoop, threads, notifications, defaults, localization, log,
                                   alerts, files, interfaces, framework, compression});
        host->mccontrollerBeginRecord = [this](BXMCController&) { say({"begin", 0, {}}); };
        host->mccontrollerWillRecord = [this](BXMCController&) {
            const int clip = ++clipsOpened;
            say({"will", clip, {}});
            return platform::Dictionary{{std::string(kBXMCClipId), clip},
                                        {std::string(kBXMCMoviePath), std::to_string(clip)},
                                        {std::string(kBXMCThumbnailsPath), std::to_string(clip)}};
        };
        host->mccontrollerDidRecordInfo = [this](BXMCController&, const platform::Dictionary& info) {
            say({"did", static_cast<int>(platform::find(info, kBXMCClipId)->integerValue()), info});
        };
        host->mccontrollerEndRecord = [this](BXMCController&) { say({"end", 0, {}}); };
        controller->setDelegate(host);
        defaults.setObjectForKey(0, BXMCActionAfterRecord);
        controller->setSelectedVideoDevice(deck);
    }

    ~NativeStress() override {
        controller.reset();
        serveRunLoop();
        platform::setProcessLog(nullptr);
    }

    void say(Message message) {
        {
            const std::lock_guard lock(mutex);
            messages.push_back(std::move(message));
        }
        if (hostNap > microseconds(0))
            std::this_thread::sleep_for(hostNap);
    }

    void serveRunLoop() {
        runLoop.post([this] { runLoop.stop(); });
        (void)runLoop.run();
    }

    void wait() {
        serveRunLoop();
        std::this_thread::sleep_for(microseconds(std::uniform_int_distribution<>(0, 3000)(random)));
        serveRunLoop();
    }

    /// Switches off for good and lets everything come to rest.
    void finish() {
        controller->setRecording(false);
        alerts.answerAtOnce();
        controller->setDevicePlaying(true);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        serveRunLoop();
        controller->setRecording(false);
        EXPECT_FALSE(controller->isRecording());
        controller.reset();
        serveRunLoop();
    }

    void expectConsistency() {
        const auto thumbnails = files.accounts.all();
        const auto movies = recorders.accounts.all();
        bool isBegun = false;
        int open = 0;
        int newestFrame = -1;
        for (const Message& message : messages) {
            if (message.what == "begin" || message.what == "end") {
                ASSERT_EQ(isBegun, message.what == "end");
                ASSERT_EQ(open, 0);
                isBegun = !isBegun;
            } else if (message.what == "will") {
                ASSERT_TRUE(isBegun);
                ASSERT_EQ(open, 0);
                open = message.clip;
            } else {
                ASSERT_EQ(open, message.clip) << "every clip is reported once";
                open = 0;
                const auto movie = movies.find(std::to_string(message.clip));
                expectClip(message.info, thumbnails.at(std::to_string(message.clip)),
                           movie == movies.end() ? nullptr : &movie->second, newestFrame);
            }
        }
        EXPECT_FALSE(isBegun);
        EXPECT_EQ(static_cast<int>(thumbnails.size()), clipsOpened);
    }

    void expectClip(const platform::Dictionary& info, const Accounts::Account& thumbnails,
                    const Accounts::Account* movie, int& newestFrame) const {
        ASSERT_EQ(thumbnails.begun, 1);
        ASSERT_EQ(thumbnails.ended, 1);
        const platform::Value* start = platform::find(info, kBXMCClipStartTimecode);
        if (start == nullptr) {
            ASSERT_TRUE(thumbnails.frames.empty());
            return;
        }
        const int first = EndlessTape::numberOf(*start->getIf<TimecodeValue>());
        const int last =
            EndlessTape::numberOf(*platform::find(info, kBXMCClipEndTimecode)->getIf<TimecodeValue>());
        ASSERT_FALSE(thumbnails.frames.empty());
        ASSERT_EQ(thumbnails.frames.front(), first);
        ASSERT_EQ(thumbnails.frames.back(), last);
        if (!runsBack) {
            ASSERT_TRUE(std::ranges::is_sorted(thumbnails.frames, std::less_equal<>())) << "no frame twice";
        }
        if (!runsBack) {
            ASSERT_GT(first, newestFrame) << "a frame is in one clip only";
        }
        newestFrame = last;
        ASSERT_NE(movie, nullptr) << "every clip with a frame has a movie";
        ASSERT_FALSE(movie->frames.empty());
        ASSERT_EQ(movie->begun, 1);
        ASSERT_EQ(movie->ended, 1);
        if (!runsBack) { // else a frame of the way back may still come when play has been asked for
            ASSERT_TRUE(std::ranges::is_sorted(movie->frames, std::less_equal<>()));
        }
        ASSERT_EQ(movie->frames.front(), first);
        ASSERT_EQ(movie->frames.back(), last);
    }

    platform::native::Clock clock;
    ShortNaps shortNaps{clock}; // the controller's: prerolls take a moment
    platform::native::RunLoop runLoop{clock};
    platform::native::Threads threads{clock};
    platform::NotificationCenter notifications;
    platform::native::MemoryUserDefaults defaults;
    PlainLocalization localization;
    RecordingLog log;
    BlockingAlerts alerts;
    AccountedFiles files;
    platform::native::HeadlessInterfaceLoader interfaces;
    FakeCompressionComponents compression;
    ThreadedRecorders recorders;
    platform::session::CaptureFramework framework{threads, runLoop, notifications, &recorders,
                                                  platform::session::WhenFull::LoseFrame};
    std::shared_ptr<platform::deck::Deck> deck;
    std::unique_ptr<BXMCController> controller;
    std::shared_ptr<BXMCControllerDelegate> host = std::make_shared<BXMCControllerDelegate>();
    microseconds hostNap{0};
    bool runsBack = false; ///< the tape, before some recordings
    std::minstd_rand random{1};

    std::mutex mutex;
    std::vector<Message> messages;
    std::atomic<int> clipsOpened = 0;
};

TEST_F(NativeStress, switchingOnAndOffWhileTheDeckDelivers) {
    insert(0);
    for (int i = 0; i < kSwitches; ++i) {
        controller->setRecording(i % 2 == 0);
        wait();
    }
    finish();
    expectConsistency();
}

TEST_F(NativeStress, withEveryAfterRecordActionAndPrerollsAndSkips) {
    runsBack = true;
    insert(0);
    defaults.setObjectForKey(3, BXMCNbDropFrame);
    defaults.setObjectForKey(true, BXMCDetectEndTape);
    for (int i = 0; i < kSwitches / 2; ++i) {
        defaults.setObjectForKey(i / 2 % 3, BXMCActionAfterRecord);
        controller->setRecording(i % 2 == 0);
        wait();
    }
    finish();
    expectConsistency();
}

TEST_F(NativeStress, withAlertsUp) {
    insert(17);
    for (int i = 0; i < kSwitches; ++i) {
        controller->setRecording(i % 2 == 0);
        if (i % 16 == 15)
            controller->stopDevice(); // with the alert up, perhaps: never waits for it
        wait();
    }
    EXPECT_GT(alerts.shown(), 0);
    finish();
    expectConsistency();
}

TEST_F(NativeStress, withAHostThatTakesItsTime) {
    hostNap = microseconds(1500);
    insert(0);
    for (int i = 0; i < kSwitches / 2; ++i) {
        controller->setRecording(i % 2 == 0);
        wait();
    }
    finish();
    expectConsistency();
}

TEST_F(NativeStress, withDevicesChosenAnewAndControllersThatGoAwayWhileRecording) {
    insert(0);
    for (int i = 0; i < kSwitches / 4; ++i) {
        controller->setRecording(i % 2 == 0);
        wait();
        if (i % 8 == 7)
            controller->setSelectedVideoDevice(i % 16 == 7 ? nullptr : deck);
    }
    controller->setSelectedVideoDevice(deck);
    controller->setRecording(true);
    wait();
    controller.reset();
    for (const auto& [path, account] : files.accounts.all())
        EXPECT_EQ(account.ended, 1) << path;
    for (const auto& [path, account] : recorders.accounts.all())
        EXPECT_EQ(account.ended, 1) << path;
}

} // namespace
} // namespace merro::test
