// Lets one thread call out without holding a lock, and others wait until that call has returned.
#pragma once

#include "platform/Threads.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace merro::platform::session {

/// enter and leave are called in turn, by one thread at a time; wait by any thread. None of them calls out.
class CallGate {
public:
    explicit CallGate(Threads& threads) : m_threads(threads) {}

    /// The calling thread goes out. May be called with a lock held, the one that also guards what is called:
    /// then whoever changes that under the same lock and waits afterwards is sure that the old one is not
    /// being called.
    void enter();
    void leave();

    /// Returns when the call under way now, if any, has returned; at once when the caller is itself inside
    /// it. No lock may be held.
    void wait();

    /// Whether the caller is inside the call under way.
    [[nodiscard]] bool isInside() const;

private:
    Threads& m_threads;
    mutable std::mutex m_mutex;
    std::thread::id m_inside;
    std::vector<std::shared_ptr<ConditionLock>> m_waiting;
};

} // namespace merro::platform::session
