// A file that a user names as his tape.
//
// One thread at a time.
#pragma once

#include "platform/deck/Tape.h"

#include <memory>
#include <string>

namespace merro::host {

struct TapeSource {
    std::unique_ptr<platform::deck::Tape> tape;
    std::string name;        ///< file name without its ending
    std::string path;        ///< absolute
    std::string system;      ///< of the first frame: "525/60" or "625/50"
    int framesPerSecond = 0; ///< timecode frames, 30 or 25
};

/// Opens a raw DV file, an AVI, a QuickTime movie or a Matroska file. Throws Failure with one line that names
/// the file and the reason; its status is ExitStatus::NotDV when the file can be read but holds no DV of 25
/// Mb/s.
[[nodiscard]] TapeSource openTapeSource(const std::string& path);

/// "525/60" or "625/50" by the length of a frame in bytes; empty when it is none of the two.
[[nodiscard]] std::string systemOfFrame(std::size_t frameBytes);

} // namespace merro::host
