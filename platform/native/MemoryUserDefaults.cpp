#include "platform/native/MemoryUserDefaults.h"

#include <utility>

namespace merro::platform::native {

MemoryUserDefaults::MemoryUserDefaults(const Dictionary& values) : m_values(values.begin(), values.end()) {}

std::optional<Value> MemoryUserDefaults::objectForKey(std::string_view key) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional(found->second);
}

void MemoryUserDefaults::setObjectForKey(Value value, std::string_view key) {
    store(std::move(value), key);
    callObservers(key);
}

void MemoryUserDefaults::removeObjectForKey(std::string_view key) {
    store(std::nullopt, key);
    callObservers(key);
}

Observation MemoryUserDefaults::addObserver(std::string key,
                                            std::function<void(const std::string& key)> observer) {
    return m_observers.add(std::move(key), std::move(observer));
}

Dictionary MemoryUserDefaults::dictionary() const {
    const std::lock_guard lock(m_mutex);
    return {m_values.begin(), m_values.end()};
}

void MemoryUserDefaults::store(std::optional<Value> value, std::string_view key) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_values.find(key);
    if (!value) {
        if (found != m_values.end())
            m_values.erase(found);
    } else if (found != m_values.end()) {
        found->second = std::move(*value);
    } else {
        m_values.emplace(key, std::move(*value));
    }
}

void MemoryUserDefaults::callObservers(std::string_view key) const {
    const std::string keyText(key);
    m_observers.notify([&](const std::string& wanted) { return wanted == keyText; }, keyText);
}

} // namespace merro::platform::native
