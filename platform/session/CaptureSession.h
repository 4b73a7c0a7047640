// One input, outputs in order, and the frames that go from the one to the others on the device's delivery
// thread.
//
// Every operation from any thread. Held by std::shared_ptr (CaptureFramework::makeSession).
#pragma once

#include "platform/QTCaptureSession.h"
#include "platform/session/CaptureDeviceInput.h"
#include "platform/session/Device.h"
#include "platform/session/SampleSink.h"
#include "platform/Threads.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace merro::platform::session {

struct CaptureContext;

class CaptureSession final : public QTCaptureSession,
                             public std::enable_shared_from_this<CaptureSession>,
                             private FrameReceiver {
public:
    explicit CaptureSession(std::shared_ptr<CaptureContext> context);
    ~CaptureSession() override;
    CaptureSession(const CaptureSession&) = delete;
    CaptureSession& operator=(const CaptureSession&) = delete;

    /// Frames that were lost on their way from the device so far. Only grows.
    [[nodiscard]] std::int64_t framesLost() const { return m_framesLost; }

    [[nodiscard]] std::optional<Error> addInput(const std::shared_ptr<QTCaptureDeviceInput>& input) override;
    void removeInput(const std::shared_ptr<QTCaptureDeviceInput>& input) override;
    [[nodiscard]] std::vector<std::shared_ptr<QTCaptureDeviceInput>> inputs() const override;

    /// An output that is there already, or that no capture framework made, changes nothing.
    void addOutput(const std::shared_ptr<QTCaptureOutput>& output) override;
    /// Once this returns, the output receives nothing, unless the caller is itself inside a callback.
    void removeOutput(const std::shared_ptr<QTCaptureOutput>& output) override;

    void startRunning() override;
    void stopRunning() override;
    [[nodiscard]] bool isRunning() const override;

private:
    using Sinks = std::vector<std::shared_ptr<SampleSink>>;

    void frame(const QTSampleBuffer& sampleBuffer, std::int64_t framesLostBefore) override;
    [[nodiscard]] std::shared_ptr<const Sinks> sinks() const;
    void changeSinks(const std::shared_ptr<QTCaptureOutput>& output, bool add);
    void waitForDelivery(const std::shared_ptr<Device>& device);
    void tellThatDeliveryStopped();

    const std::shared_ptr<CaptureContext> m_context;
    std::atomic<std::int64_t> m_framesLost{0};

    /// Guards the input and whether the session runs, also while the device is told of its receiver, so that
    /// device and session never disagree. Never held while anything is called that may call back.
    const std::unique_ptr<ConditionLock> m_lock;
    std::shared_ptr<CaptureDeviceInput> m_input;
    bool m_isRunning = false;

    mutable std::mutex m_sinksMutex;
    std::shared_ptr<const Sinks> m_sinks = std::make_shared<const Sinks>();

    std::atomic<std::thread::id> m_deliveryThread{};
    /// Delivery was stopped from within a callback: the sample at hand goes no further, and the outputs hear
    /// of the stop when the callback has returned.
    std::atomic<bool> m_hasStoppedInside{false};
};

} // namespace merro::platform::session
