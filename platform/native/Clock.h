// Real time.
#pragma once

#include "platform/Clock.h"

namespace merro::platform::native {

/// The machine's steady clock, zero when this object is made. Any thread.
class Clock final : public platform::Clock {
public:
    [[nodiscard]] Moment now() const override;
    void sleepFor(Duration duration) override;

    /// `moment` for waiting with the standard library; a moment beyond its range is its last one.
    [[nodiscard]] std::chrono::steady_clock::time_point timePoint(Moment moment) const;

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace merro::platform::native
