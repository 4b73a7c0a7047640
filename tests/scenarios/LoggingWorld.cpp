#include "tests/scenarios/LoggingWorld.h"

#include "platform/Surroundings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

namespace merro::test {

namespace {

using platform::Dictionary;
using platform::Value;

std::string dateText(const platform::DateRef& date) {
    if (!date)
        return "null";
    const platform::CalendarFields fields = platform::calendarFromDate(*date);
    std::array<char, 96> line{};
    (void)std::snprintf(line.data(), line.size(), "%04d-%02d-%02d %02d:%02d:%02d", fields.year, fields.month,
                        fields.day, fields.hours, fields.minutes, fields.seconds);
    const std::string text = line.data();
    return text.starts_with("2005-03-17 ") ? text.substr(11) : text;
}

std::string entryText(const Value& value) {
    if (const auto* date = value.getIf<platform::DateRef>())
        return dateText(*date);
    if (const auto* timecode = value.getIf<TimecodeValue>())
        return *timecode ? text(*timecode) : "null";
    return value.stringValue();
}

std::string clipName(int number) {
    std::array<char, 16> name{};
    (void)std::snprintf(name.data(), name.size(), "%04d", number);
    return name.data();
}

} // namespace

std::string did(const Report& report) {
    std::string line = "did " + report.id;
    const auto add = [&line](const char* name, const std::string& entry) {
        if (!entry.empty())
            line += std::string(" ") + name + "=" + entry;
    };
    add("date", report.date);
    add("start", report.start);
    add("end", report.end);
    add("duration", report.duration);
    add("aspect", std::to_string(report.aspect));
    return line;
}

std::string didText(const Dictionary& info) {
    std::set<std::string> unknown;
    for (const auto& [key, value] : info)
        unknown.insert(key);
    const auto entry = [&](std::string_view key) {
        unknown.erase(std::string(key));
        const Value* value = platform::find(info, key);
        return value != nullptr ? entryText(*value) : std::string();
    };
    const Report report{entry(kBXMCClipId),
                        entry(kBXMCClipRecordingDate),
                        entry(kBXMCClipStartTimecode),
                        entry(kBXMCClipEndTimecode),
                        entry(kBXMCClipDuration),
                        std::stoi("0" + entry(kBXMCClipAspectRatio))};
    std::string line = did(report);
    for (const std::string& key : unknown)
        line += " unexpected " + key;
    return line;
}

class LoggingWorld::JournalLog final : public platform::Log {
public:
    explicit JournalLog(Journal& journal) : m_journal(journal) {}
    void line(std::string_view text) override { m_journal.add("log " + std::string(text)); }

private:
    Journal& m_journal;
};

class LoggingWorld::JournalAlerts final : public RecordingAlerts {
public:
    explicit JournalAlerts(Journal& journal) : m_journal(journal) {}
    int runModal(const platform::Alert& alert) override {
        m_journal.add("alert " + alert.messageText);
        return RecordingAlerts::runModal(alert);
    }

private:
    Journal& m_journal;
};

LoggingWorld::LoggingWorld(TapeScript theScript, Equipment equipment)
    : script(std::move(theScript)), scheduler(equipment.orderSeed),
      log_(std::make_unique<JournalLog>(m_journal)), alerts(std::make_unique<JournalAlerts>(m_journal)),
      framework(threads, runLoop, notifications,
                equipment.recorders != nullptr ? equipment.recorders : &movies,
                platform::session::WhenFull::Wait),
      deck(std::make_shared<JournalledDeck>(m_journal)),
      surroundings{clock,         runLoop,   threads,
                   notifications, defaults,  localization,
                   *log_,         *alerts,   equipment.files != nullptr ? *equipment.files : memoryFiles,
                   interfaces,    framework, compression},
      m_folder(equipment.folder) {
    platform::setProcessLog(log_.get());
    platform::deck::DeckSettings settings;
    settings.mechanism = equipment.mechanism;
    settings.faults = equipment.faults;
    settings.connectionChanged = [this](bool isConnected) {
        m_journal.add(isConnected ? "connected" : "disconnected");
        isConnected ? framework.addDevice(deck) : framework.removeDevice(deck);
    };
    deck->wrap(
        platform::deck::makeDeck(clock, threads, runLoop, deck->inner, script.tape(), std::move(settings)),
        notifications);
    framework.addDevice(deck);
    controller = std::make_unique<BXMCController>(surroundings);
    answerController();
    controller->setSelectedVideoDevice(deck);
    passTime(platform::Duration::zero());
}

LoggingWorld::~LoggingWorld() {
    controller.reset();
    passTime(platform::Duration::zero()); // what is posted may hold the deck
    platform::setProcessLog(nullptr);
}

void LoggingWorld::answerController() {
    const auto say = [this](const std::string& line, const std::function<void()>& act) {
        m_journal.add(line);
        if (act)
            act();
    };
    host->mccontrollerBeginRecord = [this, say](BXMCController&) { say("begin", onBegin); };
    host->mccontrollerWillRecord = [this, say](BXMCController&) {
        const std::string clip = clipName(++m_clips);
        say("will " + clip, onWill);
        return answer ? answer(clip)
                      : Dictionary{{std::string(kBXMCClipId), clip},
                                   {std::string(kBXMCMoviePath), m_folder + clip + ".mov"},
                                   {std::string(kBXMCThumbnailsPath), m_folder + clip + ".thumbnails"}};
    };
    host->mccontrollerDidRecordInfo = [this, say](BXMCController&, const Dictionary& info) {
        reports.push_back(info);
        say(didText(info), onDid);
    };
    host->mccontrollerEndRecord = [this, say](BXMCController&) { say("end", onEnd); };
    host->mccontrollerSaveConfiguration = [this](BXMCController&, const Dictionary& preset) {
        presetsSaved.push_back(preset);
    };
    controller->setDelegate(host);
}

void LoggingWorld::playTo(int frame) {
    bool isThere = false;
    deck->afterFrame = [&](int delivered) {
        if (delivered != frame || isThere)
            return;
        isThere = true;
        runLoop.stop();
    };
    EXPECT_TRUE(runLoop.run()) << "the tape never came to frame " << frame;
    deck->afterFrame = nullptr;
}

void LoggingWorld::playToEnd() {
    while (runLoop.run()) {
    }
}

void LoggingWorld::passTime(platform::Duration duration) {
    const auto timer = runLoop.scheduleTimer(duration, platform::Repeats::No,
                                             {platform::RunLoopMode::Default}, [this] { runLoop.stop(); });
    (void)runLoop.run();
}

void LoggingWorld::log() {
    start();
    playToEnd();
    stop();
}

void LoggingWorld::bindPlayButton() {
    m_playButton = controller->announcements().addObserver(
        "devicePlaying", [this](const std::string&, platform::Change change) {
            if (change == platform::Change::Did)
                (void)controller->isDevicePlaying();
        });
}

Entries LoggingWorld::entries(const std::vector<std::string>& beginnings) const {
    Entries found;
    for (const std::string& entry : journal()) {
        if (std::ranges::any_of(beginnings,
                                [&](const auto& beginning) { return entry.starts_with(beginning); }))
            found.push_back(entry);
    }
    return found;
}

std::vector<std::vector<int>> LoggingWorld::firstMovies(int count) const {
    std::vector<std::vector<int>> found;
    for (int clip = 1; clip <= count; ++clip)
        found.push_back(movie(clipName(clip)));
    return found;
}

void LoggingWorld::expectAllFilesClosed() const {
    for (const std::string& path : memoryFiles.paths()) {
        EXPECT_EQ(memoryFiles.file(path).timesOpened, 1) << path;
        EXPECT_EQ(memoryFiles.file(path).openNow, 0) << path;
    }
    for (const auto& [path, movie] : movies.all()) {
        EXPECT_EQ(movie.timesStarted, 1) << path;
        EXPECT_EQ(movie.timesFinished, 1) << path;
    }
}

} // namespace merro::test
