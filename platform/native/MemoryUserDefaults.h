// Settings that live as long as the process.
#pragma once

#include "platform/ObserverList.h"
#include "platform/UserDefaults.h"

#include <mutex>
#include <unordered_map>

namespace merro::platform::native {

/// Any thread. Looking a key up copies its value and allocates nothing for numbers.
class MemoryUserDefaults final : public UserDefaults {
public:
    MemoryUserDefaults() = default;
    explicit MemoryUserDefaults(const Dictionary& values);

    [[nodiscard]] std::optional<Value> objectForKey(std::string_view key) const override;
    void setObjectForKey(Value value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;
    [[nodiscard]] Observation addObserver(std::string key,
                                          std::function<void(const std::string& key)> observer) override;

    /// All settings as they are now.
    [[nodiscard]] Dictionary dictionary() const;

    /// Stores (none: removes) without calling observers, for a store that has something to do in between.
    void store(std::optional<Value> value, std::string_view key);
    void callObservers(std::string_view key) const;

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    mutable std::mutex m_mutex; ///< guards m_values
    std::unordered_map<std::string, Value, Hash, std::equal_to<>> m_values;
    ObserverList<std::string, const std::string&> m_observers;
};

} // namespace merro::platform::native
