#include "platform/virtualtime/ConditionLock.h"

#include <algorithm>

namespace merro::platform::virtualtime {

void ConditionLock::lock() {
    (void)acquire(std::nullopt, std::nullopt);
}

void ConditionLock::lockWhenCondition(int condition) {
    (void)acquire(condition, std::nullopt);
}

bool ConditionLock::lockWhenConditionBefore(int condition, Moment deadline) {
    return acquire(condition, deadline);
}

bool ConditionLock::acquire(std::optional<int> wantedCondition, std::optional<Moment> deadline) {
    auto& self = m_scheduler.callingThread("take a lock");
    if (!m_isHeld && wantedCondition.value_or(m_condition) == m_condition) {
        m_isHeld = true;
        return true;
    }
    if (deadline && *deadline <= m_scheduler.now())
        return false;
    m_waiters.push_back({m_scheduler.nextOrder(), &self, wantedCondition});
    const auto due = deadline ? std::optional(Due{*deadline, m_scheduler.nextOrder()}) : std::nullopt;
    if (m_scheduler.block(self, due, "a lock") == Scheduler::Wake::MadeReady)
        return true; // whoever unlocked has handed the lock over
    std::erase_if(m_waiters, [&](const Waiter& waiter) { return waiter.thread == &self; });
    return false;
}

void ConditionLock::unlockWithCondition(int condition) {
    (void)m_scheduler.callingThread("release a lock");
    m_condition = condition;
    m_isHeld = false;
    auto next = m_waiters.end();
    for (auto waiter = m_waiters.begin(); waiter != m_waiters.end(); ++waiter) {
        const bool isWanted = waiter->wantedCondition.value_or(condition) == condition;
        if (isWanted && (next == m_waiters.end() || waiter->order < next->order))
            next = waiter;
    }
    if (next == m_waiters.end())
        return;
    m_isHeld = true;
    auto& thread = *next->thread;
    m_waiters.erase(next);
    m_scheduler.makeReady(thread);
}

} // namespace merro::platform::virtualtime
