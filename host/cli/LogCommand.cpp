// merro log: plays a tape file through the capture controller and keeps what comes out.
#include "host/cli/ClipTable.h"
#include "host/cli/Commands.h"
#include "host/cli/LineWriter.h"
#include "host/cli/ProgressBar.h"
#include "host/cli/Ticker.h"
#include "host/cli/UserStore.h"
#include "host/shared/LoggingRun.h"
#include "host/shared/TimeZone.h"
#include "platform/native/SignalWatch.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <csignal>
#include <list>
#include <unistd.h>

namespace merro::host {

using nlohmann::ordered_json;

namespace {

constexpr std::chrono::milliseconds kBarInterval{100};
constexpr std::chrono::milliseconds kEventInterval{500};

Progress progressOf(const RunStatus& status) {
    Progress progress;
    const double perSecond = status.framesPerSecond;
    progress.tapeSeconds = static_cast<double>(status.framesDone) / perSecond;
    if (status.framesInAll > 0) {
        progress.tapeSecondsInAll = static_cast<double>(status.framesInAll) / perSecond;
        progress.done = static_cast<double>(status.framesDone) / static_cast<double>(status.framesInAll);
    }
    progress.recordingDate = status.recordingDate;
    progress.clips = status.clips;
    progress.elapsedSeconds = status.elapsed.count();
    return progress;
}

ordered_json progressEvent(const RunStatus& status) {
    const Progress progress = progressOf(status);
    const auto orNull = [](const auto& value) {
        return value ? ordered_json(*value) : ordered_json(nullptr);
    };
    return {{"event", "progress"},
            {"frame", status.framesDone},
            {"frames", status.framesInAll},
            {"timecode", orNull(status.timecode)},
            {"recordingDate", orNull(status.recordingDate)},
            {"clips", status.clips},
            {"speed", progress.speed()},
            {"secondsLeft", orNull(progress.secondsLeft())}};
}

std::string eventLine(const ordered_json& event) {
    return event.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

bool wantsBar(ShowProgress progress) {
    return progress == ShowProgress::Always ||
           (progress == ShowProgress::Auto && ::isatty(STDERR_FILENO) == 1);
}

RunListener makeListener(const LogArguments& arguments, LineWriter& people, LineWriter& data) {
    RunListener listener;
    listener.line = [&people](const std::string& line) { people.line(line); };
    if (arguments.events)
        listener.event = [&data](const ordered_json& event) { data.line(eventLine(event)); };
    if (arguments.verbose)
        listener.log = listener.line;
    return listener;
}

RunRequest makeRequest(const LogArguments& arguments) {
    RunRequest request;
    request.source = arguments.source;
    request.folder = arguments.folder;
    request.options = arguments.options;
    if (!arguments.preset.empty())
        request.preset = requirePreset(openPresets(arguments.store), arguments.preset);
    request.posters = arguments.posters;
    request.time = arguments.realtime ? RunTime::Real : RunTime::Virtual;
    return request;
}

/// While it lives, the signals that ask a program to end act as the stop button, and the second one ends the
/// program at once.
class StopButton {
public:
    explicit StopButton(LoggingRun& run) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            m_watches.emplace_back(signal, [this, &run] {
                if (m_isPressed.exchange(true))
                    ::_exit(static_cast<int>(ExitStatus::Interrupted));
                run.stop();
            });
    }

private:
    std::atomic<bool> m_isPressed = false;
    std::list<platform::native::SignalWatch> m_watches;
};

/// Shows how far the run is while it lives.
class ProgressReports {
public:
    ProgressReports(const LoggingRun& run, const LogArguments& arguments, LineWriter& people,
                    LineWriter& data) {
        if (wantsBar(arguments.progress))
            m_tickers.emplace_back(kBarInterval, [&run, &people] {
                people.bar(progressBar(progressOf(run.status()), terminalColumns(STDERR_FILENO)));
            });
        if (arguments.events)
            m_tickers.emplace_back(kEventInterval,
                                   [&run, &data] { data.line(eventLine(progressEvent(run.status()))); });
    }

private:
    std::list<Ticker> m_tickers;
};

void showResult(const LogArguments& arguments, const RunResult& result, const RunStatus& status,
                LineWriter& people, LineWriter& data) {
    people.bar({});
    if (arguments.events)
        data.line(eventLine(progressEvent(status)));
    (arguments.events ? people : data).text(clipTable(result));
    people.text(findingsSummary(result.tape));
    people.text(runSummary(result, status.elapsed.count(), status.framesPerSecond));
}

} // namespace

ExitStatus runLog(const LogArguments& arguments) {
    useTimeZone(arguments.timeZone);
    LineWriter people(STDERR_FILENO);
    LineWriter data(STDOUT_FILENO);
    const auto settings =
        openSettings(arguments.store, [&people](const std::string& line) { people.line(line); });
    auto writtenTogether = settings->holdWriting();
    LoggingRun run(makeRequest(arguments), *settings, makeListener(arguments, people, data));
    writtenTogether.reset();

    RunResult result;
    {
        const StopButton stopButton(run);
        const ProgressReports reports(run, arguments, people, data);
        result = run.run();
    }
    showResult(arguments, result, run.status(), people, data);
    data.finish();
    people.finish();
    return result.status;
}

} // namespace merro::host
