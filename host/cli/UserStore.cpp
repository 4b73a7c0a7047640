#include "host/cli/UserStore.h"

#include "host/shared/Failure.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace merro::host {

std::string settingsPath(const StoreArguments& arguments) {
    return arguments.defaultsFile.empty() ? platform::native::JsonUserDefaults::defaultPath()
                                          : arguments.defaultsFile;
}

std::unique_ptr<platform::native::JsonUserDefaults>
openSettings(const StoreArguments& arguments, std::function<void(const std::string& line)> line) {
    return std::make_unique<platform::native::JsonUserDefaults>(
        settingsPath(arguments),
        [line = std::move(line)](const platform::Error& problem) { line(problem.text()); });
}

PresetStore openPresets(const StoreArguments& arguments) {
    return PresetStore::besideSettings(settingsPath(arguments));
}

platform::Dictionary requirePreset(const PresetStore& store, const std::string& name) {
    if (auto preset = store.preset(name))
        return std::move(*preset);
    const std::vector<std::string> names = store.names();
    if (names.empty())
        throw Failure(
            fmt::format("There is no preset \"{}\", nor any other: merro preset save NAME makes one", name));
    throw Failure(fmt::format("There is no preset \"{}\"; there are: {}", name, fmt::join(names, ", ")));
}

} // namespace merro::host
