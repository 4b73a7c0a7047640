// What every RunLoop promises, and every MainRunLoop to the program that runs it.
#include "tests/platform/Worlds.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform {
namespace {

using namespace std::chrono_literals;

const std::set kDefault{RunLoopMode::Default};
const std::set kModal{RunLoopMode::ModalPanel};
const std::set kBoth{RunLoopMode::Default, RunLoopMode::ModalPanel};

template <typename World>
class RunLoopContract : public testing::Test {
protected:
    RunLoop& loop() { return m_world.loop; }
    void run() { EXPECT_TRUE(m_world.loop.run()); }
    void note(const std::string& what) { m_notes.push_back(what); }

    /// Has the loop stop once what is asked for before, and due within `delay`, has happened.
    void stopAfter(Duration delay) {
        (void)m_world.loop.scheduleTimer(delay, Repeats::No, kBoth, [this] { m_world.loop.stop(); });
    }

    World m_world;
    std::vector<std::string> m_notes;
};
TYPED_TEST_SUITE(RunLoopContract, Worlds, WorldNames);

using Notes = std::vector<std::string>;

TYPED_TEST(RunLoopContract, postedFunctionsRunLaterInTheOrderOfTheCalls) {
    this->loop().post([&] { this->note("first"); });
    this->loop().post([&] { this->note("second"); });
    this->loop().post([&] { this->m_world.loop.stop(); });
    EXPECT_EQ(this->m_notes, Notes{});
    this->run();
    EXPECT_EQ(this->m_notes, (Notes{"first", "second"}));
}

TYPED_TEST(RunLoopContract, aFunctionPostedFromAFunctionRunsAfterThoseThatWait) {
    this->loop().post([&] {
        this->note("first");
        this->loop().post([&] {
            this->note("third");
            this->m_world.loop.stop();
        });
    });
    this->loop().post([&] { this->note("second"); });
    this->run();
    EXPECT_EQ(this->m_notes, (Notes{"first", "second", "third"}));
}

TYPED_TEST(RunLoopContract, otherThreadsPostInTheirOwnOrderAndFunctionsRunOnTheMainThread) {
    constexpr int kEach = 200;
    std::vector<int> seen[2];
    int total = 0;
    for (int thread = 0; thread < 2; ++thread) {
        this->m_world.threads.detach("poster", [&, thread] {
            EXPECT_FALSE(this->loop().isMainThread());
            for (int i = 0; i < kEach; ++i) {
                this->loop().post([&, thread, i] {
                    EXPECT_TRUE(this->loop().isMainThread());
                    seen[thread].push_back(i);
                    if (++total == 2 * kEach)
                        this->m_world.loop.stop();
                });
            }
        });
    }
    this->run();
    for (const auto& order : seen) {
        ASSERT_EQ(order.size(), std::size_t{kEach});
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}

TYPED_TEST(RunLoopContract, aThreadThatKnowsNothingOfTheWorldCanPost) {
    auto hold = this->m_world.loop.holdForOutsideWork();
    std::thread outside([&] {
        this->m_world.loop.postFromOutside([&] {
            EXPECT_TRUE(this->loop().isMainThread());
            this->note("from outside");
            this->m_world.loop.stop();
        });
        hold.reset();
    });
    this->run();
    outside.join();
    EXPECT_EQ(this->m_notes, Notes{"from outside"});
}

TYPED_TEST(RunLoopContract, stopEndsTheLoopFromAnyThread) {
    auto hold = this->m_world.loop.holdForOutsideWork();
    std::thread outside([&] { this->m_world.loop.stop(); });
    this->run();
    outside.join();
    hold.reset();
    this->m_world.threads.detach("stops", [&] { this->m_world.loop.stop(); });
    this->run();
}

TYPED_TEST(RunLoopContract, aStopBeforehandEndsTheNextRunOnly) {
    this->m_world.loop.stop();
    this->loop().post([&] { this->note("ran"); });
    this->run();
    EXPECT_EQ(this->m_notes, Notes{});
    this->loop().post([&] { this->m_world.loop.stop(); });
    this->run();
    EXPECT_EQ(this->m_notes, Notes{"ran"});
}

TYPED_TEST(RunLoopContract, timersFireInTheOrderInWhichTheyAreDueAndNotEarly) {
    const Moment start = this->m_world.clock.now();
    (void)this->loop().scheduleTimer(4ms, Repeats::No, kDefault, [&] {
        this->note("late");
        EXPECT_GE(this->m_world.clock.now() - start, 4ms);
    });
    (void)this->loop().scheduleTimer(2ms, Repeats::No, kDefault, [&] {
        this->note("early");
        EXPECT_GE(this->m_world.clock.now() - start, 2ms);
    });
    this->stopAfter(6ms);
    this->run();
    EXPECT_EQ(this->m_notes, (Notes{"early", "late"}));
}

TYPED_TEST(RunLoopContract, aTimerOfNoIntervalFiresAtTheNextTurnOfTheLoop) {
    (void)this->loop().scheduleTimer(0ms, Repeats::No, kDefault, [&] {
        this->note("fired");
        this->m_world.loop.stop();
    });
    EXPECT_EQ(this->m_notes, Notes{});
    this->run();
    EXPECT_EQ(this->m_notes, Notes{"fired"});
}

TYPED_TEST(RunLoopContract, aOneShotTimerFiresOnceAndARepeatingOneUntilInvalidated) {
    int repeats = 0;
    std::shared_ptr<Timer> timer;
    (void)this->loop().scheduleTimer(1ms, Repeats::No, kDefault, [&] { this->note("once"); });
    timer = this->loop().scheduleTimer(1ms, Repeats::Yes, kDefault, [&] {
        if (++repeats == 3) {
            timer->invalidate();
            timer->invalidate(); // twice does nothing more
            this->stopAfter(5ms);
        }
    });
    this->run();
    EXPECT_EQ(repeats, 3);
    EXPECT_EQ(this->m_notes, Notes{"once"});
}

TYPED_TEST(RunLoopContract, aRepeatingTimerOfNoIntervalLetsOthersThrough) {
    const auto timer = this->loop().scheduleTimer(0ms, Repeats::Yes, kDefault, [] {});
    this->stopAfter(2ms);
    this->run();
    timer->invalidate();
}

TYPED_TEST(RunLoopContract, aTimerThatIsInvalidatedWhenDueNeverFires) {
    const auto timer =
        this->loop().scheduleTimer(1ms, Repeats::No, kDefault, [&] { this->note("too late"); });
    this->loop().post([&] {
        this->m_world.clock.sleepFor(3ms);
        timer->invalidate();
    });
    this->stopAfter(5ms);
    this->run();
    EXPECT_EQ(this->m_notes, Notes{});
}

TYPED_TEST(RunLoopContract, aBusyMainThreadDoesNotMakeARepeatingTimerCatchUp) {
    int fired = 0;
    const auto timer = this->loop().scheduleTimer(10ms, Repeats::Yes, kDefault, [&] {
        if (++fired == 1)
            this->m_world.clock.sleepFor(55ms); // due at 20, 30, 40, 50 and 60 meanwhile; then at 70
        if (fired == 2) {
            EXPECT_GE(this->m_world.clock.now(), 20ms);
            this->m_world.loop.stop();
        }
    });
    this->run();
    timer->invalidate();
    this->stopAfter(0ms);
    this->run();
    EXPECT_EQ(fired, 2);
}

TYPED_TEST(RunLoopContract, aTimerFiresOnlyInItsModes) {
    (void)this->loop().scheduleTimer(1ms, Repeats::No, kDefault, [&] { this->note("default"); });
    (void)this->loop().scheduleTimer(1ms, Repeats::No, kModal, [&] { this->note("modal"); });
    (void)this->loop().scheduleTimer(1ms, Repeats::No, {RunLoopMode::EventTracking},
                                     [&] { this->note("tracking"); });
    bool isAnswered = false;
    (void)this->loop().scheduleTimer(5ms, Repeats::No, kModal, [&] { isAnswered = true; });
    EXPECT_TRUE(this->m_world.loop.runInMode(RunLoopMode::ModalPanel, [&] { return isAnswered; }));
    EXPECT_EQ(this->m_notes, Notes{"modal"});
    this->stopAfter(1ms);
    this->run();
    EXPECT_EQ(this->m_notes, (Notes{"modal", "default"}));
}

TYPED_TEST(RunLoopContract, functionsRunWhileAModalAlertIsUp) {
    this->loop().post([&] {
        bool isAnswered = false;
        this->loop().post([&] { isAnswered = true; });
        EXPECT_TRUE(this->m_world.loop.runInMode(RunLoopMode::ModalPanel, [&] { return isAnswered; }));
        this->note("answered");
        this->m_world.loop.stop();
    });
    this->run();
    EXPECT_EQ(this->m_notes, Notes{"answered"});
}

TYPED_TEST(RunLoopContract, aStopEndsAModalAlertToo) {
    this->loop().post([&] {
        this->loop().post([&] { this->m_world.loop.stop(); });
        EXPECT_FALSE(this->m_world.loop.runInMode(RunLoopMode::ModalPanel, [] { return false; }));
        this->note("alert over");
    });
    this->run();
    EXPECT_EQ(this->m_notes, Notes{"alert over"});
}

TYPED_TEST(RunLoopContract, aRepeatingTimerIsNotFiredAgainFromWithinItsOwnAction) {
    int depth = 0;
    const auto timer = this->loop().scheduleTimer(1ms, Repeats::Yes, kBoth, [&] {
        EXPECT_EQ(++depth, 1);
        bool isAnswered = false;
        (void)this->loop().scheduleTimer(5ms, Repeats::No, kModal, [&] { isAnswered = true; });
        (void)this->m_world.loop.runInMode(RunLoopMode::ModalPanel, [&] { return isAnswered; });
        --depth;
        this->m_world.loop.stop();
    });
    this->run();
    timer->invalidate();
}

TYPED_TEST(RunLoopContract, aTimerKeepsItsActionNoLongerThanItNeedsIt) {
    auto once = std::make_shared<int>();
    auto again = std::make_shared<int>();
    const std::weak_ptr<int> onceHeld = once;
    const std::weak_ptr<int> againHeld = again;
    const auto oneShot = this->loop().scheduleTimer(1ms, Repeats::No, kDefault, [o = std::move(once)] {});
    const auto repeating = this->loop().scheduleTimer(1ms, Repeats::Yes, kDefault, [a = std::move(again)] {});
    this->stopAfter(2ms);
    this->run();
    EXPECT_TRUE(onceHeld.expired());
    EXPECT_FALSE(againHeld.expired());
    repeating->invalidate();
    EXPECT_TRUE(againHeld.expired());
}

template <typename World>
class RunLoopEnd : public testing::Test {};
TYPED_TEST_SUITE(RunLoopEnd, Worlds, WorldNames);

TYPED_TEST(RunLoopEnd, whatStillWaitsWhenTheLoopIsDestroyedIsDroppedUnrun) {
    auto held = std::make_shared<bool>(false);
    {
        TypeParam world;
        world.loop.post([held] { *held = true; });
        (void)world.loop.scheduleTimer(0ms, Repeats::No, kDefault, [held] { *held = true; });
    }
    EXPECT_FALSE(*held);
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace merro::platform
