#include "host/cli/ClipTable.h"

#include "host/shared/Catalogue.h"
#include "host/shared/ClipsJson.h"
#include "host/shared/TapeText.h"

#include <fmt/format.h>

#include <algorithm>

namespace merro::host {

namespace {

constexpr std::size_t kMostFindings = 5;
constexpr const char* kNone = "-";

std::string dateText(const ClipEntry& clip) {
    std::string date = clip.recordingDate.value_or(kNone);
    std::replace(date.begin(), date.end(), 'T', ' ');
    return date;
}

} // namespace

std::string clipTable(const RunResult& result) {
    std::string table = fmt::format("{:<6}  {:<19}  {:<11}  {:<11}  {:<11}  {:>6}  {}\n", "Clip", "Recorded",
                                    "Start", "End", "Duration", "Lost", "Movie");
    for (const ClipEntry& clip : result.clips)
        table +=
            fmt::format("{:<6}  {:<19}  {:<11}  {:<11}  {:<11}  {:>6}  {}\n", clip.clipId(), dateText(clip),
                        clip.startTimecode.value_or(kNone), clip.endTimecode.value_or(kNone),
                        clip.endTimecode ? clip.duration.value_or(kNone) : kNone, clip.framesLost,
                        clip.moviePath.value_or(kNone));
    return table;
}

std::string findingsSummary(const TapeEntry& tape) {
    std::string summary;
    const std::size_t shown = std::min(tape.findings.size(), kMostFindings);
    for (std::size_t at = 0; at < shown; ++at) {
        const FindingEntry& finding = tape.findings[at];
        summary += fmt::format("At byte {}: {} bytes skipped, {}\n", finding.offsetBytes, finding.lengthBytes,
                               finding.what);
    }
    if (tape.findings.size() > shown)
        summary += fmt::format("and {} more places (all are in the catalogue's table findings)\n",
                               tape.findings.size() - shown);
    return summary;
}

std::string runSummary(const RunResult& result, double elapsedSeconds, int framesPerSecond) {
    const double tapeSeconds = static_cast<double>(result.framesDone) / framesPerSecond;
    std::string summary = fmt::format("{} clip{}, {} frames ({}) in {:.1f} s", result.clips.size(),
                                      result.clips.size() == 1 ? "" : "s", result.framesDone,
                                      durationText(tapeSeconds), elapsedSeconds);
    if (elapsedSeconds > 0)
        summary += fmt::format(", {:.0f} times real time", tapeSeconds / elapsedSeconds);
    summary += "\n";
    for (const ClipEntry& clip : result.clips)
        if (!clip.problem.empty())
            summary += fmt::format("Clip {}: {}\n", clip.clipId(), clip.problem);
    summary +=
        fmt::format("In {}: {} and {}; for each clip its movie (.mov), sample frames (.thumbnails) and "
                    "poster (.png)\n",
                    result.folder, kClipsJsonName, Catalogue::kFileName);
    return summary;
}

} // namespace merro::host
