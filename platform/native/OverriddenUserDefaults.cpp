#include "platform/native/OverriddenUserDefaults.h"

#include <utility>

namespace merro::platform::native {

bool OverriddenUserDefaults::OverriddenKeys::contains(std::string_view key) const {
    const std::lock_guard lock(mutex);
    return keys.contains(key);
}

void OverriddenUserDefaults::overrideObjectForKey(Value value, std::string_view key) {
    m_layer.store(std::move(value), key);
    {
        const std::lock_guard lock(m_overridden->mutex);
        m_overridden->keys.emplace(key);
    }
    m_layer.callObservers(key);
}

std::optional<Value> OverriddenUserDefaults::objectForKey(std::string_view key) const {
    return m_overridden->contains(key) ? m_layer.objectForKey(key) : m_base.objectForKey(key);
}

void OverriddenUserDefaults::setObjectForKey(Value value, std::string_view key) {
    if (m_overridden->contains(key))
        m_layer.setObjectForKey(std::move(value), key);
    else
        m_base.setObjectForKey(std::move(value), key);
}

void OverriddenUserDefaults::removeObjectForKey(std::string_view key) {
    if (m_overridden->contains(key))
        m_layer.removeObjectForKey(key);
    else
        m_base.removeObjectForKey(key);
}

Observation OverriddenUserDefaults::addObserver(std::string key,
                                                std::function<void(const std::string& key)> observer) {
    auto layer = std::make_shared<Observation>(m_layer.addObserver(key, observer));
    auto base = std::make_shared<Observation>(m_base.addObserver(
        key, [overridden = m_overridden, observer = std::move(observer)](const std::string& changedKey) {
            if (!overridden->contains(changedKey))
                observer(changedKey);
        }));
    return Observation([layer = std::move(layer), base = std::move(base)]() mutable {
        layer.reset();
        base.reset();
    });
}

} // namespace merro::platform::native
