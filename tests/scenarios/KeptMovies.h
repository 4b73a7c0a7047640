// Movie recorders that keep the frames of each movie in memory.
#pragma once

#include "platform/session/MovieRecorder.h"
#include "tests/scenarios/TapeScript.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

/// Any thread.
class KeptMovies : public platform::session::MovieRecorderFactory {
public:
    struct Movie {
        std::vector<int> frames; ///< their numbers on the tape
        int timesStarted = 0;
        int timesFinished = 0;
        int framesLost = 0; ///< handed over after the movie had broken
    };

    /// The movie at `path` breaks (a full disk) once it has `count` frames.
    void breakAfter(const std::string& path, int count) { m_state->breaksAfter[path] = count; }

    [[nodiscard]] Movie movie(const std::string& path) const {
        const std::lock_guard lock(m_state->mutex);
        const auto found = m_state->movies.find(path);
        return found == m_state->movies.end() ? Movie{} : found->second;
    }
    [[nodiscard]] std::map<std::string, Movie> all() const {
        const std::lock_guard lock(m_state->mutex);
        return m_state->movies;
    }

    [[nodiscard]] std::shared_ptr<platform::session::MovieRecorder>
    startRecording(const std::string& path, const platform::CompressionOptionsRef& /*options*/,
                   platform::session::WhenFull /*whenFull*/,
                   platform::session::RecorderEvents /*events*/) override {
        const std::lock_guard lock(m_state->mutex);
        ++m_state->movies[path].timesStarted;
        const auto breaks = m_state->breaksAfter.find(path);
        return std::make_shared<Recorder>(m_state, path,
                                          breaks == m_state->breaksAfter.end() ? -1 : breaks->second);
    }

private:
    struct State {
        std::mutex mutex;
        std::map<std::string, Movie> movies;
        std::map<std::string, int> breaksAfter;
    };

    class Recorder : public platform::session::MovieRecorder {
    public:
        Recorder(std::shared_ptr<State> state, std::string path, int breaksAfter)
            : m_state(std::move(state)), m_path(std::move(path)), m_breaksAfter(breaksAfter) {}

        void append(const platform::QTSampleBuffer& sample) override {
            const std::lock_guard lock(m_state->mutex);
            Movie& movie = m_state->movies[m_path];
            if (m_hasEnded)
                ++movie.framesLost;
            else
                movie.frames.push_back(TapeScript::numberOf(sample.bytesForAllSamples.bytes()));
            if (static_cast<int>(movie.frames.size()) == m_breaksAfter)
                m_hasEnded = true;
        }
        void finish() override {
            const std::lock_guard lock(m_state->mutex);
            if (!std::exchange(m_isFinished, true))
                ++m_state->movies[m_path].timesFinished;
            m_hasEnded = true;
        }
        [[nodiscard]] bool isFinished() const override {
            const std::lock_guard lock(m_state->mutex);
            return m_hasEnded;
        }
        [[nodiscard]] platform::session::RecordingResult result() const override {
            const std::lock_guard lock(m_state->mutex);
            platform::session::RecordingResult result;
            result.path = m_path;
            result.framesWritten = static_cast<std::int64_t>(m_state->movies[m_path].frames.size());
            result.isPlayable = true;
            if (m_breaksAfter >= 0)
                result.error = platform::Error{"no space", "make room"};
            return result;
        }

    private:
        const std::shared_ptr<State> m_state;
        const std::string m_path;
        const int m_breaksAfter;
        bool m_hasEnded = false;
        bool m_isFinished = false;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace merro::test
