// A capture framework without streams: the test plays the part of the delivery thread.
//
// Everything that is done to a session, an output or a device goes into one journal: "addInput deck",
// "removeInput deck", "start", "stop", "record PATH", "record nothing" (with the output's number: "1 record
// ..."), "compress". Any thread.
#pragma once

#include "platform/Cell.h"
#include "platform/QTCaptureSession.h"
#include "tests/support/Journal.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

class FakeDeviceInput : public platform::QTCaptureDeviceInput {
public:
    explicit FakeDeviceInput(std::shared_ptr<platform::QTCaptureDevice> device)
        : m_device(std::move(device)) {}
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDevice> device() const override { return m_device; }

private:
    std::shared_ptr<platform::QTCaptureDevice> m_device;
};

class FakeConnection : public platform::QTCaptureConnection {
public:
    explicit FakeConnection(platform::MediaType type) : m_type(type) {}
    [[nodiscard]] platform::MediaType mediaType() const override { return m_type; }

private:
    platform::MediaType m_type;
};

class FakeAudioPreviewOutput : public platform::QTCaptureAudioPreviewOutput {
public:
    [[nodiscard]] float volume() const override { return m_volume; }
    void setVolume(float volume) override { m_volume = volume; }

private:
    std::atomic<float> m_volume = 1;
};

/// An output with one connection for video and one for sound.
class FakeMovieFileOutput : public platform::QTCaptureMovieFileOutput {
public:
    FakeMovieFileOutput(int number, std::shared_ptr<Journal> journal)
        : m_number(number), m_journal(std::move(journal)) {}

    // --- What the test does ---

    /// Hands the delegate a sample, as the delivery thread does.
    void deliver(const platform::QTSampleBuffer& sampleBuffer) {
        const std::lock_guard inDelivery(m_delivery);
        const bool isOuter = !m_isShowingSample.exchange(true);
        if (m_delegate.didOutputSampleBuffer)
            m_delegate.didOutputSampleBuffer(*this, sampleBuffer, *m_connections[0]);
        if (!isOuter)
            return;
        m_isShowingSample = false;
        if (m_endsAfterSample.exchange(false))
            recordToOutputFileURL(std::nullopt);
    }

    /// Tells the delegate that the file at `path` cannot go on.
    void demandAnotherFile(const std::string& path) {
        const std::lock_guard inDelivery(m_delivery);
        if (m_delegate.mustChangeOutputFile)
            m_delegate.mustChangeOutputFile(*this, path, std::nullopt);
    }

    // --- What the test looks at ---

    [[nodiscard]] std::optional<std::string> recordingPath() const { return m_path.get(); }
    /// One for each call of setCompressionOptionsForConnection, with the medium of the connection.
    [[nodiscard]] std::vector<std::pair<platform::MediaType, platform::CompressionOptionsRef>>
    compressionOptions() const {
        return m_compression.get();
    }

    // --- QTCaptureMovieFileOutput ---

    void setDelegate(platform::QTCaptureFileOutputDelegate delegate) override {
        const std::lock_guard inDelivery(m_delivery);
        m_delegate = std::move(delegate);
    }

    void recordToOutputFileURL(const std::optional<std::string>& path) override {
        m_journal->add(std::to_string(m_number) + " record " + path.value_or("nothing"));
        m_path.set(path);
    }

    void endRecordingAfterSample() override {
        if (m_isShowingSample)
            m_endsAfterSample = true;
        else
            recordToOutputFileURL(std::nullopt);
    }

    [[nodiscard]] std::vector<std::shared_ptr<platform::QTCaptureConnection>> connections() const override {
        return m_connections;
    }

    void setCompressionOptionsForConnection(
        platform::CompressionOptionsRef options,
        const std::shared_ptr<platform::QTCaptureConnection>& connection) override {
        m_journal->add("compress");
        auto all = m_compression.get();
        all.emplace_back(connection->mediaType(), std::move(options));
        m_compression.set(std::move(all));
    }

private:
    int m_number;
    std::shared_ptr<Journal> m_journal;
    /// Held while the delegate is called, so that setDelegate waits for another thread's call and for none of
    /// its own.
    std::recursive_mutex m_delivery;
    platform::QTCaptureFileOutputDelegate m_delegate;
    std::vector<std::shared_ptr<platform::QTCaptureConnection>> m_connections{
        std::make_shared<FakeConnection>(platform::MediaType::Video),
        std::make_shared<FakeConnection>(platform::MediaType::Sound)};
    std::atomic<bool> m_isShowingSample = false;
    std::atomic<bool> m_endsAfterSample = false;
    platform::Cell<std::optional<std::string>> m_path;
    platform::Cell<std::vector<std::pair<platform::MediaType, platform::CompressionOptionsRef>>>
        m_compression;
};

class FakeSession : public platform::QTCaptureSession {
public:
    explicit FakeSession(std::shared_ptr<Journal> journal) : m_journal(std::move(journal)) {}

    /// What addInput answers from now on. Main thread.
    std::optional<platform::Error> addInputError;

    [[nodiscard]] std::vector<std::shared_ptr<platform::QTCaptureOutput>> outputs() const {
        return m_outputs.get();
    }

    [[nodiscard]] std::optional<platform::Error>
    addInput(const std::shared_ptr<platform::QTCaptureDeviceInput>& input) override {
        m_journal->add("addInput " + input->device()->localizedDisplayName());
        if (!addInputError)
            m_inputs.set({input});
        return addInputError;
    }
    void removeInput(const std::shared_ptr<platform::QTCaptureDeviceInput>& input) override {
        m_journal->add("removeInput " + input->device()->localizedDisplayName());
        m_inputs.set({});
    }
    [[nodiscard]] std::vector<std::shared_ptr<platform::QTCaptureDeviceInput>> inputs() const override {
        return m_inputs.get();
    }

    void addOutput(const std::shared_ptr<platform::QTCaptureOutput>& output) override {
        auto all = m_outputs.get();
        all.push_back(output);
        m_outputs.set(std::move(all));
    }
    void removeOutput(const std::shared_ptr<platform::QTCaptureOutput>& output) override {
        auto all = m_outputs.get();
        std::erase(all, output);
        m_outputs.set(std::move(all));
    }

    void startRunning() override {
        m_journal->add("start");
        m_isRunning = true;
    }
    void stopRunning() override {
        m_journal->add("stop");
        m_isRunning = false;
    }
    [[nodiscard]] bool isRunning() const override { return m_isRunning; }

private:
    std::shared_ptr<Journal> m_journal;
    std::atomic<bool> m_isRunning = false;
    platform::Cell<std::vector<std::shared_ptr<platform::QTCaptureDeviceInput>>> m_inputs;
    platform::Cell<std::vector<std::shared_ptr<platform::QTCaptureOutput>>> m_outputs;
};

class NamedCompressionOptions : public platform::QTCompressionOptions {
public:
    explicit NamedCompressionOptions(std::string name) : m_name(std::move(name)) {}
    [[nodiscard]] std::string localizedDisplayName() const override { return m_name; }

private:
    std::string m_name;
};

/// Offers the choices "H.264" and "Photo JPEG" for video. Keeps what it made.
class FakeCaptureFramework : public platform::QTCaptureFramework {
public:
    explicit FakeCaptureFramework(std::shared_ptr<Journal> journal) : m_journal(std::move(journal)) {}

    std::vector<std::shared_ptr<platform::QTCaptureDevice>> devices;
    std::vector<std::pair<std::string, platform::CompressionOptionsRef>> videoChoices{
        {"h264", std::make_shared<NamedCompressionOptions>("H.264")},
        {"jpeg", std::make_shared<NamedCompressionOptions>("Photo JPEG")}};
    std::shared_ptr<FakeSession> session;
    std::shared_ptr<FakeAudioPreviewOutput> audioPreviewOutput;
    /// In the order in which they were made.
    std::vector<std::shared_ptr<FakeMovieFileOutput>> movieFileOutputs;

    [[nodiscard]] std::vector<std::shared_ptr<platform::QTCaptureDevice>>
    inputDevicesWithMediaType(platform::MediaType type) override {
        return type == platform::MediaType::Muxed ? devices
                                                  : std::vector<std::shared_ptr<platform::QTCaptureDevice>>{};
    }
    [[nodiscard]] std::shared_ptr<platform::QTCaptureSession> makeSession() override {
        session = std::make_shared<FakeSession>(m_journal);
        return session;
    }
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDeviceInput>
    makeDeviceInput(const std::shared_ptr<platform::QTCaptureDevice>& device) override {
        return std::make_shared<FakeDeviceInput>(device);
    }
    [[nodiscard]] std::shared_ptr<platform::QTCaptureVideoPreviewOutput> makeVideoPreviewOutput() override {
        return std::make_shared<platform::QTCaptureVideoPreviewOutput>();
    }
    [[nodiscard]] std::shared_ptr<platform::QTCaptureAudioPreviewOutput> makeAudioPreviewOutput() override {
        audioPreviewOutput = std::make_shared<FakeAudioPreviewOutput>();
        return audioPreviewOutput;
    }
    [[nodiscard]] std::shared_ptr<platform::QTCaptureMovieFileOutput> makeMovieFileOutput() override {
        movieFileOutputs.push_back(
            std::make_shared<FakeMovieFileOutput>(static_cast<int>(movieFileOutputs.size()), m_journal));
        return movieFileOutputs.back();
    }
    [[nodiscard]] std::vector<std::string>
    compressionOptionsIdentifiersForMediaType(platform::MediaType type) override {
        std::vector<std::string> identifiers;
        if (type == platform::MediaType::Video) {
            for (const auto& [identifier, options] : videoChoices)
                identifiers.push_back(identifier);
        }
        return identifiers;
    }
    [[nodiscard]] platform::CompressionOptionsRef
    compressionOptionsWithIdentifier(const std::string& identifier) override {
        const auto found = std::ranges::find(videoChoices, identifier,
                                             &std::pair<std::string, platform::CompressionOptionsRef>::first);
        return found == videoChoices.end() ? nullptr : found->second;
    }

private:
    std::shared_ptr<Journal> m_journal;
};

} // namespace merro::test
