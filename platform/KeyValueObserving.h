// Announcements that a named property will change or did change, so that bound controls refresh.
//
// Any thread. Observers are called on the thread that announces, in the order in which they were added, with
// no lock held.
#pragma once

#include "platform/Observation.h"

#include <functional>
#include <memory>
#include <string>

namespace merro::platform {

enum class Change { Will, Did };

class KeyValueObserving {
public:
    KeyValueObserving();
    ~KeyValueObserving();
    KeyValueObserving(const KeyValueObserving&) = delete;
    KeyValueObserving& operator=(const KeyValueObserving&) = delete;

    /// From now on every announcement for `key` is followed by one for `dependentKey`.
    void setDependency(std::string dependentKey, std::string key);

    void willChangeValueForKey(const std::string& key);
    void didChangeValueForKey(const std::string& key);

    /// Observes `key`; an empty key observes all. Observations may outlive this object.
    [[nodiscard]] Observation
    addObserver(std::string key, std::function<void(const std::string& key, Change change)> observer);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace merro::platform
