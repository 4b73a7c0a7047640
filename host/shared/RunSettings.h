// What a user may ask of one run, and how that is laid over his stored settings.
#pragma once

#include "platform/native/OverriddenUserDefaults.h"
#include "platform/Value.h"

#include <optional>
#include <string>

namespace merro {
class BXMCController;
}

namespace merro::host {

/// Transport action after a recording, as the settings number it.
enum class AfterRecord : int { Nothing = 0, Stop = 1, Pause = 2 };

/// Settings given for one run; what is missing is as stored. Plain values.
struct SettingOptions {
    std::optional<bool> scenes;
    std::optional<int> dropFrames;
    std::optional<int> sampleEverySeconds; ///< 1, 2, 5, 10 or 20; 0 is off
    std::optional<bool> movies;
    std::optional<int> endOfTapeSeconds; ///< negative is off
    std::optional<AfterRecord> after;
};

/// From now on every capture setting reads and is written in `defaults` only: what a run changes ends with
/// it.
void holdSettingsForThisRun(platform::native::OverriddenUserDefaults& defaults);

/// Copies a stored preset into the settings, the way a user's choice from the list of presets does. Main
/// thread.
void applyPreset(BXMCController& controller, const platform::Dictionary& preset);

/// Main thread.
void applyOptions(const SettingOptions& options, platform::UserDefaults& defaults);

/// Throws Failure, saying why, when more frames would be dropped after a cut than are sensible in a system of
/// `framesPerSecond` timecode frames.
void requireSensibleDropFrames(const platform::UserDefaults& defaults, int framesPerSecond);

/// The settings in force, for the record of the run: "detectScene", "nbDropFrame", …
[[nodiscard]] std::string settingsInForce(const platform::UserDefaults& defaults);

} // namespace merro::host
