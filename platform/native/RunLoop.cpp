#include "platform/native/RunLoop.h"

namespace merro::platform::native {

std::shared_ptr<void> RunLoop::holdForOutsideWork() {
    return std::make_shared<bool>(true);
}

void RunLoop::wakeUp() {
    const std::lock_guard lock(m_mutex);
    m_isWoken = true;
    m_wake.notify_one();
}

bool RunLoop::waitUntil(const std::optional<Due>& due) {
    std::unique_lock lock(m_mutex);
    const auto isWoken = [this] { return m_isWoken; };
    if (due)
        m_wake.wait_until(lock, m_clock.timePoint(due->moment), isWoken);
    else
        m_wake.wait(lock, isWoken);
    m_isWoken = false;
    return true;
}

} // namespace merro::platform::native
