// Recording is switched on and off thousands of times while frames arrive. What must hold every time:
// messages in order, every clip that was opened reported once, its report true to its files, every file
// closed once. Meant to run under ThreadSanitizer, too; a deadlock shows as the test's time-out.
#include "tests/capture/StressSurroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace merro::test {
namespace {

struct Message {
    std::string what; ///< "begin", "will", "did", "end"
    int clip = 0;
    platform::Dictionary info;
};

class SwitchingStress : public ::testing::Test {
protected:
    void build(int framesInATake, int framesBetweenStrangers = 0, int framesInAMovie = 0) {
        moviesBreakOff = framesInAMovie > 0;
        recorders = std::make_unique<AccountedRecorders>(movies, framesInAMovie);
        capture = std::make_unique<platform::session::CaptureFramework>(
            threads, runLoop, notifications, recorders.get(), platform::session::WhenFull::Wait);
        deck = std::make_shared<EndlessDeck>(framesInATake, framesBetweenStrangers);
        controller = std::make_unique<BXMCController>(
            platform::Surroundings{clock, runLoop, threads, notifications, defaults, localization, log,
                                   alerts, files, interfaces, *capture, compression});
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
        controller->session()->startRunning();
    }

    void say(Message message) {
        const std::string what = message.what;
        {
            const std::lock_guard lock(mutex);
            messages.push_back(std::move(message));
        }
        if (inMessage && hostActs)
            inMessage(what);
    }

    /// Lets 0 to `atMost` frames pass, the main thread serving its run loop.
    void letFramesPass(int atMost) {
        const int until = deck->framesPlayed() + std::uniform_int_distribution<>(0, atMost)(random);
        do
            serveRunLoop();
        while (deck->framesPlayed() < until && controller->session()->isRunning() && !alerts.isUp());
    }

    void serveRunLoop() {
        runLoop.post([this] { runLoop.stop(); });
        (void)runLoop.run();
    }

    /// Switches off for good and waits until nothing is under way any more.
    void finish() {
        hostActs = false;
        controller->setRecording(false);
        alerts.answerAllFromNowOn();
        controller->session()->startRunning();
        const int until = deck->framesPlayed() + 3;
        while (deck->framesPlayed() < until)
            serveRunLoop();
        EXPECT_FALSE(controller->isRecording());
        controller.reset();
    }

    void checkEverything() {
        const auto thumbnailFiles = thumbnails->all();
        const auto movieFiles = movies->all();
        bool isBegun = false;
        int open = 0;
        int opened = 0;
        int newestFrame = -1;
        for (const Message& message : messages) {
            if (message.what == "begin" || message.what == "end") {
                ASSERT_EQ(isBegun, message.what == "end");
                ASSERT_EQ(open, 0);
                isBegun = message.what == "begin";
            } else if (message.what == "will") {
                ASSERT_TRUE(isBegun);
                ASSERT_EQ(open, 0);
                open = message.clip;
                ++opened;
            } else {
                ASSERT_EQ(open, message.clip) << "every clip is reported once";
                open = 0;
                checkClip(message, thumbnailFiles.at(std::to_string(message.clip)), newestFrame);
                checkMovie(message, movieFiles);
            }
        }
        EXPECT_FALSE(isBegun);
        EXPECT_EQ(open, 0);
        EXPECT_EQ(static_cast<int>(thumbnailFiles.size()), opened);
    }

    static void checkClip(const Message& did, const Accounts::Account& file, int& newestFrame) {
        ASSERT_EQ(file.begun, 1);
        ASSERT_EQ(file.ended, 1);
        const platform::Value* start = platform::find(did.info, kBXMCClipStartTimecode);
        if (start == nullptr) {
            ASSERT_TRUE(file.frames.empty());
            return;
        }
        ASSERT_FALSE(file.frames.empty());
        ASSERT_GT(file.frames.front(), newestFrame) << "a frame is in one clip only";
        ASSERT_EQ(file.frames.front(), frameOfTimecode(*start->getIf<TimecodeValue>()));
        const platform::Value* end = platform::find(did.info, kBXMCClipEndTimecode);
        ASSERT_NE(end, nullptr);
        ASSERT_EQ(file.frames.back(), frameOfTimecode(*end->getIf<TimecodeValue>()));
        ASSERT_TRUE(std::ranges::is_sorted(file.frames, std::less_equal<>())) << "no frame twice";
        newestFrame = file.frames.back();
    }

    void checkMovie(const Message& did, const std::map<std::string, Accounts::Account>& movieFiles) const {
        const platform::Value* start = platform::find(did.info, kBXMCClipStartTimecode);
        if (start == nullptr)
            return;
        ASSERT_TRUE(movieFiles.contains(std::to_string(did.clip))) << "every clip with a frame has a movie";
        const Accounts::Account& movie = movieFiles.at(std::to_string(did.clip));
        ASSERT_EQ(movie.begun, 1);
        ASSERT_EQ(movie.ended, 1);
        ASSERT_FALSE(movie.frames.empty());
        ASSERT_EQ(movie.frames.front(), frameOfTimecode(*start->getIf<TimecodeValue>()));
        const TimecodeValue end = *platform::find(did.info, kBXMCClipEndTimecode)->getIf<TimecodeValue>();
        if (moviesBreakOff)
            ASSERT_LE(movie.frames.back(), frameOfTimecode(end));
        else
            ASSERT_EQ(movie.frames.back(), frameOfTimecode(end));
    }

    bool moviesBreakOff = false;
    ManualClock clock; // prerolls take no time
    platform::native::Clock realClock;
    platform::native::RunLoop runLoop{realClock};
    platform::native::Threads threads{realClock};
    platform::NotificationCenter notifications;
    platform::native::MemoryUserDefaults defaults;
    PlainLocalization localization;
    RecordingLog log;
    AnsweredAlerts alerts;
    std::shared_ptr<Accounts> thumbnails = std::make_shared<Accounts>();
    std::shared_ptr<Accounts> movies = std::make_shared<Accounts>();
    AccountedFiles files{thumbnails};
    platform::native::HeadlessInterfaceLoader interfaces;
    FakeCompressionComponents compression;
    std::unique_ptr<AccountedRecorders> recorders;
    std::unique_ptr<platform::session::CaptureFramework> capture;
    std::shared_ptr<EndlessDeck> deck;
    std::shared_ptr<BXMCControllerDelegate> host = std::make_shared<BXMCControllerDelegate>();
    std::unique_ptr<BXMCController> controller;

    std::function<void(const std::string& what)> inMessage; ///< set before the first recording
    std::atomic<bool> hostActs = true;                      ///< whether inMessage is called
    std::mt19937 random{20050317};
    int clipsOpened = 0; ///< whoever has the recording turn
    std::mutex mutex;
    std::vector<Message> messages;
};

TEST_F(SwitchingStress, startsAndStopsFromTheMainThread) {
    build(7);
    defaults.setObjectForKey(true, BXMCDetectEndTape);
    defaults.setObjectForKey(1000, BXMCDetectEndTapeSecond);
    for (int i = 0; i < 2000; ++i) {
        controller->setRecording(true);
        EXPECT_TRUE(controller->isRecording());
        letFramesPass(4);
        controller->setRecording(false);
        EXPECT_FALSE(controller->isRecording());
        if (i % 3 == 0)
            letFramesPass(2);
    }
    finish();
    checkEverything();
    EXPECT_GT(clipsOpened, 50);
}

TEST_F(SwitchingStress, startsFromPauseWithFramesSkippedAfterCuts) {
    build(5);
    defaults.setObjectForKey(2, BXMCActionAfterRecord);
    defaults.setObjectForKey(2, BXMCNbDropFrame);
    for (int i = 0; i < 1000; ++i) {
        controller->setRecording(true);
        letFramesPass(12);
        controller->setRecording(false);
    }
    finish();
    checkEverything();
    EXPECT_FALSE(clock.sleeps().empty());
}

TEST_F(SwitchingStress, stopsOfTapeAndSessionWhileMoviesBreakOffAndFilesAreChanged) {
    build(1000000, 0, 3);
    defaults.setObjectForKey(1, BXMCActionAfterRecord);
    defaults.setObjectForKey(false, BXMCDetectScene);
    for (int i = 0; i < 1000; ++i) {
        controller->setRecording(true);
        letFramesPass(10);
        controller->setRecording(false);
    }
    finish();
    checkEverything();
    EXPECT_GT(clipsOpened, 50);
}

TEST_F(SwitchingStress, withAnAlertUpWhileTheMainThreadStopsAndStarts) {
    build(7, 11);
    int actions = 0;
    for (int i = 0; i < 1500; ++i) {
        defaults.setObjectForKey(actions++ % 2, BXMCActionAfterRecord); // nothing, or stop tape and session
        controller->setRecording(true);
        letFramesPass(6);
        controller->setRecording(false); // returns although an alert may be up that only this thread answers
        if (i % 2 == 0)
            alerts.answer();
        controller->setRecording(i % 3 == 0);
        alerts.answer();
    }
    finish();
    checkEverything();
    EXPECT_GT(alerts.shown(), 10);
}

TEST_F(SwitchingStress, aHostThatStopsAndStartsFromWithinItsMessages) {
    build(3);
    std::atomic<int> count = 0;
    inMessage = [&](const std::string& what) {
        const int number = ++count;
        if (what == "end" ? number % 3 == 0 : number % 5 == 0)
            controller->setRecording(what == "end");
        if (number % 17 == 0) {
            controller->setRecording(false);
            controller->setRecording(true);
        }
    };
    for (int i = 0; i < 2000; ++i) {
        controller->setRecording(i % 3 != 2);
        letFramesPass(4);
    }
    while (controller->isRecording())
        controller->setRecording(false);
    finish();
    checkEverything();
}

TEST_F(SwitchingStress, aHostWhoseMessagesWaitForTheMainThread) {
    build(3);
    defaults.setObjectForKey(1, BXMCActionAfterRecord);
    std::atomic<int> waits = 0;
    inMessage = [&](const std::string&) {
        if (runLoop.isMainThread())
            return;
        std::mutex waiting;
        std::condition_variable served;
        bool isServed = false;
        runLoop.post([&] {
            const std::lock_guard lock(waiting);
            isServed = true;
            served.notify_all();
        });
        std::unique_lock lock(waiting);
        served.wait(lock, [&] { return isServed; });
        ++waits;
    };
    for (int i = 0; i < 1000; ++i) {
        controller->setRecording(true);
        letFramesPass(8);
        controller->setRecording(false);
    }
    const int until = deck->framesPlayed() + 3;
    while (deck->framesPlayed() < until)
        serveRunLoop();
    finish();
    checkEverything();
    EXPECT_GT(waits, 0);
}

TEST_F(SwitchingStress, destroyedWhileFramesArrive) {
    for (int i = 0; i < 100; ++i) {
        build(3);
        defaults.setObjectForKey(true, BXMCDetectEndTape);
        controller->setRecording(true);
        letFramesPass(5);
        controller.reset();
        serveRunLoop();
        deck.reset();
        for (const auto& accounts : {thumbnails, movies}) {
            for (const auto& [path, account] : accounts->all())
                ASSERT_EQ(account.begun, account.ended) << path;
        }
    }
}

} // namespace
} // namespace merro::test
