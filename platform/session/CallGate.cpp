#include "platform/session/CallGate.h"

#include <utility>

namespace merro::platform::session {

namespace {
constexpr int callUnderWay = 0;
constexpr int callReturned = 1;
} // namespace

void CallGate::enter() {
    const std::lock_guard lock(m_mutex);
    m_inside = std::this_thread::get_id();
}

void CallGate::leave() {
    std::vector<std::shared_ptr<ConditionLock>> waiting;
    {
        const std::lock_guard lock(m_mutex);
        m_inside = {};
        waiting.swap(m_waiting);
    }
    for (const auto& returned : waiting) {
        returned->lock();
        returned->unlockWithCondition(callReturned);
    }
}

void CallGate::wait() {
    std::shared_ptr<ConditionLock> returned;
    {
        const std::lock_guard lock(m_mutex);
        if (m_inside == std::thread::id() || m_inside == std::this_thread::get_id())
            return;
        returned = m_threads.makeConditionLock(callUnderWay);
        m_waiting.push_back(returned);
    }
    returned->lockWhenCondition(callReturned);
    returned->unlock();
}

bool CallGate::isInside() const {
    const std::lock_guard lock(m_mutex);
    return m_inside == std::this_thread::get_id();
}

} // namespace merro::platform::session
