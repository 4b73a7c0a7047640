#include "host/shared/LoggingRun.h"

#include "capture/CaptureDefaults.h"
#include "host/shared/CaptureStage.h"
#include "host/shared/Catalogue.h"
#include "host/shared/CatalogueKeeper.h"
#include "host/shared/ClipLedger.h"
#include "host/shared/LoggingFolder.h"
#include "host/shared/Movies.h"
#include "host/shared/TapeText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <utility>

namespace merro::host {

using platform::Dictionary;

namespace {

TapeEntry tapeEntry(const TapeSource& source) {
    TapeEntry tape;
    tape.name = source.name;
    tape.source = source.path;
    tape.system = source.system;
    tape.loggedAt = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
    return tape;
}

int lastNumberOf(const LoggingFolder& folder) {
    const int ofFiles = folder.lastNumberOfFiles();
    std::error_code error;
    const auto catalogueBytes = std::filesystem::file_size(folder.cataloguePath(), error);
    if (error || catalogueBytes == 0)
        return ofFiles;
    return std::max(ofFiles, Catalogue::openForReading(folder.cataloguePath()).lastClipNumber());
}

} // namespace

/// Members are in the order in which they need each other: the last is the first to go.
class LoggingRun::Running {
public:
    Running(RunRequest request, platform::UserDefaults& stored, RunListener listener);
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    [[nodiscard]] RunResult run();
    void stop();
    [[nodiscard]] RunStatus status() const;

private:
    void makeStage(platform::UserDefaults& stored);
    void makeSettings();
    void makeLedger();
    void answerController();
    void playTape();
    void finishFiles();
    [[nodiscard]] RunStatus statusNow() const;

    const RunRequest m_request;
    RunMessages m_messages;
    TapeSource m_source;
    const int m_framesPerSecond;
    TapeEntry m_tape;
    std::unique_ptr<LoggingFolder> m_folder;
    std::unique_ptr<CatalogueKeeper> m_keeper;
    std::unique_ptr<ClipLedger> m_ledger;
    std::shared_ptr<BXMCControllerDelegate> m_delegate = std::make_shared<BXMCControllerDelegate>();
    std::unique_ptr<CaptureStage> m_stage;
    std::shared_ptr<platform::deck::Deck> m_deck;
    platform::Observation m_playing;

    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::atomic<bool> m_hasEnded = false;
    std::atomic<bool> m_isStopped = false; ///< by the user
    mutable std::mutex m_statusMutex;      ///< guards the two below
    bool m_isUp = true;                    ///< deck and controller may be asked
    RunStatus m_lastStatus;
};

LoggingRun::Running::Running(RunRequest request, platform::UserDefaults& stored, RunListener listener)
    : m_request(std::move(request)), m_messages(std::move(listener)),
      m_source(openTapeSource(m_request.source)), m_framesPerSecond(m_source.framesPerSecond),
      m_tape(tapeEntry(m_source)) {
    makeStage(stored);
    makeSettings();
    m_folder = std::make_unique<LoggingFolder>(m_request.folder);
    makeLedger();
    m_deck = m_stage->insertTape(m_source);
}

LoggingRun::Running::~Running() {
    m_playing = {};
    m_deck.reset();
    if (m_stage)
        m_stage->close(); // while what its events reach is still there
}

void LoggingRun::Running::makeStage(platform::UserDefaults& stored) {
    platform::session::CaptureEvents capture;
    capture.problem = [this](const platform::Error& problem) { m_messages.fail(problem); };
    capture.recordingFinished = [this](const platform::session::RecordingResult& result) {
        m_ledger->movieFinished(result);
    };
    platform::native::BackgroundFilesEvents files;
    files.problem = capture.problem;
    files.framesLost = [this](const std::string& path, std::int64_t frames) {
        m_ledger->framesMissingInFile(path, frames);
    };
    m_stage = std::make_unique<CaptureStage>(m_request.time, stored, m_messages, std::move(capture),
                                             std::move(files));
}

void LoggingRun::Running::makeSettings() {
    if (m_request.preset)
        applyPreset(m_stage->controller(), *m_request.preset);
    applyOptions(m_request.options, m_stage->defaults());
    requireSensibleDropFrames(m_stage->defaults(), m_framesPerSecond);
    m_tape.settings = settingsInForce(m_stage->defaults());
    if (m_request.posters || m_stage->defaults().boolForKey(BXMCCaptureMovie))
        (void)movieLibrary(); // while nothing has been written and no frame waits
}

void LoggingRun::Running::makeLedger() {
    const int lastNumber = lastNumberOf(*m_folder);
    m_keeper = std::make_unique<CatalogueKeeper>(
        CatalogueKeeper::Places{m_folder->cataloguePath(), m_folder->clipsJsonPath()}, m_tape,
        [this](const std::string& line) { m_messages.fail(line); });
    ClipLedger::Settings settings;
    settings.firstNumber = lastNumber + 1;
    settings.movies = m_stage->defaults().boolForKey(BXMCCaptureMovie);
    if (m_request.posters)
        settings.writePoster = movieLibrary().makePosterWriter();
    settings.framesLost = [this] { return m_stage->framesLost(); };
    m_ledger = std::make_unique<ClipLedger>(*m_folder, *m_keeper, m_stage->files(), m_messages, settings);
}

void LoggingRun::Running::answerController() {
    m_delegate->mccontrollerBeginRecord = [this](BXMCController&) {
        m_messages.event({{"event", "beginRecord"}, {"source", m_tape.source}, {"folder", m_folder->path()}});
    };
    m_delegate->mccontrollerWillRecord = [this](BXMCController&) { return m_ledger->willRecord(); };
    m_delegate->mccontrollerDidRecordInfo = [this](BXMCController&, const Dictionary& info) {
        m_ledger->didRecord(info);
    };
    m_delegate->mccontrollerEndRecord = [this](BXMCController&) {
        m_messages.event({{"event", "endRecord"}});
        m_hasEnded = true;
        m_stage->runLoop().stop();
    };
    m_stage->controller().setDelegate(m_delegate);

    // What a play button bound to the property does: it reads it whenever it changes, and reading it ends the
    // recording of a tape that has stopped.
    m_playing = m_stage->controller().announcements().addObserver(
        "devicePlaying", [this](const std::string&, platform::Change change) {
            if (change == platform::Change::Did && !m_hasEnded)
                (void)m_stage->controller().isDevicePlaying();
        });
}

void LoggingRun::Running::playTape() {
    BXMCController& controller = m_stage->controller();
    controller.setRecording(true);
    if (m_isStopped)
        controller.setRecording(false);
    // The end may also be told on the delivery thread, after setRecording has returned.
    while (!m_hasEnded && m_stage->runLoop().run()) {
    }
    while (!m_hasEnded) { // virtual time says that nothing can happen any more: the tape has stopped
        controller.setRecording(false);
        if (!m_hasEnded && !m_stage->runLoop().run())
            break;
    }
}

RunResult LoggingRun::Running::run() {
    answerController();
    playTape();
    finishFiles();
    RunResult result;
    result.folder = m_folder->path();
    result.tape = m_keeper->tape();
    result.clips = m_keeper->clipsOfThisRun();
    result.framesDone = m_lastStatus.framesDone;
    if (m_keeper->failure())
        m_messages.fail(*m_keeper->failure());
    if (m_isStopped)
        result.status = ExitStatus::Interrupted;
    else if (m_messages.hasFailed())
        result.status = ExitStatus::Failed;
    return result;
}

void LoggingRun::Running::finishFiles() {
    const platform::deck::DeckPosition position = m_deck->position();
    const auto findings = m_deck->findings();
    {
        const RunStatus last = statusNow();
        const std::lock_guard lock(m_statusMutex);
        m_lastStatus = last;
        m_isUp = false;
    }
    m_playing = {};
    m_deck.reset();
    m_stage->close();
    m_ledger->finish();
    m_keeper->changeTape([&](TapeEntry& tape) {
        tape.frames = position.isFrameCountExact ? position.frameCount : m_lastStatus.framesDone;
        for (const auto& finding : findings)
            tape.findings.push_back({finding.offsetBytes, finding.lengthBytes, finding.what});
    });
    m_keeper->finish();
}

void LoggingRun::Running::stop() {
    if (m_hasEnded)
        return; // the tape has come to its end, only files are being finished
    m_isStopped = true;
    const std::lock_guard lock(m_statusMutex);
    if (m_isUp)
        m_stage->runLoop().postFromOutside([this] {
            if (!m_hasEnded)
                m_stage->controller().setRecording(false);
        });
}

RunStatus LoggingRun::Running::statusNow() const {
    RunStatus status;
    const platform::deck::DeckPosition position = m_deck->position();
    status.framesDone = std::min(position.frameIndex + 1, position.frameCount);
    status.framesInAll = position.frameCount;
    status.framesPerSecond = m_framesPerSecond;
    status.timecode = timecodeText(m_stage->controller().currentTimecodeValue());
    status.recordingDate = wallClockText(m_stage->controller().currentDate());
    status.clips = m_ledger->clipCount();
    status.elapsed = std::chrono::steady_clock::now() - m_begin;
    return status;
}

RunStatus LoggingRun::Running::status() const {
    const std::lock_guard lock(m_statusMutex);
    return m_isUp ? statusNow() : m_lastStatus;
}

LoggingRun::LoggingRun(RunRequest request, platform::UserDefaults& stored, RunListener listener)
    : m_running(std::make_unique<Running>(std::move(request), stored, std::move(listener))) {}
LoggingRun::~LoggingRun() = default;
RunResult LoggingRun::run() {
    return m_running->run();
}
void LoggingRun::stop() {
    m_running->stop();
}
RunStatus LoggingRun::status() const {
    return m_running->status();
}

} // namespace merro::host
