#include "platform/MainRunLoop.h"

#include <algorithm>
#include <utility>

namespace merro::platform {

namespace {
/// A repeating timer of no interval would keep the loop, and a virtual clock, at one moment for ever.
constexpr Duration kShortestRepetition = std::chrono::microseconds(100);
} // namespace

class MainRunLoop::ScheduledTimer final : public Timer {
public:
    ScheduledTimer(Due due, Duration repetition, std::set<RunLoopMode> modes, std::function<void()> action)
        : m_due(due), m_repetition(repetition), m_modes(std::move(modes)), m_action(std::move(action)) {}

    void invalidate() override {
        m_isValid = false;
        // The action may own whoever owns this timer: it goes only when it is not being run.
        if (!m_isFiring)
            m_action = nullptr;
    }

    [[nodiscard]] bool isValid() const { return m_isValid; }
    [[nodiscard]] const Due& due() const { return m_due; }
    [[nodiscard]] bool firesIn(RunLoopMode mode) const {
        return m_isValid && !m_isFiring && m_modes.contains(mode);
    }
    [[nodiscard]] bool repeats() const { return m_repetition > Duration::zero(); }

    /// The first repetition after `now`: those that a busy main thread has missed are not made up for.
    void advancePast(Moment now, std::uint64_t order) {
        const auto missed = std::max<std::int64_t>(0, (now - m_due.moment) / m_repetition);
        m_due = {m_due.moment + (missed + 1) * m_repetition, order};
    }

    void fire() {
        m_isFiring = true; // an action may serve the loop in another mode; it is not fired again meanwhile
        m_action();
        m_isFiring = false;
        if (!m_isValid || !repeats())
            m_action = nullptr;
    }

private:
    Due m_due;
    const Duration m_repetition;
    const std::set<RunLoopMode> m_modes;
    std::function<void()> m_action;
    bool m_isValid = true;
    bool m_isFiring = false;
};

MainRunLoop::MainRunLoop() = default;
MainRunLoop::~MainRunLoop() = default;

void MainRunLoop::post(std::function<void()> function) {
    const Due due{now(), nextOrder()};
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back({due, std::move(function)});
    }
    wakeUp();
}

std::shared_ptr<Timer> MainRunLoop::scheduleTimer(Duration interval, Repeats repeats,
                                                  std::set<RunLoopMode> modes, std::function<void()> action) {
    interval = std::max(interval, Duration::zero());
    const auto repetition =
        repeats == Repeats::Yes ? std::max(interval, kShortestRepetition) : Duration::zero();
    const Moment start = now();
    const Moment moment = interval > Moment::max() - start ? Moment::max() : start + interval;
    auto timer = std::make_shared<ScheduledTimer>(Due{moment, nextOrder()}, repetition, std::move(modes),
                                                  std::move(action));
    m_timers.push_back(timer);
    return timer;
}

void MainRunLoop::stop() {
    m_isStopping = true;
    wakeUp();
}

bool MainRunLoop::serve(RunLoopMode mode, const std::function<bool()>& isFinished) {
    ++m_depth;
    bool canGoOn = true;
    bool hasFinished = false;
    while (canGoOn && !m_isStopping && !(hasFinished = isFinished && isFinished())) {
        const Waited waited = waitUntil(firstDue(mode));
        if (waited == Waited::UntilDue)
            runNext(mode);
        canGoOn = waited != Waited::ForNothing;
    }
    const bool wasStopped = m_isStopping;
    if (--m_depth == 0)
        m_isStopping = false;
    return isFinished ? hasFinished : wasStopped;
}

std::optional<Due> MainRunLoop::firstDue(RunLoopMode mode) {
    const auto posted = firstPosted();
    const auto timer = firstTimer(mode);
    if (!timer || (posted && *posted < timer->due()))
        return posted;
    return timer->due();
}

void MainRunLoop::runNext(RunLoopMode mode) {
    const auto posted = firstPosted();
    const auto timer = firstTimer(mode);
    if (timer && (!posted || timer->due() < *posted))
        fire(timer);
    else if (posted)
        runFirstPosted();
}

std::optional<Due> MainRunLoop::firstPosted() {
    const std::lock_guard lock(m_mutex);
    return m_posted.empty() ? std::nullopt : std::optional(m_posted.front().due);
}

std::shared_ptr<MainRunLoop::ScheduledTimer> MainRunLoop::firstTimer(RunLoopMode mode) {
    std::erase_if(m_timers, [](const auto& timer) { return !timer->isValid(); });
    std::shared_ptr<ScheduledTimer> first;
    for (const auto& timer : m_timers) {
        if (timer->firesIn(mode) && (!first || timer->due() < first->due()))
            first = timer;
    }
    return first;
}

void MainRunLoop::runFirstPosted() {
    std::function<void()> function;
    {
        const std::lock_guard lock(m_mutex);
        function = std::move(m_posted.front().function);
        m_posted.pop_front();
    }
    function();
}

void MainRunLoop::fire(const std::shared_ptr<ScheduledTimer>& timer) {
    if (timer->repeats())
        timer->advancePast(now(), nextOrder());
    else
        std::erase(m_timers, timer);
    timer->fire();
}

} // namespace merro::platform
