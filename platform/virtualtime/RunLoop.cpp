#include "platform/virtualtime/RunLoop.h"

namespace merro::platform::virtualtime {

MainRunLoop::Waited RunLoop::waitUntil(const std::optional<Due>& due) {
    switch (m_scheduler.blockInRunLoop(due)) {
    case Scheduler::Wake::Due:
        return Waited::UntilDue;
    case Scheduler::Wake::MadeReady:
        return Waited::UntilWoken;
    case Scheduler::Wake::Never:
        break;
    }
    return Waited::ForNothing;
}

} // namespace merro::platform::virtualtime
