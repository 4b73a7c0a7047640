#include "platform/native/Threads.h"

#include "platform/native/ConditionLock.h"

#include <pthread.h>
#include <utility>

namespace merro::platform::native {

namespace {

/// The system keeps 15 characters of a thread's name.
void nameThisThread(const std::string& name) {
    (void)pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
}

} // namespace

Threads::~Threads() {
    for (;;) {
        std::list<Running> running; // a thread may detach another one while it is waited for
        {
            const std::lock_guard lock(m_mutex);
            running.swap(m_running);
        }
        if (running.empty())
            return;
        for (auto& each : running)
            each.thread.join();
    }
}

void Threads::detach(std::string name, std::function<void()> body) {
    const std::lock_guard lock(m_mutex);
    m_running.remove_if([](Running& running) {
        if (running.hasEnded)
            running.thread.join();
        return running.hasEnded.load();
    });
    Running& running = m_running.emplace_back();
    running.thread = std::thread([&running, name = std::move(name), body = std::move(body)]() mutable {
        nameThisThread(name);
        std::exchange(body, nullptr)();
        running.hasEnded = true;
    });
}

std::unique_ptr<platform::ConditionLock> Threads::makeConditionLock(int condition) {
    return std::make_unique<ConditionLock>(m_clock, condition);
}

} // namespace merro::platform::native
