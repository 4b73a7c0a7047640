// Named notifications from objects to whoever observes them.
//
// Observers are called on the thread that posts, in the order in which they were added; platform devices post
// on the main thread. Adding and ending observations is safe on any thread and from within a callback.
#pragma once

#include "platform/Observation.h"
#include "platform/Value.h"

#include <functional>
#include <memory>
#include <string>

namespace merro::platform {

struct Notification {
    std::string name;
    const void* object = nullptr; ///< identity of the sender, not owned
    Dictionary information;
};

class NotificationCenter {
public:
    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// `object` null observes every sender. Observations may outlive the center.
    [[nodiscard]] Observation addObserver(std::string name, const void* object,
                                          std::function<void(const Notification&)> observer);

    void post(const Notification& notification);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace merro::platform
