// The reports of a folder as other programs read them: clips.json, and CSV for spreadsheets.
//
// Pure functions; any thread.
#pragma once

#include "host/shared/Entries.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <vector>

namespace merro::host {

/// The name of the file that is kept current in every folder.
inline constexpr const char* kClipsJsonName = "clips.json";

/// One clip as clips.json has it.
[[nodiscard]] nlohmann::ordered_json clipAsJson(const ClipEntry& clip);

/// {"tape": {"name", "source", "system", "frames"}, "clips": [...]}: `tape` is the tape logged last and null
/// when there is none, the clips are all clips of the folder. What is missing is null; where the end timecode
/// is missing the duration is null too. Ends with a line break.
[[nodiscard]] std::string clipsJson(const std::optional<TapeEntry>& tape,
                                    const std::vector<ClipEntry>& clips);

/// One line a clip under a heading line, as RFC 4180 has it; the columns are the keys of clips.json, and the
/// name of the tape in front. What is missing is empty.
[[nodiscard]] std::string clipsCsv(const std::vector<TapeEntry>& tapes, const std::vector<ClipEntry>& clips);

} // namespace merro::host
