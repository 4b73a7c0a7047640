// A lock in a virtual world.
#pragma once

#include "platform/Threads.h"
#include "platform/virtualtime/Scheduler.h"

#include <atomic>
#include <optional>
#include <vector>

namespace merro::platform::virtualtime {

/// Unlocking hands the lock to the thread that has waited longest for this condition. Threads of the world
/// only; `condition` any thread.
class ConditionLock final : public platform::ConditionLock {
public:
    ConditionLock(Scheduler& scheduler, int condition) : m_scheduler(scheduler), m_condition(condition) {}

    void lock() override;
    void lockWhenCondition(int condition) override;
    [[nodiscard]] bool lockWhenConditionBefore(int condition, Moment deadline) override;
    void unlock() override { unlockWithCondition(m_condition); }
    void unlockWithCondition(int condition) override;
    [[nodiscard]] int condition() const override { return m_condition; }

private:
    struct Waiter {
        std::uint64_t order = 0;
        Scheduler::Thread* thread = nullptr;
        std::optional<int> wantedCondition; ///< none: any
    };

    [[nodiscard]] bool acquire(std::optional<int> wantedCondition, std::optional<Moment> deadline);

    Scheduler& m_scheduler;
    std::atomic<int> m_condition;
    bool m_isHeld = false;
    std::vector<Waiter> m_waiters;
};

} // namespace merro::platform::virtualtime
