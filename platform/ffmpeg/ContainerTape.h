// A tape that lies in an AVI file (type 1 or 2), a QuickTime movie or a Matroska file.
//
// The tape belongs to the caller; as every tape it is read by one thread at a time. Frames keep their bytes
// alive by themselves and may outlive the tape.
#pragma once

#include "platform/deck/Tape.h"
#include "platform/Error.h"

#include <memory>
#include <string>

namespace merro::platform::ffmpeg {

enum class ContainerProblem {
    None,
    CannotOpen,    ///< no such file, no permission, a folder
    NotAContainer, ///< none of the formats that this reads, or a broken one
    NotDV, ///< has no video, or other video than DV of 25 Mb/s (HDV and 50 Mb/s DV are named in the error)
};

struct ContainerOpening {
    std::unique_ptr<deck::Tape> tape; ///< null when there is a problem
    ContainerProblem problem = ContainerProblem::None;
    Error error; ///< says what the problem is, naming the path; empty without one
};

/// Opens the file for reading. Its frames are those of the first DV track, in stored order, each byte as
/// stored; a stored frame of any size but 120000 and 144000 bytes is skipped and reported by the tape's
/// findings.
[[nodiscard]] ContainerOpening openContainerTape(const std::string& path);

} // namespace merro::platform::ffmpeg
