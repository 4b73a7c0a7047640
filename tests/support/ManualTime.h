// A clock that stands still, sleeps that take no time, and a run loop that turns when the test says.
#pragma once

#include "platform/Clock.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace merro::test {

/// Any thread. Sleeping moves the clock on.
class ManualClock : public platform::Clock {
public:
    [[nodiscard]] platform::Moment now() const override {
        const std::lock_guard lock(m_mutex);
        return m_now;
    }

    void sleepFor(platform::Duration duration) override {
        advance(std::max(duration, platform::Duration::zero()));
        {
            const std::lock_guard lock(m_mutex);
            m_sleeps.push_back(duration);
        }
        if (whileAsleep)
            whileAsleep();
    }

    void advance(platform::Duration duration) {
        const std::lock_guard lock(m_mutex);
        m_now += duration;
    }

    [[nodiscard]] std::vector<platform::Duration> sleeps() const {
        const std::lock_guard lock(m_mutex);
        return m_sleeps;
    }

    /// Called on the sleeping thread during each sleep. Set before the first.
    std::function<void()> whileAsleep;

private:
    mutable std::mutex m_mutex;
    platform::Moment m_now{};
    std::vector<platform::Duration> m_sleeps;
};

/// The thread that makes it is the main thread.
class ManualRunLoop : public platform::RunLoop {
public:
    struct ManualTimer : platform::Timer {
        platform::Duration interval{};
        platform::Repeats repeats = platform::Repeats::No;
        std::set<platform::RunLoopMode> modes;
        std::function<void()> action;
        bool isValid = true;
        void invalidate() override { isValid = false; }
    };

    // --- What the test does, on the main thread ---

    /// Runs everything posted so far, and what that posts.
    void runPosted() {
        for (auto next = takePosted(); next; next = takePosted())
            next();
    }

    /// The timers that have neither fired nor been invalidated, in the order in which they were scheduled.
    [[nodiscard]] std::vector<std::shared_ptr<ManualTimer>> timers() {
        std::erase_if(m_timers, [](const auto& timer) { return !timer->isValid; });
        return m_timers;
    }

    void fire(const std::shared_ptr<ManualTimer>& timer) {
        if (!timer->isValid)
            return;
        timer->isValid = timer->repeats == platform::Repeats::Yes;
        timer->action();
    }

    // --- RunLoop ---

    void post(std::function<void()> function) override {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(function));
    }

    std::shared_ptr<platform::Timer> scheduleTimer(platform::Duration interval, platform::Repeats repeats,
                                                   std::set<platform::RunLoopMode> modes,
                                                   std::function<void()> action) override {
        auto timer = std::make_shared<ManualTimer>();
        timer->interval = interval;
        timer->repeats = repeats;
        timer->modes = std::move(modes);
        timer->action = std::move(action);
        m_timers.push_back(timer);
        return timer;
    }

    [[nodiscard]] bool isMainThread() const override { return std::this_thread::get_id() == m_mainThread; }

private:
    [[nodiscard]] std::function<void()> takePosted() {
        const std::lock_guard lock(m_mutex);
        if (m_posted.empty())
            return nullptr;
        auto next = std::move(m_posted.front());
        m_posted.pop_front();
        return next;
    }

    const std::thread::id m_mainThread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted;
    std::vector<std::shared_ptr<ManualTimer>> m_timers;
};

} // namespace merro::test
