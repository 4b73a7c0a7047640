#include "platform/KeyValueObserving.h"

#include "platform/ObserverList.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace merro::platform {

struct KeyValueObserving::State {
    struct Dependency {
        std::string dependentKey;
        std::string key;
    };

    /// `key` and everything that depends on it, each once, nearer dependents first.
    [[nodiscard]] std::vector<std::string> affectedKeys(const std::string& key) {
        std::vector<std::string> keys{key};
        const std::lock_guard lock(mutex);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            for (const auto& dependency : dependencies) {
                if (dependency.key == keys[i] &&
                    std::find(keys.begin(), keys.end(), dependency.dependentKey) == keys.end())
                    keys.push_back(dependency.dependentKey);
            }
        }
        return keys;
    }

    void announce(const std::string& key, Change change) {
        for (const auto& affected : affectedKeys(key)) {
            observers.notify([&](const std::string& wanted) { return wanted.empty() || wanted == affected; },
                             affected, change);
        }
    }

    std::mutex mutex;
    std::vector<Dependency> dependencies;
    ObserverList<std::string, const std::string&, Change> observers;
};

KeyValueObserving::KeyValueObserving() : m_state(std::make_shared<State>()) {}
KeyValueObserving::~KeyValueObserving() = default;

void KeyValueObserving::setDependency(std::string dependentKey, std::string key) {
    const std::lock_guard lock(m_state->mutex);
    m_state->dependencies.push_back({std::move(dependentKey), std::move(key)});
}

void KeyValueObserving::willChangeValueForKey(const std::string& key) {
    const auto state = m_state; // an observer may destroy the announcer
    state->announce(key, Change::Will);
}

void KeyValueObserving::didChangeValueForKey(const std::string& key) {
    const auto state = m_state;
    state->announce(key, Change::Did);
}

Observation
KeyValueObserving::addObserver(std::string key,
                               std::function<void(const std::string& key, Change change)> observer) {
    return m_state->observers.add(std::move(key), std::move(observer));
}

} // namespace merro::platform
