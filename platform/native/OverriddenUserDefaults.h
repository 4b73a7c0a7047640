// The options of one run, laid over the stored settings.
#pragma once

#include "platform/native/MemoryUserDefaults.h"
#include "platform/UserDefaults.h"

#include <set>

namespace merro::platform::native {

/// A key that is overridden is read, written and removed in this layer only; every other key is the base's.
/// Any thread. `base` outlives this.
class OverriddenUserDefaults final : public UserDefaults {
public:
    explicit OverriddenUserDefaults(UserDefaults& base) : m_base(base) {}

    /// From now on `key` reads as `value` here and the base is left alone. Calls the observers of the key.
    void overrideObjectForKey(Value value, std::string_view key);

    [[nodiscard]] std::optional<Value> objectForKey(std::string_view key) const override;
    void setObjectForKey(Value value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;
    [[nodiscard]] Observation addObserver(std::string key,
                                          std::function<void(const std::string& key)> observer) override;

private:
    /// Shared with the observers of the base, which may be called while this goes.
    struct OverriddenKeys {
        [[nodiscard]] bool contains(std::string_view key) const;
        mutable std::mutex mutex;
        std::set<std::string, std::less<>> keys;
    };

    UserDefaults& m_base;
    MemoryUserDefaults m_layer;
    std::shared_ptr<OverriddenKeys> m_overridden = std::make_shared<OverriddenKeys>();
};

} // namespace merro::platform::native
