#include "platform/virtualtime/Threads.h"

#include "platform/virtualtime/ConditionLock.h"

#include <utility>

namespace merro::platform::virtualtime {

void Threads::detach(std::string name, std::function<void()> body) {
    m_scheduler.detach(std::move(name), std::move(body));
}

std::unique_ptr<platform::ConditionLock> Threads::makeConditionLock(int condition) {
    return std::make_unique<ConditionLock>(m_scheduler, condition);
}

} // namespace merro::platform::virtualtime
