// Settings in a JSON file of the user's.
#pragma once

#include "platform/Error.h"
#include "platform/native/MemoryUserDefaults.h"
#include "platform/UserDefaults.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace merro::platform::native {

class DefaultsFile;

/// Any thread. Reading looks at memory only. Every change is written before its observers are called: the
/// file is read again under a lock, the change made in it, and the whole replaced atomically, so that
/// programs that run at the same time keep each other's settings. What others have changed meanwhile is taken
/// over then, and its observers are called.
///
/// A file that is damaged, of a newer version, or cannot be read or written is told of once and left alone
/// from then on; settings then live as long as the process.
class JsonUserDefaults final : public UserDefaults {
public:
    /// `problem` is called at most once, on the constructing thread or on one that changes a setting.
    JsonUserDefaults(const std::string& path, std::function<void(const Error& problem)> problem);
    ~JsonUserDefaults() override;
    JsonUserDefaults(const JsonUserDefaults&) = delete;
    JsonUserDefaults& operator=(const JsonUserDefaults&) = delete;

    /// $XDG_CONFIG_HOME/BXMerroCapture/defaults.json, in ~/.config where that is not set.
    [[nodiscard]] static std::string defaultPath();

    [[nodiscard]] std::optional<Value> objectForKey(std::string_view key) const override;
    void setObjectForKey(Value value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;
    [[nodiscard]] Observation addObserver(std::string key,
                                          std::function<void(const std::string& key)> observer) override;

    /// While the answer lives, changes are kept in memory; they are written together when it goes. Observers
    /// are called as ever. Goes before this object does.
    [[nodiscard]] std::shared_ptr<void> holdWriting();

private:
    using Changes = std::map<std::string, std::optional<Value>, std::less<>>;

    void change(std::optional<Value> value, std::string_view key);
    void writeChanges();
    void finishHold();
    /// True when `values` were not so already.
    [[nodiscard]] static bool apply(const Changes& changes, Dictionary& values);
    /// Has memory say what the file says. The keys that it said otherwise.
    [[nodiscard]] std::vector<std::string> takeOver(const Dictionary& values);

    MemoryUserDefaults m_values;
    const std::function<void(const Error& problem)> m_problem;

    std::mutex m_fileMutex;               ///< one thread writes at a time
    std::unique_ptr<DefaultsFile> m_file; ///< null once given up

    std::mutex m_mutex; ///< guards what follows
    Changes m_changes;
    int m_holds = 0;
};

} // namespace merro::platform::native
