// The machine's own threads.
#pragma once

#include "platform/native/Clock.h"
#include "platform/Threads.h"

#include <atomic>
#include <list>
#include <mutex>
#include <thread>

namespace merro::platform::native {

/// Any thread. `clock` measures the deadlines of locks and outlives them.
class Threads final : public platform::Threads {
public:
    explicit Threads(const Clock& clock) : m_clock(clock) {}

    /// Waits for all detached threads.
    ~Threads() override;
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    void detach(std::string name, std::function<void()> body) override;
    [[nodiscard]] std::unique_ptr<platform::ConditionLock> makeConditionLock(int condition) override;

private:
    struct Running {
        std::thread thread;
        std::atomic<bool> hasEnded = false;
    };

    const Clock& m_clock;
    std::mutex m_mutex; ///< guards m_running
    std::list<Running> m_running;
};

} // namespace merro::platform::native
