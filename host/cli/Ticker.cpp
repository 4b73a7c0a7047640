#include "host/cli/Ticker.h"

#include <utility>

namespace merro::host {

Ticker::Ticker(std::chrono::milliseconds interval, std::function<void()> tick)
    : m_thread([this, interval, tick = std::move(tick)] {
          std::unique_lock lock(m_mutex);
          while (!m_wakeUp.wait_for(lock, interval, [this] { return m_isEnding; })) {
              lock.unlock();
              tick();
              lock.lock();
          }
      }) {}

Ticker::~Ticker() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_wakeUp.notify_one();
    m_thread.join();
}

} // namespace merro::host
