// merro preset: the user's named settings.
#include "host/cli/Commands.h"
#include "host/cli/UserStore.h"
#include "host/shared/CaptureStage.h"
#include "platform/native/JsonValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace merro::host {

namespace {

constexpr std::size_t kLongestName = 100;

void requireGoodName(const std::string& name) {
    const bool isPrintable =
        std::none_of(name.begin(), name.end(), [](unsigned char c) { return std::iscntrl(c) != 0; });
    if (name.empty() || name.size() > kLongestName || !isPrintable)
        throw Failure(
            fmt::format("A preset's name has 1 to {} characters and no control characters", kLongestName),
            ExitStatus::Usage);
}

void printLine(const std::string& line) {
    fmt::print(stderr, "{}\n", line);
}

/// The controller makes a preset of the settings, as for a user who asks for it in a window.
platform::Dictionary presetFromSettings(const PresetArguments& arguments) {
    const auto settings = openSettings(arguments.store, printLine);
    const auto writtenTogether = settings->holdWriting();
    RunListener listener;
    listener.line = printLine;
    RunMessages messages(listener);
    CaptureStage stage(RunTime::Virtual, *settings, messages, {}, {});
    applyOptions(arguments.options, stage.defaults());
    platform::Dictionary saved;
    const auto delegate = std::make_shared<BXMCControllerDelegate>();
    delegate->mccontrollerSaveConfiguration = [&saved](BXMCController&, const platform::Dictionary& preset) {
        saved = preset;
    };
    stage.controller().setDelegate(delegate);
    stage.controller().saveCurrentConfiguration();
    return saved;
}

} // namespace

ExitStatus runPresetList(const PresetArguments& arguments) {
    for (const std::string& name : openPresets(arguments.store).names())
        fmt::print("{}\n", name);
    return ExitStatus::Done;
}

ExitStatus runPresetShow(const PresetArguments& arguments) {
    const platform::Dictionary preset = requirePreset(openPresets(arguments.store), arguments.name);
    fmt::print("{}\n", platform::native::jsonFromValue(preset).dump(2));
    return ExitStatus::Done;
}

ExitStatus runPresetSave(const PresetArguments& arguments) {
    requireGoodName(arguments.name);
    openPresets(arguments.store).save(arguments.name, presetFromSettings(arguments));
    return ExitStatus::Done;
}

ExitStatus runPresetDelete(const PresetArguments& arguments) {
    PresetStore store = openPresets(arguments.store);
    (void)requirePreset(store, arguments.name);
    (void)store.remove(arguments.name);
    return ExitStatus::Done;
}

} // namespace merro::host
