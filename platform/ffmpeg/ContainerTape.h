// A tape that lies in an AVI file (type 1 or 2), a QuickTime movie or a Matroska file.
//
// The tape belongs to the caller; as every tape it is read by one thread at a time. Frames keep their bytes
// alive by themselves and may outlive the tape.
#pragma once

#include "platform/deck/TapeFile.h"

#include <string>

namespace merro::platform::ffmpeg {

/// Opens the file for reading; a deck::ContainerOpener. The frames are those of the first video track, in
/// stored order, each byte as stored; a stored frame of any size but 120000 and 144000 bytes is skipped and
/// is among the tape's findings. A file without video, with other video than DV of 25 Mb/s, or in none of the
/// formats named above is a TapeError that says what was found instead.
[[nodiscard]] deck::TapeOrError openContainerTape(const std::string& path);

} // namespace merro::platform::ffmpeg
