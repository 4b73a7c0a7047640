// The threads and locks of a virtual world.
#pragma once

#include "platform/Threads.h"
#include "platform/virtualtime/Scheduler.h"

namespace merro::platform::virtualtime {

/// Destroyed on the main thread.
class Threads final : public platform::Threads {
public:
    explicit Threads(Scheduler& scheduler) : m_scheduler(scheduler) {}
    ~Threads() override { m_scheduler.waitForThreads(); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    void detach(std::string name, std::function<void()> body) override;
    [[nodiscard]] std::unique_ptr<platform::ConditionLock> makeConditionLock(int condition) override;

private:
    Scheduler& m_scheduler;
};

} // namespace merro::platform::virtualtime
