// The subscriptions of one announcer. Internal to the platform: hosts and components see Observation only.
//
// Any thread. Observers are called without a lock, in the order in which they were added.
#pragma once

#include "platform/Observation.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace merro::platform {

/// Observers with a `Key` each that says what they want to hear of. Observations may outlive the list.
template <typename Key, typename... Arguments>
class ObserverList {
public:
    using Observer = std::function<void(Arguments...)>;

    [[nodiscard]] Observation add(Key key, Observer observer) {
        auto entry = std::make_shared<Entry>(std::move(key), std::move(observer));
        {
            const std::lock_guard lock(m_state->mutex);
            m_state->entries.push_back(entry);
        }
        return Observation([weakState = std::weak_ptr(m_state), entry = std::move(entry)] {
            entry->isEnded = true;
            const auto state = weakState.lock();
            if (!state)
                return;
            const std::lock_guard lock(state->mutex);
            std::erase(state->entries, entry);
        });
    }

    /// Calls every observer whose key satisfies `isWanted`. One that is ended by an observer before it is not
    /// called any more.
    template <typename Predicate>
    void notify(const Predicate& isWanted, Arguments... arguments) const {
        std::vector<std::shared_ptr<Entry>> wanted;
        {
            const std::lock_guard lock(m_state->mutex);
            std::copy_if(m_state->entries.begin(), m_state->entries.end(), std::back_inserter(wanted),
                         [&](const auto& entry) { return isWanted(entry->key); });
        }
        for (const auto& entry : wanted) {
            if (!entry->isEnded && entry->observer)
                entry->observer(arguments...);
        }
    }

private:
    struct Entry {
        Entry(Key entryKey, Observer entryObserver)
            : key(std::move(entryKey)), observer(std::move(entryObserver)) {}
        Key key;
        Observer observer;
        std::atomic<bool> isEnded = false;
    };
    struct State {
        std::mutex mutex;
        std::vector<std::shared_ptr<Entry>> entries;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace merro::platform
