// merro export: the catalogue of a folder for other programs.
#include "host/cli/Commands.h"
#include "host/shared/AtomicFile.h"
#include "host/shared/Catalogue.h"
#include "host/shared/ClipsJson.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>

namespace merro::host {

namespace fs = std::filesystem;

namespace {

/// Nothing that a run has written is ever replaced by an export, and nothing else without being asked.
void requireSafeOutput(const ExportArguments& arguments) {
    const fs::path output = arguments.output;
    std::error_code error;
    if (!fs::exists(output, error))
        return;
    const fs::path outputFolder = output.has_parent_path() ? output.parent_path() : fs::path(".");
    if (fs::equivalent(outputFolder, arguments.folder, error))
        throw Failure(fmt::format("{} is there already, in the folder of the clips; give another file name",
                                  output.string()));
    if (!arguments.replace)
        throw Failure(
            fmt::format("{} is there already; give another file name, or --replace", output.string()));
}

} // namespace

ExitStatus runExport(const ExportArguments& arguments) {
    std::error_code error;
    if (!fs::is_directory(arguments.folder, error))
        throw Failure(fmt::format("There is no folder {}", arguments.folder));
    Catalogue catalogue =
        Catalogue::openForReading((fs::path(arguments.folder) / Catalogue::kFileName).string());
    const auto tapes = catalogue.tapes();
    const auto clips = catalogue.clips();
    const std::string text =
        arguments.format == "csv"
            ? clipsCsv(tapes, clips)
            : clipsJson(tapes.empty() ? std::nullopt : std::optional(tapes.back()), clips);
    if (arguments.output.empty()) {
        (void)std::fwrite(text.data(), 1, text.size(), stdout);
        return ExitStatus::Done;
    }
    requireSafeOutput(arguments);
    writeFileAtomically(arguments.output, text);
    return ExitStatus::Done;
}

} // namespace merro::host
