// Movie recorders that write into a journal: "start A", "A 3" (frame 3 into A), "finish A". Any thread.
#pragma once

#include "platform/session/MovieRecorder.h"
#include "tests/session/ManualDevice.h"
#include "tests/support/Journal.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace merro::test {

class JournalRecorder : public platform::session::MovieRecorder {
public:
    JournalRecorder(std::string path, std::shared_ptr<Journal> journal, bool finishesAtOnce,
                    platform::session::RecorderEvents told)
        : events(std::move(told)), m_path(std::move(path)), m_journal(std::move(journal)),
          m_finishesAtOnce(finishesAtOnce) {
        m_result.path = m_path;
    }

    const platform::session::RecorderEvents events;

    /// The file is whole, or `error` says why it ended by itself.
    void end(std::optional<platform::Error> error = std::nullopt) {
        const std::lock_guard lock(m_mutex);
        m_result.error = std::move(error);
        m_isFinished = true;
    }

    void append(const platform::QTSampleBuffer& sampleBuffer) override {
        m_journal->add(m_path + " " + std::to_string(numberOf(sampleBuffer)));
        const std::lock_guard lock(m_mutex);
        ++(m_isFinished ? m_result.framesLost : m_result.framesWritten);
    }
    void finish() override {
        m_journal->add("finish " + m_path);
        const std::lock_guard lock(m_mutex);
        m_isFinished = m_isFinished || m_finishesAtOnce;
    }
    [[nodiscard]] bool isFinished() const override {
        const std::lock_guard lock(m_mutex);
        return m_isFinished;
    }
    [[nodiscard]] platform::session::RecordingResult result() const override {
        const std::lock_guard lock(m_mutex);
        return m_result;
    }

private:
    const std::string m_path;
    const std::shared_ptr<Journal> m_journal;
    const bool m_finishesAtOnce;
    mutable std::mutex m_mutex;
    bool m_isFinished = false;
    platform::session::RecordingResult m_result;
};

class JournalRecorders : public platform::session::MovieRecorderFactory {
public:
    explicit JournalRecorders(std::shared_ptr<Journal> journal) : m_journal(std::move(journal)) {}

    /// The recorder of the movie at `path`.
    [[nodiscard]] std::shared_ptr<JournalRecorder> recorder(const std::string& path) const {
        const std::lock_guard lock(m_mutex);
        return m_recorders.at(path);
    }
    [[nodiscard]] platform::CompressionOptionsRef lastOptions() const {
        const std::lock_guard lock(m_mutex);
        return m_lastOptions;
    }

    [[nodiscard]] std::shared_ptr<platform::session::MovieRecorder>
    startRecording(const std::string& path, const platform::CompressionOptionsRef& options,
                   platform::session::WhenFull whenFull, platform::session::RecorderEvents events) override {
        m_journal->add("start " + path);
        const bool finishesAtOnce = whenFull == platform::session::WhenFull::Wait;
        auto recorder = std::make_shared<JournalRecorder>(path, m_journal, finishesAtOnce, std::move(events));
        const std::lock_guard lock(m_mutex);
        m_recorders[path] = recorder;
        m_lastOptions = options;
        return recorder;
    }

private:
    const std::shared_ptr<Journal> m_journal;
    mutable std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<JournalRecorder>> m_recorders;
    platform::CompressionOptionsRef m_lastOptions;
};

} // namespace merro::test
