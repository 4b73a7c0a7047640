#include "host/cli/ProgressBar.h"

#include "host/shared/TapeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <sys/ioctl.h>
#include <vector>

namespace merro::host {

namespace {

constexpr std::size_t kNarrowestBar = 10;
constexpr std::size_t kWidestBar = 40;

std::string speedText(double speed) {
    return speed < 10 ? fmt::format("{:.1f}x", speed) : fmt::format("{:.0f}x", speed);
}

/// The parts behind the bar, the most important first.
std::vector<std::string> parts(const Progress& progress) {
    std::vector<std::string> parts{fmt::format("{:3.0f}%", 100 * std::clamp(progress.done, 0.0, 1.0))};
    parts.push_back(fmt::format("{} clip{}", progress.clips, progress.clips == 1 ? "" : "s"));
    if (const auto left = progress.secondsLeft())
        parts.push_back(durationText(*left + 0.5) + " left");
    std::string position = durationText(progress.tapeSeconds);
    if (progress.tapeSecondsInAll)
        position += " of " + durationText(*progress.tapeSecondsInAll);
    parts.push_back(position);
    if (progress.recordingDate) {
        std::string date = *progress.recordingDate;
        std::replace(date.begin(), date.end(), 'T', ' ');
        parts.push_back(date);
    }
    if (progress.speed() > 0)
        parts.push_back(speedText(progress.speed()));
    return parts;
}

} // namespace

double Progress::speed() const {
    return elapsedSeconds > 0 ? tapeSeconds / elapsedSeconds : 0;
}

std::optional<double> Progress::secondsLeft() const {
    if (!tapeSecondsInAll || speed() <= 0)
        return std::nullopt;
    return std::max(0.0, (*tapeSecondsInAll - tapeSeconds) / speed());
}

std::string progressBar(const Progress& progress, int columns) {
    const auto width = static_cast<std::size_t>(std::max(columns - 1, 0)); // the last column would wrap
    std::string behind;
    for (const std::string& part : parts(progress))
        if (behind.size() + 2 + part.size() + kNarrowestBar + 2 <= width)
            behind += "  " + part;
    const std::size_t room = width - std::min(width, behind.size() + 2);
    if (room < kNarrowestBar)
        return {};
    const std::size_t length = std::min(room, kWidestBar);
    const auto filled =
        static_cast<std::size_t>(std::clamp(progress.done, 0.0, 1.0) * static_cast<double>(length));
    return "[" + std::string(filled, '#') + std::string(length - filled, '-') + "]" + behind;
}

int terminalColumns(int descriptor) {
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

} // namespace merro::host
