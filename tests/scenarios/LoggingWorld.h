// Everything that a whole tape is logged with: the real controller over the real session and the real deck,
// in virtual time, and a host that answers every message.
//
// What happens goes into one journal, in order:
//   "begin", "will 0001", "did 0001 …" (see did()), "end"    messages to the host
//   "deck 10000 1"                                           a command to the deck: speed and mode
//   "alert Cannot capture this stream."                      an alert, answered at once
//   "log START (00:00:00.00)"                                a log line
// The files are in memory, named after the clip: "0001.mov", "0001.thumbnails".
#pragma once

#include "capture/BXMCController.h"
#include "platform/native/HeadlessInterface.h"
#include "platform/native/MemoryUserDefaults.h"
#include "platform/session/CaptureFramework.h"
#include "platform/virtualtime/Clock.h"
#include "platform/virtualtime/RunLoop.h"
#include "platform/virtualtime/Scheduler.h"
#include "platform/virtualtime/Threads.h"
#include "tests/scenarios/JournalledDeck.h"
#include "tests/scenarios/KeptMovies.h"
#include "tests/scenarios/TapeScript.h"
#include "tests/support/FakeCompressionComponents.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingAlerts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::test {

using Entries = std::vector<std::string>;

/// What a report says; an empty text: the dictionary has no such entry.
struct Report {
    std::string id = {};
    std::string date = {}; ///< "14:00:00" on 17 March 2005, else "2005-03-27 02:00:00"
    std::string start = {};
    std::string end = {};
    std::string duration = {};
    int aspect = 1;
};

/// The journal's line about a report: every entry of its dictionary, and no other.
[[nodiscard]] std::string did(const Report& report);
[[nodiscard]] std::string didText(const platform::Dictionary& info);

/// What a world may be made with instead of the usual.
struct Equipment {
    platform::deck::MechanismSettings mechanism = platform::deck::MechanismSettings::ideal();
    platform::deck::DeckFaults faults;
    platform::Files* files = nullptr;                             ///< MemoryFiles when null
    platform::session::MovieRecorderFactory* recorders = nullptr; ///< KeptMovies when null
    std::string folder = {};                                      ///< in front of the files' names
    std::optional<std::uint64_t> orderSeed;                       ///< shuffles what is due at one moment
};

class LoggingWorld {
public:
    explicit LoggingWorld(TapeScript script, Equipment equipment = {});
    ~LoggingWorld();
    LoggingWorld(const LoggingWorld&) = delete;
    LoggingWorld& operator=(const LoggingWorld&) = delete;

    // --- Steps of a test ---

    void set(std::string_view key, const platform::Value& value) { defaults.setObjectForKey(value, key); }

    /// Switches recording on and off, by hand.
    void start() { controller->setRecording(true); }
    void stop() { controller->setRecording(false); }

    /// Lets time pass until `frame` has been delivered, or is lost for good.
    void playTo(int frame);
    /// Lets time pass until nothing can happen any more.
    void playToEnd();
    void passTime(platform::Duration duration);

    /// Logs the whole tape: starts, waits for the end of the tape, stops.
    void log();

    /// Does what a play button does that is bound to the tape's state.
    void bindPlayButton();

    // --- What came of it ---

    [[nodiscard]] Entries journal() const { return m_journal.entries(); }
    [[nodiscard]] Entries entries(const std::vector<std::string>& beginnings) const;
    /// The messages to the host.
    [[nodiscard]] Entries messages() const { return entries({"begin", "will", "did", "end"}); }
    [[nodiscard]] Entries commands() const { return entries({"deck"}); }
    [[nodiscard]] Entries alertsShown() const { return entries({"alert"}); }
    [[nodiscard]] Entries logLines() const { return entries({"log"}); }
    void forgetJournal() { m_journal.clear(); }

    /// The tape frames in a clip's thumbnails file, each checked byte for byte.
    [[nodiscard]] std::vector<int> thumbnails(const std::string& clip) const {
        return script.framesIn(memoryFiles.file(clip + ".thumbnails").bytes);
    }
    /// The tape frames in a clip's movie.
    [[nodiscard]] std::vector<int> movie(const std::string& clip) const {
        return movies.movie(clip + ".mov").frames;
    }
    /// Those of the first `count` clips.
    [[nodiscard]] std::vector<std::vector<int>> firstMovies(int count) const;
    /// Every file that was opened has been closed, once.
    void expectAllFilesClosed() const;

    const TapeScript script;

    platform::virtualtime::Scheduler scheduler;
    platform::virtualtime::Clock clock{scheduler};
    platform::virtualtime::RunLoop runLoop{scheduler};
    platform::virtualtime::Threads threads{scheduler};

private:
    class JournalLog;
    class JournalAlerts;

    void answerController();

    Journal m_journal;

public:
    platform::NotificationCenter notifications;
    platform::native::MemoryUserDefaults defaults;
    PlainLocalization localization;
    const std::unique_ptr<platform::Log> log_;
    const std::unique_ptr<RecordingAlerts> alerts;
    MemoryFiles memoryFiles;
    platform::native::HeadlessInterfaceLoader interfaces;
    FakeCompressionComponents compression;
    KeptMovies movies;
    platform::session::CaptureFramework framework;
    const std::shared_ptr<JournalledDeck> deck;
    const platform::Surroundings surroundings;
    std::unique_ptr<BXMCController> controller;
    const std::shared_ptr<BXMCControllerDelegate> host = std::make_shared<BXMCControllerDelegate>();

    // What the host does within a message, besides noting it.
    std::function<void()> onBegin;
    std::function<void()> onWill;
    std::function<void()> onDid;
    std::function<void()> onEnd;
    /// What it answers to "will": by default identifier and both paths.
    std::function<platform::Dictionary(const std::string& clip)> answer;
    std::vector<platform::Dictionary> reports;
    std::vector<platform::Dictionary> presetsSaved;

private:
    const std::string m_folder;
    int m_clips = 0;
    platform::Observation m_playButton;
};

} // namespace merro::test
