#include "platform/virtualtime/Scheduler.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

namespace merro::platform::virtualtime {

class Scheduler::Thread : public std::enable_shared_from_this<Thread> {
public:
    Thread(Scheduler* threadScheduler, std::string threadName)
        : scheduler(threadScheduler), name(std::move(threadName)) {}

    void takeBaton() {
        const std::lock_guard lock(m_mutex);
        m_hasBaton = true;
        m_baton.notify_one();
    }

    void waitForBaton() {
        std::unique_lock lock(m_mutex);
        m_baton.wait(lock, [this] { return m_hasBaton; });
        m_hasBaton = false;
    }

    Scheduler* const scheduler;
    const std::string name;
    std::thread thread; ///< none for the main thread

    // These belong to whoever holds the baton.
    std::optional<Due> due;
    Wake wake = Wake::MadeReady;
    const char* waitingFor = "its first turn";
    bool hasEnded = false;

private:
    std::mutex m_mutex; ///< guards m_hasBaton
    std::condition_variable m_baton;
    bool m_hasBaton = false;
};

/// What threads from outside touch.
struct Scheduler::Outside {
    void notify() {
        const std::lock_guard lock(mutex);
        hasWork = true;
        changed.notify_one();
    }

    void addHold(int number) {
        const std::lock_guard lock(mutex);
        holds += number;
        changed.notify_one();
    }

    /// Blocks, in real time, while somebody holds the world and has brought nothing. False when nobody does.
    [[nodiscard]] bool wait() {
        std::unique_lock lock(mutex);
        if (holds == 0 && !hasWork)
            return false;
        changed.wait(lock, [this] { return holds == 0 || hasWork; });
        return true;
    }

    std::atomic<bool> hasWork = false; ///< set under the mutex, so that wait() misses none
    std::mutex mutex;
    std::condition_variable changed;
    int holds = 0;
};

namespace {
thread_local Scheduler::Thread* t_thread = nullptr;
} // namespace

Scheduler::Scheduler(std::optional<std::uint64_t> seed)
    : m_main(std::make_shared<Thread>(this, "main")), m_outerThread(std::exchange(t_thread, m_main.get())),
      m_outside(std::make_shared<Outside>()) {
    if (seed) {
        std::seed_seq sequence{static_cast<std::uint32_t>(*seed), static_cast<std::uint32_t>(*seed >> 32)};
        m_shuffle.emplace(sequence);
    }
}

Scheduler::~Scheduler() {
    waitForThreads();
    t_thread = m_outerThread;
}

Scheduler::Thread* Scheduler::currentThread() const {
    Thread* const thread = t_thread;
    return thread != nullptr && thread->scheduler == this ? thread : nullptr;
}

Scheduler::Thread& Scheduler::callingThread(const char* operation) const {
    Thread* const thread = currentThread();
    if (thread == nullptr) {
        (void)std::fprintf(stderr, "virtual time: a thread from outside tried to %s\n", operation);
        std::abort();
    }
    return *thread;
}

void Scheduler::sleepFor(Duration duration) {
    if (duration <= Duration::zero())
        return;
    Thread* const self = currentThread();
    if (self == nullptr) {
        std::this_thread::sleep_for(duration);
        return;
    }
    const Moment start = now();
    const Moment end = duration > Moment::max() - start ? Moment::max() : start + duration;
    const bool isNext = end < Moment::max() && m_ready.empty() &&
                        (m_due.empty() || end < m_due.begin()->first.moment) &&
                        !m_outside->hasWork.load(std::memory_order_relaxed);
    if (isNext)
        m_now.store(end.count(), std::memory_order_relaxed);
    else
        (void)block(*self, Due{end, nextOrder()}, "the end of its sleep");
}

std::uint64_t Scheduler::nextOrder() {
    const std::uint64_t count = m_orderCount++;
    return m_shuffle ? std::uint64_t{(*m_shuffle)()} << 32 | (count & 0xffffffff) : count;
}

Scheduler::Wake Scheduler::block(Thread& self, const std::optional<Due>& due, const char* waitingFor) {
    self.waitingFor = waitingFor;
    if (due && due->moment < Moment::max()) {
        self.due = due;
        m_due.emplace(*due, &self);
    }
    Thread& next = takeNext();
    if (&next != &self) {
        passBaton(next);
        self.waitForBaton();
    }
    return self.wake;
}

void Scheduler::makeReady(Thread& thread) {
    if (thread.due)
        m_due.erase(*std::exchange(thread.due, std::nullopt));
    thread.wake = Wake::MadeReady;
    m_ready.emplace(nextOrder(), &thread);
}

Scheduler::Thread& Scheduler::takeNext() {
    for (;;) {
        if (m_outside->hasWork.load(std::memory_order_relaxed)) {
            m_outside->hasWork = false;
            wakeRunLoop();
        }
        if (!m_ready.empty())
            return *m_ready.extract(m_ready.begin()).mapped();
        if (!m_due.empty()) {
            const auto next = m_due.extract(m_due.begin());
            m_now.store(std::max(now(), next.key().moment).count(), std::memory_order_relaxed);
            next.mapped()->due.reset();
            next.mapped()->wake = Wake::Due;
            return *next.mapped();
        }
        if (m_outside->wait())
            continue;
        if (!m_isMainInRunLoop)
            reportStandstill();
        m_isMainInRunLoop = false;
        m_main->wake = Wake::Never;
        return *m_main;
    }
}

void Scheduler::passBaton(Thread& next) {
    ++m_switchCount;
    // Once it has the baton, the other may end and be forgotten before this call has returned.
    const auto kept = next.shared_from_this();
    kept->takeBaton();
}

Scheduler::Wake Scheduler::blockInRunLoop(const std::optional<Due>& due) {
    Thread& self = callingThread("serve the run loop");
    m_isMainInRunLoop = true;
    const Wake wake = block(self, due, "something to do in its run loop");
    m_isMainInRunLoop = false;
    return wake;
}

void Scheduler::wakeRunLoop() {
    if (!isInside()) {
        m_outside->notify();
        return;
    }
    if (std::exchange(m_isMainInRunLoop, false))
        makeReady(*m_main);
}

std::shared_ptr<void> Scheduler::holdForOutsideWork() {
    m_outside->addHold(1);
    return {nullptr, [outside = m_outside](void*) { outside->addHold(-1); }};
}

void Scheduler::detach(std::string name, std::function<void()> body) {
    (void)callingThread("start a thread");
    joinEndedThreads();
    const auto thread = std::make_shared<Thread>(this, std::move(name));
    m_threads.push_back(thread);
    ++m_runningThreadCount;
    makeReady(*thread);
    thread->thread = std::thread([this, self = thread.get(), body = std::move(body)]() mutable {
        t_thread = self;
        self->waitForBaton();
        std::exchange(body, nullptr)();
        threadEnds(*self);
    });
}

void Scheduler::threadEnds(Thread& thread) {
    thread.hasEnded = true;
    if (--m_runningThreadCount == 0 && std::exchange(m_isMainJoining, false))
        makeReady(*m_main);
    passBaton(takeNext());
    t_thread = nullptr;
}

void Scheduler::waitForThreads() {
    Thread& self = callingThread("wait for threads");
    if (m_runningThreadCount > 0) {
        m_isMainJoining = true;
        (void)block(self, std::nullopt, "the other threads to end");
    }
    joinEndedThreads();
}

void Scheduler::joinEndedThreads() {
    // An ended thread has passed the baton on and has nothing left to do: joining it does not block.
    std::erase_if(m_threads, [](const auto& thread) {
        if (thread->hasEnded)
            thread->thread.join();
        return thread->hasEnded;
    });
}

void Scheduler::reportStandstill() const {
    (void)std::fprintf(stderr, "virtual time: every thread waits and nothing is due\n");
    (void)std::fprintf(stderr, "  %s waits for %s\n", m_main->name.c_str(), m_main->waitingFor);
    for (const auto& thread : m_threads) {
        if (!thread->hasEnded)
            (void)std::fprintf(stderr, "  %s waits for %s\n", thread->name.c_str(), thread->waitingFor);
    }
    std::abort();
}

} // namespace merro::platform::virtualtime
