// A lock with a condition, over the standard library's.
#pragma once

#include "platform/native/Clock.h"
#include "platform/Threads.h"

#include <condition_variable>
#include <mutex>

namespace merro::platform::native {

/// The mutex inside guards two fields and is held for no longer than it takes to look at them; that the lock
/// is held by someone is one of the fields. So `condition` never waits for the holder.
class ConditionLock final : public platform::ConditionLock {
public:
    ConditionLock(const Clock& clock, int condition) : m_clock(clock), m_condition(condition) {}

    void lock() override;
    void lockWhenCondition(int condition) override;
    [[nodiscard]] bool lockWhenConditionBefore(int condition, Moment deadline) override;
    void unlock() override;
    void unlockWithCondition(int condition) override;
    [[nodiscard]] int condition() const override;

private:
    const Clock& m_clock;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isHeld = false;
    int m_condition;
};

} // namespace merro::platform::native
