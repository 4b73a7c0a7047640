// What the catalogue keeps of a tape and of a clip: plain values, any thread.
//
// Texts are written as host/shared/TapeText.h writes them; paths are relative to the folder of the catalogue.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace merro::host {

/// Bytes of a tape file that are no frame.
struct FindingEntry {
    std::int64_t offsetBytes = 0;
    std::int64_t lengthBytes = 0;
    std::string what;

    friend bool operator==(const FindingEntry&, const FindingEntry&) = default;
};

/// One run over one source.
struct TapeEntry {
    std::int64_t tapeId = 0; ///< 0 until the catalogue has given it one
    std::string name;        ///< the source's file name without its ending
    std::string source;      ///< the path as an absolute path, or the device's identifier
    std::string system;      ///< "525/60", "625/50", or empty while no frame has been seen
    std::int64_t frames = 0; ///< frames that passed the head
    std::string loggedAt;    ///< when the run began, UTC, "2024-05-01T10:00:00Z"
    std::string settings;    ///< the settings of the run, a JSON object
    std::vector<FindingEntry> findings;

    friend bool operator==(const TapeEntry&, const TapeEntry&) = default;
};

struct ClipEntry {
    int number = 0;
    std::int64_t tapeId = 0;
    std::optional<std::string> recordingDate;
    std::optional<std::string> startTimecode;
    std::optional<std::string> endTimecode;
    std::optional<std::string> duration;
    int aspectRatio = 0; ///< code: 0 is 16:9, 1 is 4:3, -1, 2 and 3 say that the tape does not tell
    std::optional<std::string> moviePath;
    std::optional<std::string> thumbnailPath;
    std::optional<std::string> posterPath;
    std::int64_t framesLost = 0;
    std::string problem; ///< why something of the clip is missing; empty when all is well

    friend bool operator==(const ClipEntry&, const ClipEntry&) = default;

    /// "0001", "0002", … "10000".
    [[nodiscard]] std::string clipId() const;
};

[[nodiscard]] std::string clipIdOfNumber(int number);

} // namespace merro::host
