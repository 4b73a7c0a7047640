#include "host/shared/ClipsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace merro::host {

using nlohmann::ordered_json;

namespace {

ordered_json orNull(const std::optional<std::string>& text) {
    return text ? ordered_json(*text) : ordered_json(nullptr);
}

std::optional<std::string> durationOf(const ClipEntry& clip) {
    return clip.endTimecode ? clip.duration : std::nullopt;
}

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character;
        if (character == '"')
            quoted += '"';
    }
    return quoted + '"';
}

std::string csvField(const std::optional<std::string>& text) {
    return csvField(text.value_or(""));
}

} // namespace

ordered_json clipAsJson(const ClipEntry& clip) {
    return {{"clipId", clip.clipId()},
            {"clipRecordingDate", orNull(clip.recordingDate)},
            {"clipStartTimecode", orNull(clip.startTimecode)},
            {"clipEndTimecode", orNull(clip.endTimecode)},
            {"clipDuration", orNull(durationOf(clip))},
            {"clipAspectRatio", clip.aspectRatio},
            {"moviePath", orNull(clip.moviePath)},
            {"thumbnailPath", orNull(clip.thumbnailPath)},
            {"posterPath", orNull(clip.posterPath)},
            {"framesLost", clip.framesLost}};
}

std::string clipsJson(const std::optional<TapeEntry>& tape, const std::vector<ClipEntry>& clips) {
    ordered_json json;
    if (tape)
        json["tape"] = {{"name", tape->name},
                        {"source", tape->source},
                        {"system", tape->system.empty() ? ordered_json(nullptr) : ordered_json(tape->system)},
                        {"frames", tape->frames}};
    else
        json["tape"] = nullptr;
    json["clips"] = ordered_json::array();
    for (const ClipEntry& clip : clips)
        json["clips"].push_back(clipAsJson(clip));
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::string clipsCsv(const std::vector<TapeEntry>& tapes, const std::vector<ClipEntry>& clips) {
    std::string csv = "tape,clipId,clipRecordingDate,clipStartTimecode,clipEndTimecode,clipDuration,"
                      "clipAspectRatio,moviePath,thumbnailPath,posterPath,framesLost\r\n";
    for (const ClipEntry& clip : clips) {
        const auto tape = std::find_if(tapes.begin(), tapes.end(),
                                       [&](const TapeEntry& entry) { return entry.tapeId == clip.tapeId; });
        csv += fmt::format("{},{},{},{},{},{},{},{},{},{},{}\r\n",
                           tape == tapes.end() ? std::string() : csvField(tape->name), clip.clipId(),
                           csvField(clip.recordingDate), csvField(clip.startTimecode),
                           csvField(clip.endTimecode), csvField(durationOf(clip)), clip.aspectRatio,
                           csvField(clip.moviePath), csvField(clip.thumbnailPath), csvField(clip.posterPath),
                           clip.framesLost);
    }
    return csv;
}

} // namespace merro::host
