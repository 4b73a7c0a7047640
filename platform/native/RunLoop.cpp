#include "platform/native/RunLoop.h"

#include <utility>

namespace merro::platform::native {

std::shared_ptr<void> RunLoop::holdForOutsideWork() {
    return std::make_shared<bool>(true);
}

void RunLoop::wakeUp() {
    const std::lock_guard lock(m_mutex);
    m_isWoken = true;
    m_wake.notify_one();
}

MainRunLoop::Waited RunLoop::waitUntil(const std::optional<Due>& due) {
    if (due && due->moment <= m_clock.now())
        return Waited::UntilDue;
    std::unique_lock lock(m_mutex);
    const auto isWoken = [this] { return m_isWoken; };
    if (due)
        m_wake.wait_until(lock, m_clock.timePoint(due->moment), isWoken);
    else
        m_wake.wait(lock, isWoken);
    return std::exchange(m_isWoken, false) ? Waited::UntilWoken : Waited::UntilDue;
}

} // namespace merro::platform::native
