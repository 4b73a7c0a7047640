// A world of threads with a clock of its own, in which an hour passes in an instant and every run is the
// same.
//
// Its threads are real ones, but exactly one runs at a time: it holds the baton until it blocks (sleeps,
// waits for a lock, waits in the run loop). Then the baton goes to the thread that has been ready longest;
// when none is ready, the clock jumps to what is due next. What is due at one moment goes in the order in
// which it was asked for, or in an order shuffled from a seed.
//
// The thread that makes the scheduler is the main thread of that world. Clock, RunLoop, Threads and
// ConditionLock are faces of it, and die before it. Threads that it has not started are "outside": they may
// read the time and post to the run loop, and virtual time waits for none of them but those that hold it
// (MainRunLoop::holdForOutsideWork). A thread that blocks in the real world (a full queue to a file) stops
// virtual time meanwhile, so nothing is lost by it.
#pragma once

#include "platform/MainRunLoop.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace merro::platform::virtualtime {

class Scheduler {
public:
    /// With a `seed`, what is due at one moment goes in an order drawn from it: another possible order of the
    /// same events, and the same again for the same seed.
    explicit Scheduler(std::optional<std::uint64_t> seed = std::nullopt);

    /// Waits for all threads, as waitForThreads does. Main thread.
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    /// Any thread.
    [[nodiscard]] Moment now() const { return Moment(m_now.load(std::memory_order_relaxed)); }

    /// Blocks the calling thread for `duration` of virtual time. Without any switch of threads when nothing
    /// else is to happen before. A thread from outside sleeps in real time.
    void sleepFor(Duration duration);

    /// Starts a thread that runs when the caller blocks. Any thread of this world.
    void detach(std::string name, std::function<void()> body);

    /// Blocks until all detached threads have ended. Main thread. When they never will, the program is ended
    /// with a line for each that says what it waits for.
    void waitForThreads();

    /// How often the baton has gone from one thread to another. Threads of this world.
    [[nodiscard]] std::uint64_t switchCount() const { return m_switchCount; }

    /// Whether the caller is a thread of this world. Any thread.
    [[nodiscard]] bool isInside() const { return currentThread() != nullptr; }

    // For the faces of this world; `Thread` is a thread as they know it.

    class Thread;
    enum class Wake {
        MadeReady, ///< by makeReady
        Due,       ///< its moment has come
        Never,     ///< nothing can happen any more (the main thread in its run loop only)
    };

    /// The calling thread. Ends the program when it is from outside: `operation` names what it may not do.
    [[nodiscard]] Thread& callingThread(const char* operation) const;

    /// Blocks the calling thread until makeReady or `due` (Moment::max() is never). `waitingFor` ends the
    /// sentence "it waits for".
    [[nodiscard]] Wake block(Thread& self, const std::optional<Due>& due, const char* waitingFor);

    /// Lets a blocked thread go on when its turn comes. Threads of this world.
    void makeReady(Thread& thread);

    /// The next place in the order of what is due at one moment. Threads of this world.
    [[nodiscard]] std::uint64_t nextOrder();

    /// block for the main thread's run loop, which wakeRunLoop ends (any thread, outside too).
    [[nodiscard]] Wake blockInRunLoop(const std::optional<Due>& due);
    void wakeRunLoop();

    /// See MainRunLoop::holdForOutsideWork.
    [[nodiscard]] std::shared_ptr<void> holdForOutsideWork();

private:
    struct Outside;

    [[nodiscard]] Thread* currentThread() const;
    [[nodiscard]] Thread& takeNext();
    void passBaton(Thread& next);
    void threadEnds(Thread& thread);
    void joinEndedThreads();
    [[noreturn]] void reportStandstill() const;

    std::atomic<Moment::rep> m_now = 0;

    // All below belongs to the thread that holds the baton.
    std::uint64_t m_switchCount = 0;
    std::uint64_t m_orderCount = 1; ///< 0 is for what comes from outside
    std::optional<std::mt19937> m_shuffle;
    std::map<Due, Thread*> m_due;             ///< blocked threads with a moment to wake at
    std::map<std::uint64_t, Thread*> m_ready; ///< by order
    std::vector<std::shared_ptr<Thread>> m_threads;
    std::shared_ptr<Thread> m_main;
    Thread* m_outerThread = nullptr; ///< what the main thread was in the world that it made before this one
    std::size_t m_runningThreadCount = 0; ///< detached and not ended
    bool m_isMainInRunLoop = false;
    bool m_isMainJoining = false;

    std::shared_ptr<Outside> m_outside; ///< synchronised; holds may outlive the scheduler
};

} // namespace merro::platform::virtualtime
