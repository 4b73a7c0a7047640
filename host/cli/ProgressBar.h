// The text of the progress bar: as wide as the terminal, the less important parts left out when it is narrow.
//
// Pure function, any thread.
#pragma once

#include <optional>
#include <string>

namespace merro::host {

/// What the bar shows.
struct Progress {
    double done = 0;                          ///< 0 to 1
    double tapeSeconds = 0;                   ///< how far the tape has come
    std::optional<double> tapeSecondsInAll;   ///< how long it is
    std::optional<std::string> recordingDate; ///< "2005-03-17T14:03:22"
    int clips = 0;
    double elapsedSeconds = 0; ///< on the user's clock

    /// Tape seconds a second; 0 while unknown.
    [[nodiscard]] double speed() const;
    /// On the user's clock; none while unknown.
    [[nodiscard]] std::optional<double> secondsLeft() const;
};

/// "[#####-----]  45%  12:34 of 27:00  2005-03-17 14:03:22  3 clips  120x  0:05 left", never wider than
/// `columns`.
[[nodiscard]] std::string progressBar(const Progress& progress, int columns);

/// Columns of the terminal at `descriptor`; 80 when it does not tell.
[[nodiscard]] int terminalColumns(int descriptor);

} // namespace merro::host
