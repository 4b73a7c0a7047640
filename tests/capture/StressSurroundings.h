// A tape that plays without end on a thread of its own, and a platform of real threads that keeps account of
// every message, file and movie.
#pragma once

#include "capture/BXMCController.h"
#include "capture/CaptureDefaults.h"
#include "platform/Alerts.h"
#include "platform/deck/DVFrameBuilder.h"
#include "platform/Files.h"
#include "platform/native/Clock.h"
#include "platform/native/HeadlessInterface.h"
#include "platform/native/MemoryUserDefaults.h"
#include "platform/native/RunLoop.h"
#include "platform/native/Threads.h"
#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"
#include "tests/support/FakeCompressionComponents.h"
#include "tests/support/ManualTime.h"
#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingLog.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace merro::test {

/// Frame numbers and timecodes are the same thing here: frame 0 has 00:00:00:00, at 25 frames a second.
inline TimecodeValue timecodeOfFrame(int number) {
    SMPTETime time;
    time.mType = kSMPTETimeType25;
    time.mFrames = static_cast<std::int16_t>(number % 25);
    time.mSeconds = static_cast<std::int16_t>(number / 25 % 60);
    time.mMinutes = static_cast<std::int16_t>(number / 1500 % 60);
    time.mHours = static_cast<std::int16_t>(number / 90000);
    return TimecodeValue::valueWithSMPTETime(time);
}

inline int frameOfTimecode(const TimecodeValue& timecode) {
    const SMPTETime time = timecode.SMPTETimeValue();
    return ((time.mHours * 60 + time.mMinutes) * 60 + time.mSeconds) * 25 + time.mFrames;
}

/// Frames that say which they are.
class NumberedFrames {
public:
    NumberedFrames() {
        for (int take = 0; take < 2; ++take) {
            platform::deck::DVFrameBuilder builder(platform::deck::DVSystem::System625_50);
            builder.setRecordingDateTime({2005, 3, 17, 10 + take, 0, 0});
            m_takes.push_back(builder.bytes());
        }
    }

    /// A frame that carries its number in its last bytes, which are picture.
    [[nodiscard]] platform::FrameBytes frame(int number, int take) const {
        auto bytes = m_takes.at(static_cast<std::size_t>(take % 2));
        for (std::size_t i = 0; i < 4; ++i)
            bytes[bytes.size() - 1 - i] = static_cast<std::uint8_t>(number >> (8 * i));
        return platform::FrameBytes::taking(std::move(bytes));
    }

    [[nodiscard]] static int number(const platform::FrameBytes& frame) {
        const auto bytes = frame.bytes();
        int number = 0;
        for (std::size_t i = 4; i > 0; --i)
            number = number << 8 | bytes[bytes.size() - i];
        return number;
    }

private:
    std::vector<std::vector<std::uint8_t>> m_takes;
};

/// Plays from the moment it is made; its transport does at once what it is told and has no effect on the
/// frames.
class EndlessDeck : public platform::session::Device {
public:
    /// A new take begins every `framesInATake` frames; every `framesBetweenStrangers` one is no DV (0:
    /// never).
    EndlessDeck(int framesInATake, int framesBetweenStrangers)
        : m_framesInATake(framesInATake), m_framesBetweenStrangers(framesBetweenStrangers),
          m_thread([this] { play(); }) {}
    ~EndlessDeck() override {
        m_isStopping = true;
        m_thread.join();
    }
    EndlessDeck(const EndlessDeck&) = delete;
    EndlessDeck& operator=(const EndlessDeck&) = delete;

    [[nodiscard]] int framesPlayed() const { return m_framesPlayed; }

    [[nodiscard]] std::string uniqueID() const override { return "endless"; }
    [[nodiscard]] std::string localizedDisplayName() const override { return "endless"; }
    [[nodiscard]] std::vector<platform::FormatDescription> formatDescriptions() const override {
        return {{platform::MediaType::Muxed, platform::fourCharCode("dvc ")}};
    }
    [[nodiscard]] std::optional<platform::Error> open() override {
        m_isOpen = true;
        return std::nullopt;
    }
    void close() override { m_isOpen = false; }
    [[nodiscard]] bool isOpen() const override { return m_isOpen; }

    [[nodiscard]] std::optional<platform::Value> attributeForKey(std::string_view) const override {
        const std::lock_guard lock(m_mutex);
        return m_transport;
    }
    [[nodiscard]] bool attributeIsReadOnly(std::string_view) const override { return false; }
    void setAttributeForKey(const platform::Value& value, std::string_view) override {
        const std::lock_guard lock(m_mutex);
        m_transport = value;
    }

    void setReceiver(platform::session::FrameReceiver* receiver) override {
        const std::lock_guard lock(m_mutex);
        m_receiver = receiver;
    }
    void waitForReceiver() override {
        if (std::this_thread::get_id() == m_thread.get_id())
            return;
        std::unique_lock lock(m_mutex);
        m_returned.wait(lock, [this] { return !m_isInside; });
    }

private:
    void play() {
        for (int number = 0; !m_isStopping; ++number) {
            platform::session::FrameReceiver* receiver = nullptr;
            {
                const std::lock_guard lock(m_mutex);
                receiver = m_receiver;
                m_isInside = receiver != nullptr;
            }
            if (receiver != nullptr) {
                receiver->frame(makeFrame(number), 0);
                const std::lock_guard lock(m_mutex);
                m_isInside = false;
                m_returned.notify_all();
            }
            ++m_framesPlayed;
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
    }

    [[nodiscard]] platform::QTSampleBuffer makeFrame(int number) const {
        if (m_framesBetweenStrangers > 0 && number % m_framesBetweenStrangers == m_framesBetweenStrangers - 1)
            return {
                platform::MediaType::Video, platform::FrameBytes::taking(std::vector<std::uint8_t>(100)), {}};
        return {platform::MediaType::Video, m_frames.frame(number, number / m_framesInATake),
                timecodeOfFrame(number)};
    }

    const NumberedFrames m_frames;
    const int m_framesInATake;
    const int m_framesBetweenStrangers;
    std::atomic<bool> m_isOpen = false;
    std::atomic<bool> m_isStopping = false;
    std::atomic<int> m_framesPlayed = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_returned;
    platform::session::FrameReceiver* m_receiver = nullptr;
    bool m_isInside = false;
    platform::Value m_transport =
        platform::Dictionary{{std::string(platform::QTCaptureDeviceAVCTransportControlsSpeedKey), 10000},
                             {std::string(platform::QTCaptureDeviceAVCTransportControlsPlaybackModeKey), 1}};
    std::thread m_thread;
};

/// The numbers of the frames that went into each file, and how often it was begun and ended. Any thread.
class Accounts {
public:
    struct Account {
        std::vector<int> frames;
        int begun = 0;
        int ended = 0;
    };

    void begin(const std::string& path) {
        const std::lock_guard lock(m_mutex);
        ++m_accounts[path].begun;
    }
    void add(const std::string& path, const platform::FrameBytes& frame) {
        const std::lock_guard lock(m_mutex);
        m_accounts[path].frames.push_back(NumberedFrames::number(frame));
    }
    void end(const std::string& path) {
        const std::lock_guard lock(m_mutex);
        ++m_accounts[path].ended;
    }
    [[nodiscard]] std::map<std::string, Account> all() const {
        const std::lock_guard lock(m_mutex);
        return m_accounts;
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::string, Account> m_accounts;
};

class AccountedFiles : public platform::Files {
public:
    explicit AccountedFiles(std::shared_ptr<Accounts> accounts) : m_accounts(std::move(accounts)) {}
    [[nodiscard]] std::unique_ptr<platform::FileHandle> openForWriting(const std::string& path) override {
        m_accounts->begin(path);
        return std::make_unique<Handle>(m_accounts, path);
    }

private:
    struct Handle : platform::FileHandle {
        Handle(std::shared_ptr<Accounts> given, std::string name)
            : accounts(std::move(given)), path(std::move(name)) {}
        void append(const platform::FrameBytes& bytes) override { accounts->add(path, bytes); }
        void close() override { accounts->end(path); }
        std::shared_ptr<Accounts> accounts;
        std::string path;
    };
    std::shared_ptr<Accounts> m_accounts;
};

class AccountedRecorders : public platform::session::MovieRecorderFactory {
public:
    /// A movie breaks off by itself after `framesInAMovie` frames (0: never).
    AccountedRecorders(std::shared_ptr<Accounts> accounts, int framesInAMovie)
        : m_accounts(std::move(accounts)), m_framesInAMovie(framesInAMovie) {}

    [[nodiscard]] std::shared_ptr<platform::session::MovieRecorder>
    startRecording(const std::string& path, const platform::CompressionOptionsRef&,
                   platform::session::WhenFull, platform::session::RecorderEvents) override {
        m_accounts->begin(path);
        return std::make_shared<Recorder>(m_accounts, path, m_framesInAMovie);
    }

private:
    struct Recorder : platform::session::MovieRecorder {
        Recorder(std::shared_ptr<Accounts> given, std::string name, int most)
            : accounts(std::move(given)), path(std::move(name)), framesAtMost(most) {}
        void append(const platform::QTSampleBuffer& sample) override {
            if (hasEnded)
                return;
            accounts->add(path, sample.bytesForAllSamples);
            if (++frames == framesAtMost)
                finish();
        }
        void finish() override {
            if (!hasEnded.exchange(true))
                accounts->end(path);
        }
        [[nodiscard]] bool isFinished() const override { return hasEnded; }
        [[nodiscard]] platform::session::RecordingResult result() const override {
            return {path, frames, 0, std::nullopt, true};
        }
        std::shared_ptr<Accounts> accounts;
        std::string path;
        int framesAtMost;
        std::atomic<std::int64_t> frames = 0;
        std::atomic<bool> hasEnded = false;
    };
    std::shared_ptr<Accounts> m_accounts;
    int m_framesInAMovie;
};

/// Alerts that stay up until the main thread answers them. Any thread.
class AnsweredAlerts : public platform::Alerts {
public:
    int runModal(const platform::Alert&) override {
        std::unique_lock lock(m_mutex);
        ++m_shown;
        ++m_up;
        m_answered.wait(lock, [this] { return m_answersAll || m_answers > 0; });
        m_answers = std::max(0, m_answers - 1);
        --m_up;
        return platform::kAlertDefaultReturn;
    }
    [[nodiscard]] bool isUp() const {
        const std::lock_guard lock(m_mutex);
        return m_up > 0;
    }
    [[nodiscard]] int shown() const {
        const std::lock_guard lock(m_mutex);
        return m_shown;
    }
    void answer() {
        const std::lock_guard lock(m_mutex);
        m_answers = m_up;
        m_answered.notify_all();
    }
    void answerAllFromNowOn() {
        const std::lock_guard lock(m_mutex);
        m_answersAll = true;
        m_answered.notify_all();
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_answered;
    int m_shown = 0;
    int m_up = 0;
    int m_answers = 0;
    bool m_answersAll = false;
};

} // namespace merro::test
