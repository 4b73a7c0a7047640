// What every Threads and every ConditionLock promises.
#include "tests/platform/Worlds.h"

#include <atomic>
#include <memory>
#include <vector>

namespace merro::platform {
namespace {

using namespace std::chrono_literals;

template <typename World>
class ThreadsContract : public testing::Test {
protected:
    ConditionLock* makeLock(int condition) {
        m_locks.push_back(m_world.threads.makeConditionLock(condition));
        return m_locks.back().get();
    }

    std::vector<std::unique_ptr<ConditionLock>> m_locks; ///< outlive the threads that use them
    World m_world;
};
TYPED_TEST_SUITE(ThreadsContract, Worlds, WorldNames);

template <typename World>
class ThreadsEnd : public testing::Test {};
TYPED_TEST_SUITE(ThreadsEnd, Worlds, WorldNames);

TYPED_TEST(ThreadsEnd, theSurroundingsWaitForAllThreadsAndThoseThatTheyStart) {
    std::atomic<int> ended = 0;
    {
        TypeParam world;
        for (int i = 0; i < 3; ++i) {
            world.threads.detach("outer", [&] {
                world.clock.sleepFor(1ms);
                world.threads.detach("inner", [&] {
                    world.clock.sleepFor(1ms);
                    ++ended;
                });
                ++ended;
            });
        }
    }
    EXPECT_EQ(ended, 6);
}

TYPED_TEST(ThreadsEnd, aThreadsBodyIsGoneWhenItHasRun) {
    auto held = std::make_shared<int>();
    {
        TypeParam world;
        world.threads.detach("holder", [held] {});
    }
    EXPECT_EQ(held.use_count(), 1);
}

TYPED_TEST(ThreadsContract, aNewLockIsFreeAndHasTheConditionItWasGiven) {
    auto* const lock = this->makeLock(7);
    EXPECT_EQ(lock->condition(), 7);
    lock->lockWhenCondition(7);
    lock->unlock();
    EXPECT_EQ(lock->condition(), 7); // unlock keeps it
}

TYPED_TEST(ThreadsContract, theConditionCanBeReadWhileTheLockIsHeld) {
    auto* const lock = this->makeLock(0);
    lock->lock();
    EXPECT_EQ(lock->condition(), 0);
    lock->unlockWithCondition(5);
    EXPECT_EQ(lock->condition(), 5);
}

TYPED_TEST(ThreadsContract, onlyOneThreadHoldsTheLock) {
    auto* const lock = this->makeLock(0);
    int inside = 0;
    int total = 0;
    std::atomic<int> ended = 0;
    for (int thread = 0; thread < 4; ++thread) {
        this->m_world.threads.detach("worker", [&] {
            for (int i = 0; i < 25; ++i) {
                lock->lock();
                EXPECT_EQ(++inside, 1);
                this->m_world.clock.sleepFor(10us);
                --inside;
                ++total;
                lock->unlock();
            }
            ++ended;
        });
    }
    while (ended < 4)
        this->m_world.clock.sleepFor(1ms);
    EXPECT_EQ(total, 100);
}

TYPED_TEST(ThreadsContract, aThreadWaitsForItsConditionAndNotForAnother) {
    auto* const lock = this->makeLock(0);
    std::atomic<bool> hasSeen2 = false;
    this->m_world.threads.detach("waits", [&] {
        lock->lockWhenCondition(2);
        hasSeen2 = true;
        lock->unlockWithCondition(0);
    });
    this->m_world.clock.sleepFor(1ms);
    lock->lockWhenCondition(0);
    lock->unlockWithCondition(1);
    this->m_world.clock.sleepFor(2ms);
    EXPECT_FALSE(hasSeen2);
    lock->lockWhenCondition(1);
    lock->unlockWithCondition(2);
    lock->lockWhenCondition(0); // the other thread says that it has been there
    EXPECT_TRUE(hasSeen2);
    lock->unlock();
}

TYPED_TEST(ThreadsContract, twoThreadsHandWorkBackAndForth) {
    auto* const lock = this->makeLock(0);
    std::vector<int> done;
    std::atomic<bool> hasEnded = false;
    this->m_world.threads.detach("worker", [&] {
        for (int i = 0; i < 50; ++i) {
            lock->lockWhenCondition(1);
            done.push_back(i);
            lock->unlockWithCondition(0);
        }
        hasEnded = true;
    });
    for (int i = 0; i < 50; ++i) {
        lock->lockWhenCondition(0);
        EXPECT_EQ(done.size(), static_cast<std::size_t>(i));
        lock->unlockWithCondition(1);
    }
    while (!hasEnded)
        this->m_world.clock.sleepFor(1ms);
    EXPECT_EQ(done.size(), 50U);
}

TYPED_TEST(ThreadsContract, aWaitWithADeadlineGivesUpAndDoesNotHoldTheLock) {
    auto* const lock = this->makeLock(0);
    const Moment deadline = this->m_world.clock.now() + 3ms;
    EXPECT_FALSE(lock->lockWhenConditionBefore(1, deadline));
    EXPECT_GE(this->m_world.clock.now(), deadline);
    lock->lock(); // free
    lock->unlock();
}

TYPED_TEST(ThreadsContract, aWaitWithADeadlineAlsoGivesUpWhileAnotherHoldsTheLock) {
    auto* const lock = this->makeLock(0);
    lock->lock();
    std::atomic<int> answer = -1;
    this->m_world.threads.detach(
        "waits", [&] { answer = lock->lockWhenConditionBefore(0, this->m_world.clock.now() + 2ms) ? 1 : 0; });
    while (answer < 0)
        this->m_world.clock.sleepFor(1ms);
    EXPECT_EQ(answer, 0);
    lock->unlock();
}

TYPED_TEST(ThreadsContract, aWaitWithADeadlineTakesTheLockWhenTheConditionComesInTime) {
    auto* const lock = this->makeLock(0);
    this->m_world.threads.detach("helps", [&] {
        this->m_world.clock.sleepFor(1ms);
        lock->lock();
        lock->unlockWithCondition(1);
    });
    ASSERT_TRUE(lock->lockWhenConditionBefore(1, Moment::max())); // max: for ever
    lock->unlock();
}

TYPED_TEST(ThreadsContract, aDeadlineInThePastTakesAFreeLockAndNothingElse) {
    auto* const lock = this->makeLock(3);
    this->m_world.clock.sleepFor(1ms);
    EXPECT_FALSE(lock->lockWhenConditionBefore(4, Moment::zero()));
    ASSERT_TRUE(lock->lockWhenConditionBefore(3, Moment::zero()));
    lock->unlock();
}

TYPED_TEST(ThreadsContract, aThreadThatGaveUpDoesNotTakeTheLockFromOneThatStillWaits) {
    auto* const lock = this->makeLock(0);
    EXPECT_FALSE(lock->lockWhenConditionBefore(1, this->m_world.clock.now() + 1ms));
    std::atomic<bool> hasIt = false;
    this->m_world.threads.detach("waits", [&hasIt, lock] {
        lock->lockWhenCondition(1);
        hasIt = true;
        lock->unlock();
    });
    lock->lock();
    lock->unlockWithCondition(1);
    while (!hasIt)
        this->m_world.clock.sleepFor(1ms);
}

} // namespace
} // namespace merro::platform
