// The user's stored settings.
#pragma once

#include "platform/Observation.h"
#include "platform/Value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace merro::platform {

/// Any thread. A setter stores first and then calls the observers of the key, on the calling thread, also
/// when the new value equals the old one. A value that cannot be written to its store is kept for the rest of
/// the process and the failure goes to the log.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    [[nodiscard]] virtual std::optional<Value> objectForKey(std::string_view key) const = 0;
    virtual void setObjectForKey(Value value, std::string_view key) = 0;
    virtual void removeObjectForKey(std::string_view key) = 0;

    /// `observer` is called with the key after each change.
    [[nodiscard]] virtual Observation addObserver(std::string key,
                                                  std::function<void(const std::string& key)> observer) = 0;

    /// Typed readings: a missing key reads as false / 0 / 0.0.
    [[nodiscard]] bool boolForKey(std::string_view key) const {
        const auto value = objectForKey(key);
        return value && value->boolValue();
    }
    [[nodiscard]] std::int64_t integerForKey(std::string_view key) const {
        const auto value = objectForKey(key);
        return value ? value->integerValue() : 0;
    }
    [[nodiscard]] double doubleForKey(std::string_view key) const {
        const auto value = objectForKey(key);
        return value ? value->doubleValue() : 0.0;
    }
};

} // namespace merro::platform
