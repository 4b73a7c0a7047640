// The clock of a virtual world.
#pragma once

#include "platform/Clock.h"
#include "platform/virtualtime/Scheduler.h"

namespace merro::platform::virtualtime {

/// Starts at zero when the scheduler is made. See Scheduler::sleepFor for what a sleep costs.
class Clock final : public platform::Clock {
public:
    explicit Clock(Scheduler& scheduler) : m_scheduler(scheduler) {}
    [[nodiscard]] Moment now() const override { return m_scheduler.now(); }
    void sleepFor(Duration duration) override { m_scheduler.sleepFor(duration); }

private:
    Scheduler& m_scheduler;
};

} // namespace merro::platform::virtualtime
