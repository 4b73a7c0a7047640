#include "host/shared/RunWorld.h"

#include "platform/native/Clock.h"
#include "platform/native/RunLoop.h"
#include "platform/native/Threads.h"
#include "platform/virtualtime/Clock.h"
#include "platform/virtualtime/RunLoop.h"
#include "platform/virtualtime/Scheduler.h"
#include "platform/virtualtime/Threads.h"

namespace merro::host {

namespace {

/// The threads go first when the world ends: they may be using the rest.
class RealWorld final : public RunWorld {
public:
    [[nodiscard]] platform::Clock& clock() override { return m_clock; }
    [[nodiscard]] platform::MainRunLoop& runLoop() override { return m_runLoop; }
    [[nodiscard]] platform::Threads& threads() override { return m_threads; }

private:
    platform::native::Clock m_clock;
    platform::native::RunLoop m_runLoop{m_clock};
    platform::native::Threads m_threads{m_clock};
};

class VirtualWorld final : public RunWorld {
public:
    [[nodiscard]] platform::Clock& clock() override { return m_clock; }
    [[nodiscard]] platform::MainRunLoop& runLoop() override { return m_runLoop; }
    [[nodiscard]] platform::Threads& threads() override { return m_threads; }

private:
    platform::virtualtime::Scheduler m_scheduler;
    platform::virtualtime::Clock m_clock{m_scheduler};
    platform::virtualtime::RunLoop m_runLoop{m_scheduler};
    platform::virtualtime::Threads m_threads{m_scheduler};
};

} // namespace

std::unique_ptr<RunWorld> makeRunWorld(RunTime time) {
    if (time == RunTime::Real)
        return std::make_unique<RealWorld>();
    return std::make_unique<VirtualWorld>();
}

} // namespace merro::host
