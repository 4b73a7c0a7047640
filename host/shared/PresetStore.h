// The user's named presets: dictionaries under the preset keys of the capture controller.
//
// One thread at a time. They lie in a catalogue of their own beside the user's settings, since a preset is
// wanted before there is a folder to log into.
#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <vector>

namespace merro::host {

class PresetStore {
public:
    /// Nothing is opened or created yet. Operations throw Failure when the store cannot be used.
    explicit PresetStore(std::string path) : m_path(std::move(path)) {}

    /// The store that goes with a settings file: "settings.json" has its presets in
    /// "settings.presets.sqlite".
    [[nodiscard]] static PresetStore besideSettings(const std::string& settingsPath);

    [[nodiscard]] std::vector<std::string> names() const; ///< in alphabetical order
    [[nodiscard]] std::optional<platform::Dictionary> preset(const std::string& name) const;

    /// Keeps `preset` under `name`, in place of the preset that had the name before. The name is also stored
    /// in the preset, as its display name.
    void save(const std::string& name, platform::Dictionary preset);

    /// False when there was no such preset.
    [[nodiscard]] bool remove(const std::string& name);

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace merro::host
