// What the user typed, as plain values.
#pragma once

#include "host/shared/RunSettings.h"

#include <optional>
#include <string>

namespace merro::host {

enum class ShowProgress { Auto, Always, Never };

/// Where the user's settings and presets lie; empty: in his own folder.
struct StoreArguments {
    std::string defaultsFile;
};

struct LogArguments {
    StoreArguments store;
    std::string source;
    std::string folder;
    SettingOptions options;
    std::string preset; ///< empty: none
    std::string timeZone = "none";
    bool posters = true;
    bool realtime = false;
    bool events = false;
    bool verbose = false;
    ShowProgress progress = ShowProgress::Auto;
};

struct InspectArguments {
    std::string source;
    std::string frames; ///< empty: all
    bool json = false;
};

struct ExportArguments {
    std::string folder;
    std::string format = "json";
    std::string output; ///< empty: standard output
    bool replace = false;
};

struct PresetArguments {
    StoreArguments store;
    std::string name;
    SettingOptions options; ///< of a preset to be saved
};

struct DevicesArguments {
    bool json = false;
};

struct TapeMakeArguments {
    std::string scenario;
    std::string output;
    bool replace = false;
    ShowProgress progress = ShowProgress::Auto;
};

} // namespace merro::host
