// What a controller is surrounded with under load: a tape that never ends, movies written by threads of their
// own, files and movies that are counted, alerts that somebody else answers.
#pragma once

#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/deck/DVFrameBuilder.h"
#include "platform/deck/Tape.h"
#include "platform/Files.h"
#include "platform/session/MovieRecorder.h"
#include "tests/scenarios/TapeScript.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace merro::test {

/// Takes of 12 frames whose dates go back from each to the next; frame N has timecode number N. Made when
/// read.
class EndlessTape final : public platform::deck::Tape {
public:
    /// Every so often a buffer that is no DV; 0: never.
    explicit EndlessTape(int framesBetweenForeign) : m_framesBetweenForeign(framesBetweenForeign) {}

    [[nodiscard]] std::optional<platform::deck::TapeFrame> frameAt(std::int64_t index) override {
        if (index < 0 || index >= frameCount())
            return std::nullopt;
        if (m_framesBetweenForeign > 0 && index % m_framesBetweenForeign == m_framesBetweenForeign - 1)
            return platform::deck::TapeFrame{
                platform::FrameBytes::taking(std::vector<std::uint8_t>(143'999, 0x5A)), -1};
        const auto number = static_cast<int>(index);
        auto& frame = m_takes[static_cast<std::size_t>(number / 12 % 2)];
        frame.setTimecode(timecodeOf(number));
        std::vector<std::uint8_t> bytes = frame.bytes();
        for (std::size_t i = 0; i < 4; ++i)
            bytes[bytes.size() - 4 + i] =
                static_cast<std::uint8_t>(static_cast<unsigned>(number) >> (8 * (3 - i)));
        return platform::deck::TapeFrame{platform::FrameBytes::taking(std::move(bytes)), -1};
    }
    [[nodiscard]] std::int64_t frameCount() const override { return 2'000'000; }
    [[nodiscard]] bool isFrameCountExact() const override { return true; }

    [[nodiscard]] static int numberOf(const TimecodeValue& timecode) {
        const SMPTETime time = timecode.SMPTETimeValue();
        return ((time.mHours * 60 + time.mMinutes) * 60 + time.mSeconds) * 25 + time.mFrames;
    }

private:
    static SMPTETime timecodeOf(int number) {
        SMPTETime time;
        time.mFrames = static_cast<std::int16_t>(number % 25);
        time.mSeconds = static_cast<std::int16_t>(number / 25 % 60);
        time.mMinutes = static_cast<std::int16_t>(number / 1500 % 60);
        time.mHours = static_cast<std::int16_t>(number / 90'000);
        return time;
    }
    static DVFrameBuilder takeAt(int hour) {
        DVFrameBuilder builder(DVSystem::System625_50);
        builder.setRecordingDateTime({2005, 3, 17, hour, 0, 0});
        return builder;
    }

    const int m_framesBetweenForeign;
    std::array<DVFrameBuilder, 2> m_takes{takeAt(14), takeAt(13)};
};

/// What was begun, written and ended under each name. Any thread.
class Accounts {
public:
    struct Account {
        std::vector<int> frames;
        int begun = 0;
        int ended = 0;
    };
    void change(const std::string& name, const std::function<void(Account&)>& change) {
        const std::lock_guard lock(m_mutex);
        change(m_accounts[name]);
    }
    [[nodiscard]] std::map<std::string, Account> all() const {
        const std::lock_guard lock(m_mutex);
        return m_accounts;
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::string, Account> m_accounts;
};

class AccountedFiles final : public platform::Files {
public:
    Accounts accounts;

    [[nodiscard]] std::unique_ptr<platform::FileHandle> openForWriting(const std::string& path) override {
        return std::make_unique<Handle>(accounts, path);
    }

private:
    class Handle final : public platform::FileHandle {
    public:
        Handle(Accounts& accounts, std::string path) : m_accounts(accounts), m_path(std::move(path)) {
            m_accounts.change(m_path, [](Accounts::Account& account) { ++account.begun; });
        }
        ~Handle() override { finish(); }
        Handle(const Handle&) = delete;
        Handle& operator=(const Handle&) = delete;
        void append(const platform::FrameBytes& frame) override {
            const int number = TapeScript::numberOf(frame.bytes());
            m_accounts.change(m_path, [&](Accounts::Account& account) { account.frames.push_back(number); });
        }
        void close() override { finish(); }

    private:
        void finish() {
            if (std::exchange(m_isOpen, false))
                m_accounts.change(m_path, [](Accounts::Account& account) { ++account.ended; });
        }
        Accounts& m_accounts;
        const std::string m_path;
        bool m_isOpen = true;
    };
};

/// Movies written by a thread each. finish() does not wait, as with a camcorder; the destructor does.
class ThreadedRecorders final : public platform::session::MovieRecorderFactory {
public:
    Accounts accounts;

    [[nodiscard]] std::shared_ptr<platform::session::MovieRecorder>
    startRecording(const std::string& path, const platform::CompressionOptionsRef& /*options*/,
                   platform::session::WhenFull /*whenFull*/,
                   platform::session::RecorderEvents events) override {
        return std::make_shared<Recorder>(accounts, path, std::move(events));
    }

private:
    class Recorder final : public platform::session::MovieRecorder {
    public:
        Recorder(Accounts& accounts, std::string path, platform::session::RecorderEvents events)
            : m_accounts(accounts), m_path(std::move(path)), m_events(std::move(events)) {
            m_accounts.change(m_path, [](Accounts::Account& account) { ++account.begun; });
            m_writer = std::thread([this] { write(); });
        }
        ~Recorder() override {
            Recorder::finish();
            m_writer.join();
        }
        Recorder(const Recorder&) = delete;
        Recorder& operator=(const Recorder&) = delete;

        void append(const platform::QTSampleBuffer& sample) override {
            const std::lock_guard lock(m_mutex);
            m_queue.push_back(sample.bytesForAllSamples);
            m_changed.notify_one();
        }
        void finish() override {
            const std::lock_guard lock(m_mutex);
            m_isFinishing = true;
            m_changed.notify_one();
        }
        [[nodiscard]] bool isFinished() const override { return m_isFinished; }
        [[nodiscard]] platform::session::RecordingResult result() const override {
            platform::session::RecordingResult result;
            result.path = m_path;
            result.isPlayable = true;
            return result;
        }

    private:
        void write() {
            std::unique_lock lock(m_mutex);
            for (;;) {
                m_changed.wait(lock, [this] { return !m_queue.empty() || m_isFinishing; });
                if (m_queue.empty())
                    break;
                const platform::FrameBytes frame = std::move(m_queue.front());
                m_queue.pop_front();
                lock.unlock();
                const int number = TapeScript::numberOf(frame.bytes());
                m_accounts.change(m_path,
                                  [&](Accounts::Account& account) { account.frames.push_back(number); });
                lock.lock();
            }
            lock.unlock();
            m_accounts.change(m_path, [](Accounts::Account& account) { ++account.ended; });
            m_isFinished = true;
            if (m_events.finished)
                m_events.finished(result());
        }

        Accounts& m_accounts;
        const std::string m_path;
        const platform::session::RecorderEvents m_events;
        std::mutex m_mutex;
        std::condition_variable m_changed;
        std::deque<platform::FrameBytes> m_queue;
        bool m_isFinishing = false;
        std::atomic<bool> m_isFinished = false;
        std::thread m_writer;
    };
};

/// Alerts that are answered after two milliseconds, by nobody on the main thread.
class BlockingAlerts final : public platform::Alerts {
public:
    int runModal(const platform::Alert& /*alert*/) override {
        ++m_shown;
        if (!m_answersAtOnce)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return platform::kAlertDefaultReturn;
    }
    void answerAtOnce() { m_answersAtOnce = true; }
    [[nodiscard]] int shown() const { return m_shown; }

private:
    std::atomic<bool> m_answersAtOnce = false;
    std::atomic<int> m_shown = 0;
};

/// The machine's time, but sleeping takes a thousandth of it.
class ShortNaps final : public platform::Clock {
public:
    explicit ShortNaps(platform::Clock& clock) : m_clock(clock) {}
    [[nodiscard]] platform::Moment now() const override { return m_clock.now(); }
    void sleepFor(platform::Duration duration) override { m_clock.sleepFor(duration / 1000); }

private:
    platform::Clock& m_clock;
};

} // namespace merro::test
