// Threads and the one lock with which they wait for each other.
#pragma once

#include "platform/Clock.h"

#include <functional>
#include <memory>
#include <string>

namespace merro::platform {

/// A mutex that also carries an integer condition. Not recursive. Must be unlocked by the thread that locked
/// it.
class ConditionLock {
public:
    virtual ~ConditionLock() = default;

    virtual void lock() = 0;

    /// Blocks until the condition is `condition` and the lock is free, then holds it.
    virtual void lockWhenCondition(int condition) = 0;

    /// The same, but gives up at `deadline`: false means that the lock is not held.
    [[nodiscard]] virtual bool lockWhenConditionBefore(int condition, Moment deadline) = 0;

    /// Keeps the condition.
    virtual void unlock() = 0;

    virtual void unlockWithCondition(int condition) = 0;

    /// The condition at this moment. Any thread, lock held or not.
    [[nodiscard]] virtual int condition() const = 0;
};

class Threads {
public:
    virtual ~Threads() = default;

    /// Runs `body` on a new thread and does not wait for it. The surroundings wait for all detached threads
    /// when they are destroyed, so a body must come to its end by itself or by what its owner tells it.
    /// `name` shows up in debuggers and in messages.
    virtual void detach(std::string name, std::function<void()> body) = 0;

    [[nodiscard]] virtual std::unique_ptr<ConditionLock> makeConditionLock(int condition) = 0;
};

} // namespace merro::platform
