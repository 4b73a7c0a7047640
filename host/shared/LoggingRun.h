// One run over one tape: everything that a capture controller needs around it, and what it reports kept in a
// folder.
//
// A file runs in virtual time, as fast as it can be read, and waits for a slow disk; in real time it behaves
// like a camcorder. Made, run and destroyed on one thread; `stop` and `status` may be called from any thread.
#pragma once

#include "host/shared/Entries.h"
#include "host/shared/Failure.h"
#include "host/shared/RunMessages.h"
#include "host/shared/RunSettings.h"
#include "host/shared/RunWorld.h"
#include "platform/UserDefaults.h"
#include "platform/Value.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::host {

struct RunRequest {
    std::string source; ///< a file
    std::string folder;
    SettingOptions options;
    std::optional<platform::Dictionary> preset; ///< applied before the options
    bool posters = true;
    RunTime time = RunTime::Virtual;
};

/// Where a run is.
struct RunStatus {
    std::int64_t framesDone = 0;
    std::int64_t framesInAll = 0; ///< an estimate until the end of the tape has been read
    int framesPerSecond = 25;
    std::optional<std::string> timecode;
    std::optional<std::string> recordingDate;
    int clips = 0;
    std::chrono::duration<double> elapsed{}; ///< on the user's clock
};

struct RunResult {
    ExitStatus status = ExitStatus::Done;
    std::string folder; ///< absolute
    TapeEntry tape;
    std::vector<ClipEntry> clips; ///< of this run
    std::int64_t framesDone = 0;
};

class LoggingRun {
public:
    /// Opens the source and takes the folder. `stored` outlives the run and is read, not written, but for
    /// settings that it lacks. Throws Failure with one line when the source, the folder or a setting is no
    /// good; nothing has been written then.
    LoggingRun(RunRequest request, platform::UserDefaults& stored, RunListener listener);
    ~LoggingRun();
    LoggingRun(const LoggingRun&) = delete;
    LoggingRun& operator=(const LoggingRun&) = delete;

    /// Plays the tape to its end, or until it is stopped, and returns when all files are whole. Once.
    [[nodiscard]] RunResult run();

    /// Acts as the stop button: the last clip is closed and reported. Before run() it makes for a short run.
    void stop();

    [[nodiscard]] RunStatus status() const;

private:
    class Running;
    std::unique_ptr<Running> m_running;
};

} // namespace merro::host
