// The run loop of a virtual world's main thread.
#pragma once

#include "platform/MainRunLoop.h"
#include "platform/virtualtime/Scheduler.h"

namespace merro::platform::virtualtime {

/// Made on the scheduler's main thread; one for a scheduler. run() answers false when every thread is
/// blocked, nothing is due and nothing is held for outside work.
class RunLoop final : public MainRunLoop {
public:
    explicit RunLoop(Scheduler& scheduler) : m_scheduler(scheduler) {}

    [[nodiscard]] std::shared_ptr<void> holdForOutsideWork() override {
        return m_scheduler.holdForOutsideWork();
    }

private:
    [[nodiscard]] Moment now() const override { return m_scheduler.now(); }
    /// What comes from outside is served at once, and takes no place from the repeatable order.
    [[nodiscard]] std::uint64_t nextOrder() override {
        return m_scheduler.isInside() ? m_scheduler.nextOrder() : 0;
    }
    void wakeUp() override { m_scheduler.wakeRunLoop(); }
    [[nodiscard]] Waited waitUntil(const std::optional<Due>& due) override;

    Scheduler& m_scheduler;
};

} // namespace merro::platform::virtualtime
