// Opens what a user names as a tape: a raw .dv file, or a container that an opener supplied by the host
// understands.
//
// A raw file is a plain concatenation of DV frames of 120000 (525/60) or 144000 (625/50) bytes (IEC 61834-2);
// it is mapped into memory and never read whole. Any thread; the tape belongs to the caller.
#pragma once

#include "platform/deck/Tape.h"
#include "platform/Error.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace merro::platform::deck {

/// Why there is no tape at a path.
enum class TapeProblem {
    NoSuchFile,
    Folder,
    Unreadable, ///< no permission, a device error; Error::systemCode says which
    Empty,
    NotDV,
    HDV,      ///< an MPEG transport stream
    FiftyMbs, ///< DV with 50 or 100 Mb/s (SMPTE 314M, 370M)
};

struct TapeError {
    TapeProblem problem = TapeProblem::NotDV;
    Error error;

    /// Whether the source exists and can be read, but holds no DV of 25 Mb/s.
    [[nodiscard]] bool isNotDV() const {
        return problem == TapeProblem::NotDV || problem == TapeProblem::HDV ||
               problem == TapeProblem::FiftyMbs;
    }
};

using TapeOrError = std::variant<std::unique_ptr<Tape>, TapeError>;

/// Opens an AVI or QuickTime file.
using ContainerOpener = std::function<TapeOrError(const std::string& path)>;

/// The tape in the file at `path`. Looks for the first frame through the whole file if it must, so that a
/// long run of other bytes at its start is no reason to refuse it. A file that begins as AVI or QuickTime
/// goes to `openContainer`, or is refused as NotDV when that is empty.
[[nodiscard]] TapeOrError openTape(const std::string& path, const ContainerOpener& openContainer = {});

} // namespace merro::platform::deck
