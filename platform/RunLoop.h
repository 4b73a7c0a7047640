// The main thread's run loop, as the component sees it: a place to hand work to, and timers.
#pragma once

#include "platform/Clock.h"

#include <functional>
#include <memory>
#include <set>

namespace merro::platform {

/// What the main thread is busy with: nothing special, a modal alert or panel, or a control being dragged.
enum class RunLoopMode { Default, ModalPanel, EventTracking };

enum class Repeats { No, Yes };

class Timer {
public:
    virtual ~Timer() = default;

    /// The timer never fires after this returns on the main thread. Main thread only. Twice does nothing
    /// more.
    virtual void invalidate() = 0;
};

class RunLoop {
public:
    virtual ~RunLoop() = default;

    /// Has the main thread run `function` later, in the order of the calls; never waits for it. Any thread.
    /// Functions also run while a modal alert is up. What is still waiting when the loop is destroyed is
    /// dropped unrun.
    virtual void post(std::function<void()> function) = 0;

    /// Fires `action` on the main thread after `interval` (and then again and again when it repeats) while
    /// the loop is in one of `modes`; an interval of zero fires at the next turn of the loop. Main thread
    /// only. The loop keeps the timer alive until it has fired or is invalidated.
    virtual std::shared_ptr<Timer> scheduleTimer(Duration interval, Repeats repeats,
                                                 std::set<RunLoopMode> modes,
                                                 std::function<void()> action) = 0;

    /// Whether the caller is on the main thread. Any thread.
    [[nodiscard]] virtual bool isMainThread() const = 0;
};

} // namespace merro::platform
