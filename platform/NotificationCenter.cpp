#include "platform/NotificationCenter.h"

#include "platform/ObserverList.h"

namespace merro::platform {

namespace {
struct Wanted {
    std::string name;
    const void* object;
};
} // namespace

struct NotificationCenter::State {
    ObserverList<Wanted, const Notification&> observers;
};

NotificationCenter::NotificationCenter() : m_state(std::make_shared<State>()) {}
NotificationCenter::~NotificationCenter() = default;

Observation NotificationCenter::addObserver(std::string name, const void* object,
                                            std::function<void(const Notification&)> observer) {
    return m_state->observers.add({std::move(name), object}, std::move(observer));
}

void NotificationCenter::post(const Notification& notification) {
    const auto state = m_state; // an observer may destroy the center
    state->observers.notify(
        [&](const Wanted& wanted) {
            return wanted.name == notification.name &&
                   (wanted.object == nullptr || wanted.object == notification.object);
        },
        notification);
}

} // namespace merro::platform
