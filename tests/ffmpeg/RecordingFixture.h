// A movie recorder, what it told, and where it writes.
#pragma once

#include "ffmpeg/FaultyFiles.h"
#include "ffmpeg/MadeFrames.h"
#include "ffmpeg/MovieReader.h"
#include "platform/ffmpeg/MovieRecorder.h"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace merro::test {

using platform::session::WhenFull;

/// What a recorder told, in order. Any thread.
class Told {
public:
    platform::session::RecorderEvents events() {
        return {[this](const platform::Error& problem) { note(problem.text()); },
                [this](std::int64_t frames) {
                    const std::lock_guard lock(m_mutex);
                    m_framesLost += frames;
                },
                [this](const platform::session::RecordingResult& result) {
                    const std::lock_guard lock(m_mutex);
                    m_results.push_back(result);
                }};
    }

    std::vector<std::string> problems() const {
        const std::lock_guard lock(m_mutex);
        return m_problems;
    }
    std::int64_t framesLost() const {
        const std::lock_guard lock(m_mutex);
        return m_framesLost;
    }
    std::vector<platform::session::RecordingResult> results() const {
        const std::lock_guard lock(m_mutex);
        return m_results;
    }

private:
    void note(const std::string& problem) {
        const std::lock_guard lock(m_mutex);
        m_problems.push_back(problem);
    }

    mutable std::mutex m_mutex;
    std::vector<std::string> m_problems;
    std::int64_t m_framesLost = 0;
    std::vector<platform::session::RecordingResult> m_results;
};

class Recording : public ::testing::Test {
protected:
    Recording() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    std::shared_ptr<platform::session::MovieRecorder> start(WhenFull whenFull = WhenFull::Wait) {
        platform::ffmpeg::MovieRecorderFactory factory(settings);
        return factory.startRecording(path, nullptr, whenFull, told.events());
    }

    /// Records the frames and returns what came of it.
    platform::session::RecordingResult record(const std::vector<Bytes>& frames, TimecodeValue first = {}) {
        const auto recorder = start();
        for (const auto& frame : frames)
            recorder->append(sampleOf(frame, &frame == &frames.front() ? first : TimecodeValue()));
        recorder->finish();
        return recorder->result();
    }

    void useFaultyFiles() { settings.files = files; }

    OwnFolder folder;
    std::string path = folder.path("0001.mov");
    platform::ffmpeg::MovieRecorderSettings settings;
    std::shared_ptr<FaultyFiles> files = std::make_shared<FaultyFiles>();
    Told told;
};

} // namespace merro::test
