// A file descriptor that becomes readable when someone asks for it.
#pragma once

#include <atomic>

namespace merro::platform::native {

/// A pipe to oneself, for waking a poll(). Any thread.
class Wakeup {
public:
    /// Throws std::system_error when the process has no descriptors left.
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    /// Makes `descriptor` readable until `clear`. Also from a signal handler.
    void raise() const noexcept;
    void clear() const noexcept;
    [[nodiscard]] int descriptor() const { return m_readEnd; }

private:
    int m_readEnd = -1;
    int m_writeEnd = -1;
};

/// Blocks until `descriptor` can be read (or has come to its end): true, or until `wakeup` is raised: false.
[[nodiscard]] bool waitUntilReadable(int descriptor, const Wakeup& wakeup);

} // namespace merro::platform::native
