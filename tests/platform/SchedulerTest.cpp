// What virtual time promises beyond the interfaces.
#include "tests/platform/Worlds.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform {
namespace {

using namespace std::chrono_literals;
using Notes = std::vector<std::string>;

const std::set kDefault{RunLoopMode::Default};

TEST(Scheduler, startsAtZeroAndLosesNoTimeToWork) {
    VirtualWorld world;
    EXPECT_EQ(world.clock.now(), 0ns);
    world.clock.sleepFor(1h);
    EXPECT_EQ(world.clock.now(), 1h);
}

TEST(Scheduler, aThreadThatIsItselfTheNextDueSleepsWithoutASwitch) {
    VirtualWorld world;
    const auto lock = world.threads.makeConditionLock(0);
    world.threads.detach("waits", [&] {
        lock->lockWhenCondition(1);
        lock->unlock();
    });
    world.threads.detach("sleeps longer", [&] { world.clock.sleepFor(1h); });
    world.clock.sleepFor(1ns); // both get to where they wait
    const auto switches = world.scheduler.switchCount();
    for (int frame = 0; frame < 14000; ++frame)
        world.clock.sleepFor(40ms);
    EXPECT_EQ(world.clock.now(), 560s + 1ns); // 14000 frames of 1/25 s
    EXPECT_EQ(world.scheduler.switchCount(), switches);
    lock->lock();
    lock->unlockWithCondition(1);
    world.scheduler.waitForThreads();
}

TEST(Scheduler, aDetachedThreadSleepsWithoutASwitchWhileTheMainThreadWaitsInItsLoop) {
    VirtualWorld world;
    std::uint64_t switches = 0;
    world.threads.detach("delivery", [&] {
        const auto before = world.scheduler.switchCount();
        for (int frame = 0; frame < 14000; ++frame)
            world.clock.sleepFor(40ms);
        switches = world.scheduler.switchCount() - before;
        world.loop.stop();
    });
    EXPECT_TRUE(world.loop.run());
    EXPECT_EQ(switches, 0U);
}

TEST(Scheduler, theMainLoopAloneFiresItsTimersWithoutASwitch) {
    VirtualWorld world;
    int fired = 0;
    const auto timer = world.loop.scheduleTimer(1ms, Repeats::Yes, kDefault, [&] {
        if (++fired == 1000)
            world.loop.stop();
    });
    EXPECT_TRUE(world.loop.run());
    EXPECT_EQ(world.clock.now(), 1s);
    EXPECT_EQ(world.scheduler.switchCount(), 0U);
}

TEST(Scheduler, wakesThreadsAndTimersInTheOrderOfTheirMoments) {
    VirtualWorld world;
    Notes notes;
    const auto note = [&](const std::string& what) {
        notes.push_back(what + " " + std::to_string(world.clock.now() / 1ms));
    };
    world.threads.detach("a", [&] {
        for (int i = 0; i < 3; ++i) {
            world.clock.sleepFor(20ms);
            note("a");
        }
    });
    world.threads.detach("b", [&] {
        for (int i = 0; i < 2; ++i) {
            world.clock.sleepFor(30ms);
            note("b");
        }
    });
    (void)world.loop.scheduleTimer(45ms, Repeats::No, kDefault, [&] { note("timer"); });
    EXPECT_FALSE(world.loop.run());
    // At 60 both are due: b asked at 30, a at 40.
    EXPECT_EQ(notes, (Notes{"a 20", "b 30", "a 40", "timer 45", "b 60", "a 60"}));
}

TEST(Scheduler, whatIsDueAtOneMomentGoesInTheOrderInWhichItWasAskedFor) {
    VirtualWorld world;
    Notes notes;
    (void)world.loop.scheduleTimer(10ms, Repeats::No, kDefault, [&] { notes.emplace_back("timer 1"); });
    world.threads.detach("thread", [&] {
        world.clock.sleepFor(10ms);
        notes.emplace_back("thread");
    });
    world.loop.post([&] {
        world.clock.sleepFor(
            1ns); // the thread asks now, for 10 ms; this, a little later, for the same moment
        (void)world.loop.scheduleTimer(10ms - 1ns, Repeats::No, kDefault,
                                       [&] { notes.emplace_back("timer 2"); });
    });
    EXPECT_FALSE(world.loop.run());
    EXPECT_EQ(notes, (Notes{"timer 1", "thread", "timer 2"}));
}

TEST(Scheduler, timeStandsStillWhileAThreadIsReady) {
    VirtualWorld world;
    Moment seen = -1ns;
    world.threads.detach("ready", [&] { seen = world.clock.now(); });
    world.clock.sleepFor(1s);
    EXPECT_EQ(seen, 0ns);
}

TEST(Scheduler, aBlockedThreadLetsTimeGoOnForTheOthers) {
    VirtualWorld world;
    int frames = 0;
    bool isDone = false;
    world.threads.detach("deck", [&] {
        while (!isDone) {
            world.clock.sleepFor(40ms);
            ++frames;
        }
    });
    world.clock.sleepFor(4s + 1ns);
    EXPECT_EQ(frames, 100); // 4 s / 40 ms
    isDone = true;
}

/// Four threads, a lock and timers, with many things due at the same moments.
Notes busyRun(std::optional<std::uint64_t> seed) {
    virtualtime::Scheduler scheduler(seed);
    virtualtime::Clock clock(scheduler);
    virtualtime::RunLoop loop(scheduler);
    virtualtime::Threads threads(scheduler);
    const auto lock = threads.makeConditionLock(0);
    Notes notes;
    const auto note = [&](const std::string& what) {
        notes.push_back(what + "@" + std::to_string(clock.now().count()));
    };
    for (int thread = 0; thread < 4; ++thread) {
        threads.detach("worker", [&, thread] {
            for (int i = 0; i < 20; ++i) {
                clock.sleepFor(10ms);
                lock->lock();
                note("thread " + std::to_string(thread));
                clock.sleepFor(1ms);
                lock->unlock();
                loop.post([&, thread] { note("post " + std::to_string(thread)); });
            }
        });
    }
    const auto timer = loop.scheduleTimer(5ms, Repeats::Yes, kDefault, [&] {
        note("timer");
        if (clock.now() >= 1s)
            loop.stop();
    });
    EXPECT_TRUE(loop.run());
    return notes;
}

TEST(Scheduler, theSameProgramGoesTheSameWayEveryTime) {
    const Notes first = busyRun(std::nullopt);
    EXPECT_GT(first.size(), 160U);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(busyRun(std::nullopt), first);
}

TEST(Scheduler, aSeedMakesAnotherOrderAndTheSameSeedTheSameOrder) {
    const Notes plain = busyRun(std::nullopt);
    const Notes shuffled = busyRun(1);
    EXPECT_NE(shuffled, plain);
    EXPECT_NE(shuffled, busyRun(2));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(busyRun(1), shuffled);
}

TEST(Scheduler, aLockGoesToTheThreadThatHasWaitedLongest) {
    VirtualWorld world;
    const auto lock = world.threads.makeConditionLock(0);
    Notes notes;
    lock->lock();
    for (const char* const name : {"first", "second", "third"}) {
        world.threads.detach(name, [&, name] {
            lock->lock();
            notes.emplace_back(name);
            lock->unlock();
        });
    }
    world.clock.sleepFor(1ms);
    lock->unlock();
    lock->lock(); // after all who waited
    notes.emplace_back("main");
    lock->unlock();
    EXPECT_EQ(notes, (Notes{"first", "second", "third", "main"}));
}

TEST(Scheduler, theLoopSaysWhenNothingCanEverHappen) {
    VirtualWorld world;
    EXPECT_FALSE(world.loop.run());
    const auto lock = world.threads.makeConditionLock(0);
    world.threads.detach("waits for ever", [&] {
        lock->lockWhenCondition(1);
        lock->unlock();
    });
    EXPECT_FALSE(world.loop.run());
    EXPECT_EQ(world.clock.now(), 0ns);
    lock->lock();
    lock->unlockWithCondition(1);
    world.scheduler.waitForThreads();
}

TEST(Scheduler, anAlertThatNobodyCanAnswerIsOverWhenNothingCanEverHappen) {
    VirtualWorld world;
    EXPECT_FALSE(world.loop.runInMode(RunLoopMode::ModalPanel, [] { return false; }));
}

TEST(Scheduler, theLoopWaitsInRealTimeForThoseWhoHoldTheWorld) {
    VirtualWorld world;
    auto hold = world.loop.holdForOutsideWork();
    bool hasRun = false;
    std::thread outside([&] {
        std::this_thread::sleep_for(20ms); // likely after the loop has nothing left to do
        world.loop.postFromOutside([&] { hasRun = true; });
        hold.reset();
    });
    EXPECT_FALSE(world.loop.run()); // the function has run, and then nothing can happen any more
    EXPECT_TRUE(hasRun);
    outside.join();
}

TEST(Scheduler, aHoldThatEndsWithoutWorkLetsTheLoopEnd) {
    VirtualWorld world;
    auto hold = world.loop.holdForOutsideWork();
    std::thread outside([&] {
        std::this_thread::sleep_for(5ms);
        hold.reset();
    });
    EXPECT_FALSE(world.loop.run());
    outside.join();
}

TEST(Scheduler, aHoldMayOutliveTheWorld) {
    std::shared_ptr<void> hold;
    {
        VirtualWorld world;
        hold = world.loop.holdForOutsideWork();
    }
    hold.reset();
}

TEST(Scheduler, workFromOutsideIsServedWhileAThreadSleepsOnAndOn) {
    VirtualWorld world;
    std::atomic<bool> isServed = false;
    world.threads.detach("delivery", [&] {
        while (!isServed)
            world.clock.sleepFor(40ms); // never blocked for long: it is always the next due
    });
    std::thread outside([&] {
        world.loop.postFromOutside([&] {
            isServed = true;
            world.loop.stop();
        });
    });
    EXPECT_TRUE(world.loop.run());
    outside.join();
}

TEST(Scheduler, aThreadFromOutsideReadsTheTimeAndSleepsInItsOwn) {
    VirtualWorld world;
    world.clock.sleepFor(7s);
    std::thread outside([&] {
        EXPECT_EQ(world.clock.now(), 7s);
        world.clock.sleepFor(1ms);
        EXPECT_FALSE(world.loop.isMainThread());
    });
    outside.join();
    EXPECT_EQ(world.clock.now(), 7s);
}

TEST(Scheduler, aWorldMayBeMadeWithinAnother) {
    VirtualWorld outer;
    outer.clock.sleepFor(1s);
    {
        VirtualWorld inner;
        inner.clock.sleepFor(5s);
        EXPECT_EQ(inner.clock.now(), 5s);
    }
    outer.clock.sleepFor(1s);
    EXPECT_EQ(outer.clock.now(), 2s);
}

TEST(SchedulerDeathTest, aStandstillWithoutARunLoopNamesWhoWaitsForWhat) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            VirtualWorld world;
            const auto lock = world.threads.makeConditionLock(0);
            world.threads.detach("preroll", [&] { lock->lockWhenCondition(1); });
            world.scheduler.waitForThreads();
        },
        "main waits for the other threads to end\n.*preroll waits for a lock");
}

TEST(SchedulerDeathTest, aThreadFromOutsideCannotTakeALockOfTheWorld) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            VirtualWorld world;
            const auto lock = world.threads.makeConditionLock(0);
            std::thread([&] { lock->lock(); }).join();
        },
        "a thread from outside tried to take a lock");
}

} // namespace
} // namespace merro::platform
