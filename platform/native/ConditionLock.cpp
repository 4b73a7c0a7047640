#include "platform/native/ConditionLock.h"

namespace merro::platform::native {

void ConditionLock::lock() {
    std::unique_lock inner(m_mutex);
    m_changed.wait(inner, [this] { return !m_isHeld; });
    m_isHeld = true;
}

void ConditionLock::lockWhenCondition(int condition) {
    std::unique_lock inner(m_mutex);
    m_changed.wait(inner, [&] { return !m_isHeld && m_condition == condition; });
    m_isHeld = true;
}

bool ConditionLock::lockWhenConditionBefore(int condition, Moment deadline) {
    std::unique_lock inner(m_mutex);
    const bool isFree = m_changed.wait_until(inner, m_clock.timePoint(deadline),
                                             [&] { return !m_isHeld && m_condition == condition; });
    m_isHeld = m_isHeld || isFree;
    return isFree;
}

void ConditionLock::unlock() {
    const std::lock_guard inner(m_mutex);
    m_isHeld = false;
    m_changed.notify_all();
}

void ConditionLock::unlockWithCondition(int condition) {
    const std::lock_guard inner(m_mutex);
    m_condition = condition;
    m_isHeld = false;
    m_changed.notify_all();
}

int ConditionLock::condition() const {
    const std::lock_guard inner(m_mutex);
    return m_condition;
}

} // namespace merro::platform::native
