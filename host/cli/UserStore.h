// The user's stored settings and presets, as the command line finds them.
#pragma once

#include "host/cli/Arguments.h"
#include "host/shared/PresetStore.h"
#include "platform/native/JsonUserDefaults.h"

#include <functional>
#include <memory>
#include <string>

namespace merro::host {

/// Where the settings lie.
[[nodiscard]] std::string settingsPath(const StoreArguments& arguments);

/// `line` is told, at most once, why the settings cannot be kept.
[[nodiscard]] std::unique_ptr<platform::native::JsonUserDefaults>
openSettings(const StoreArguments& arguments, std::function<void(const std::string& line)> line);

[[nodiscard]] PresetStore openPresets(const StoreArguments& arguments);

/// Throws Failure, naming the presets that there are, when there is none of this name.
[[nodiscard]] platform::Dictionary requirePreset(const PresetStore& store, const std::string& name);

} // namespace merro::host
