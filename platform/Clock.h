// Time. Every wait of the system goes through this interface.
#pragma once

#include <chrono>

namespace merro::platform {

using Duration = std::chrono::nanoseconds;

/// Time since the surroundings were made; never goes back.
using Moment = std::chrono::nanoseconds;

class Clock {
public:
    virtual ~Clock() = default;

    /// Any thread.
    [[nodiscard]] virtual Moment now() const = 0;

    /// Blocks the calling thread, and only it, for at least `duration`; at once when that is zero or
    /// negative.
    virtual void sleepFor(Duration duration) = 0;
};

} // namespace merro::platform
