// merro tape make: a tape file of real DV from a scenario.
#include "host/cli/Commands.h"
#include "host/cli/LineWriter.h"
#include "host/cli/ProgressBar.h"
#include "host/shared/Movies.h"
#include "host/shared/ScenarioFile.h"
#include "platform/native/SignalWatch.h"

#include <fmt/format.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <unistd.h>

namespace merro::host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBarInterval{100};

std::string barText(std::int64_t done, std::int64_t inAll) {
    const std::int64_t percent = inAll > 0 ? 100 * done / inAll : 0;
    return fmt::format("{:3}%  frame {} of {}", percent, done, inAll);
}

} // namespace

ExitStatus runTapeMake(const TapeMakeArguments& arguments) {
    namespace ffmpeg = platform::ffmpeg;
    const ffmpeg::TapeScenario scenario = readScenarioFile(arguments.scenario);
    const ffmpeg::MovieLibrary& library = movieLibrary();
    if (const auto problem = library.checkTape(scenario))
        throw Failure(fmt::format("{}: {}", arguments.scenario, problem->text()));

    std::atomic<bool> isStopped = false;
    const platform::native::SignalWatch interrupt(SIGINT, [&isStopped] { isStopped = true; });
    const platform::native::SignalWatch end(SIGTERM, [&isStopped] { isStopped = true; });
    LineWriter people(STDERR_FILENO);
    const bool hasBar = arguments.progress == ShowProgress::Always ||
                        (arguments.progress == ShowProgress::Auto && ::isatty(STDERR_FILENO) == 1);
    Clock::time_point nextBar = Clock::now();
    const auto progress = [&](std::int64_t done, std::int64_t inAll) {
        if (hasBar && Clock::now() >= nextBar) {
            people.bar(barText(done, inAll));
            nextBar = Clock::now() + kBarInterval;
        }
        return !isStopped;
    };
    const auto problem = library.writeTape(
        scenario, arguments.output,
        arguments.replace ? ffmpeg::ExistingFile::Replace : ffmpeg::ExistingFile::Keep, progress);
    people.finish();
    if (isStopped)
        return ExitStatus::Interrupted;
    if (problem)
        throw Failure(problem->text());
    fmt::print(stderr, "{}: {} frames\n", arguments.output, library.tapeFrameCount(scenario));
    return ExitStatus::Done;
}

} // namespace merro::host
