#include "platform/native/Clock.h"

#include <thread>

namespace merro::platform::native {

Moment Clock::now() const {
    return std::chrono::duration_cast<Moment>(std::chrono::steady_clock::now() - m_start);
}

void Clock::sleepFor(Duration duration) {
    if (duration > Duration::zero())
        std::this_thread::sleep_until(
            timePoint(now() < Moment::max() - duration ? now() + duration : Moment::max()));
}

std::chrono::steady_clock::time_point Clock::timePoint(Moment moment) const {
    const auto latest = std::chrono::steady_clock::time_point::max();
    return moment < latest - m_start ? m_start + moment : latest;
}

} // namespace merro::platform::native
