#include "host/shared/RunSettings.h"

#include "capture/BXMCController.h"
#include "capture/CaptureDefaults.h"
#include "host/shared/Failure.h"
#include "platform/native/JsonValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace merro::host {

using platform::Value;

namespace {

/// Every setting that presets and options can change.
constexpr std::array kSettings{BXMCDetectScene,           BXMCNbDropFrame,
                               BXMCDetectEndTape,         BXMCDetectEndTapeSecond,
                               BXMCActionAfterRecord,     BXMCFrameSampling,
                               BXMCSampleInterval,        BXMCCaptureMovie,
                               BXMCCaptureCompression,    BXMCCaptureCompressionData,
                               BXMCCaptureCompressionSize};

} // namespace

void holdSettingsForThisRun(platform::native::OverriddenUserDefaults& defaults) {
    for (const std::string_view key : kSettings) {
        if (auto value = defaults.objectForKey(key)) {
            defaults.overrideObjectForKey(std::move(*value), key);
        } else {
            defaults.overrideObjectForKey(Value(false), key);
            defaults.removeObjectForKey(key);
        }
    }
}

void applyPreset(BXMCController& controller, const platform::Dictionary& preset) {
    controller.setAllConfiguration({preset});
    controller.selectConfigurationAtIndex(1); // item 0 stands for settings made by hand
}

void applyOptions(const SettingOptions& options, platform::UserDefaults& defaults) {
    if (options.scenes)
        defaults.setObjectForKey(*options.scenes, BXMCDetectScene);
    if (options.dropFrames)
        defaults.setObjectForKey(*options.dropFrames, BXMCNbDropFrame);
    if (options.sampleEverySeconds) {
        const int seconds = *options.sampleEverySeconds;
        const auto* const interval =
            std::find(sampleIntervalValue.begin(), sampleIntervalValue.end(), seconds);
        defaults.setObjectForKey(interval != sampleIntervalValue.end(), BXMCFrameSampling);
        if (interval != sampleIntervalValue.end())
            defaults.setObjectForKey(static_cast<int>(interval - sampleIntervalValue.begin()),
                                     BXMCSampleInterval);
    }
    if (options.movies)
        defaults.setObjectForKey(*options.movies, BXMCCaptureMovie);
    if (options.endOfTapeSeconds) {
        defaults.setObjectForKey(*options.endOfTapeSeconds >= 0, BXMCDetectEndTape);
        if (*options.endOfTapeSeconds >= 0)
            defaults.setObjectForKey(*options.endOfTapeSeconds, BXMCDetectEndTapeSecond);
    }
    if (options.after)
        defaults.setObjectForKey(static_cast<int>(*options.after), BXMCActionAfterRecord);
}

void requireSensibleDropFrames(const platform::UserDefaults& defaults, int framesPerSecond) {
    const std::int64_t frames = defaults.integerForKey(BXMCNbDropFrame);
    if (frames < 0 || frames >= framesPerSecond)
        throw Failure(
            fmt::format(
                "{} frames cannot be dropped after a cut, {} are the most on this tape: after a second of "
                "skipped tape the recording date has moved on by more than a second, and the clip would be "
                "cut again at once",
                frames, framesPerSecond - 1),
            ExitStatus::Usage);
}

std::string settingsInForce(const platform::UserDefaults& defaults) {
    platform::Dictionary settings;
    for (const std::string_view key : kSettings)
        if (auto value = defaults.objectForKey(key))
            settings.emplace(key, std::move(*value));
    return platform::native::jsonFromValue(settings).dump();
}

} // namespace merro::host
