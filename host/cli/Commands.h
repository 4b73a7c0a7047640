// The commands of the program. Each does its work on the calling thread, the main one, and answers how it
// ended; each throws Failure with one line for what went wrong. Data goes to standard output, all else to
// standard error.
#pragma once

#include "host/cli/Arguments.h"
#include "host/shared/Failure.h"

namespace merro::host {

[[nodiscard]] ExitStatus runLog(const LogArguments& arguments);
[[nodiscard]] ExitStatus runInspect(const InspectArguments& arguments);
[[nodiscard]] ExitStatus runExport(const ExportArguments& arguments);
[[nodiscard]] ExitStatus runPresetList(const PresetArguments& arguments);
[[nodiscard]] ExitStatus runPresetShow(const PresetArguments& arguments);
[[nodiscard]] ExitStatus runPresetSave(const PresetArguments& arguments);
[[nodiscard]] ExitStatus runPresetDelete(const PresetArguments& arguments);
[[nodiscard]] ExitStatus runDevices(const DevicesArguments& arguments);
[[nodiscard]] ExitStatus runTapeMake(const TapeMakeArguments& arguments);

} // namespace merro::host
