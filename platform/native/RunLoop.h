// The main thread's run loop of a program without a toolkit, in real time.
#pragma once

#include "platform/MainRunLoop.h"
#include "platform/native/Clock.h"

#include <condition_variable>

namespace merro::platform::native {

/// `clock` outlives it. run() and runInMode() wait as long as it takes: something may always be posted.
class RunLoop final : public MainRunLoop {
public:
    explicit RunLoop(const Clock& clock) : m_clock(clock) {}

    /// Real time waits for everyone anyway: the answer holds nothing.
    [[nodiscard]] std::shared_ptr<void> holdForOutsideWork() override;

private:
    [[nodiscard]] Moment now() const override { return m_clock.now(); }
    [[nodiscard]] std::uint64_t nextOrder() override { return m_nextOrder++; }
    void wakeUp() override;
    [[nodiscard]] Waited waitUntil(const std::optional<Due>& due) override;

    const Clock& m_clock;
    std::atomic<std::uint64_t> m_nextOrder = 0;
    std::mutex m_mutex; ///< guards m_isWoken
    std::condition_variable m_wake;
    bool m_isWoken = false;
};

} // namespace merro::platform::native
