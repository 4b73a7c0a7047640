#include "platform/session/CaptureSession.h"

#include "platform/session/CaptureContext.h"

#include <algorithm>
#include <utility>

namespace merro::platform::session {

CaptureSession::CaptureSession(std::shared_ptr<CaptureContext> context)
    : m_context(std::move(context)), m_lock(m_context->threads.makeConditionLock(0)) {}

CaptureSession::~CaptureSession() {
    stopRunning();
}

std::optional<Error> CaptureSession::addInput(const std::shared_ptr<QTCaptureDeviceInput>& input) {
    auto deviceInput = std::dynamic_pointer_cast<CaptureDeviceInput>(input);
    if (!deviceInput)
        return Error{"This is no input of a device", {}};
    const std::string name = deviceInput->sessionDevice()->localizedDisplayName();
    if (!deviceInput->sessionDevice()->isOpen())
        return Error{"\"" + name + "\" cannot be used because it is not open", "open the device first"};
    m_lock->lock();
    const bool isFree = m_input == nullptr;
    if (isFree) {
        m_input = std::move(deviceInput);
        if (m_isRunning)
            m_input->sessionDevice()->setReceiver(this);
    }
    m_lock->unlock();
    if (!isFree)
        return Error{"\"" + name + "\" cannot be used because the session has an input already",
                     "remove the other input first"};
    return std::nullopt;
}

void CaptureSession::removeInput(const std::shared_ptr<QTCaptureDeviceInput>& input) {
    m_lock->lock();
    if (m_input == nullptr || m_input != input) {
        m_lock->unlock();
        return;
    }
    const std::shared_ptr<Device> device = m_input->sessionDevice();
    m_input.reset();
    const bool wasRunning = m_isRunning;
    if (wasRunning)
        device->setReceiver(nullptr);
    m_lock->unlock();
    if (wasRunning)
        waitForDelivery(device);
}

std::vector<std::shared_ptr<QTCaptureDeviceInput>> CaptureSession::inputs() const {
    m_lock->lock();
    std::vector<std::shared_ptr<QTCaptureDeviceInput>> inputs;
    if (m_input)
        inputs.push_back(m_input);
    m_lock->unlock();
    return inputs;
}

void CaptureSession::addOutput(const std::shared_ptr<QTCaptureOutput>& output) {
    changeSinks(output, true);
}

void CaptureSession::removeOutput(const std::shared_ptr<QTCaptureOutput>& output) {
    changeSinks(output, false);
    m_lock->lock();
    const std::shared_ptr<Device> device = m_input ? m_input->sessionDevice() : nullptr;
    m_lock->unlock();
    if (device)
        device->waitForReceiver();
}

void CaptureSession::startRunning() {
    m_lock->lock();
    m_isRunning = true;
    if (m_input)
        m_input->sessionDevice()->setReceiver(this);
    m_lock->unlock();
}

void CaptureSession::stopRunning() {
    m_lock->lock();
    const bool wasRunning = std::exchange(m_isRunning, false);
    const std::shared_ptr<Device> device = m_input ? m_input->sessionDevice() : nullptr;
    if (device && wasRunning)
        device->setReceiver(nullptr);
    m_lock->unlock();
    if (device)
        waitForDelivery(device);
}

bool CaptureSession::isRunning() const {
    m_lock->lock();
    const bool isRunning = m_isRunning;
    m_lock->unlock();
    return isRunning;
}

void CaptureSession::frame(const QTSampleBuffer& sampleBuffer, std::int64_t framesLostBefore) {
    const std::shared_ptr<CaptureSession> staysAlive = weak_from_this().lock();
    if (!staysAlive)
        return;
    if (framesLostBefore > 0) {
        m_framesLost += framesLostBefore;
        m_context->addFramesLost(framesLostBefore);
    }
    m_deliveryThread = std::this_thread::get_id();
    for (const auto& sink : *sinks()) {
        sink->receive(sampleBuffer);
        if (m_hasStoppedInside)
            break;
    }
    if (m_hasStoppedInside.exchange(false))
        tellThatDeliveryStopped();
    m_deliveryThread = std::thread::id();
}

void CaptureSession::waitForDelivery(const std::shared_ptr<Device>& device) {
    if (m_deliveryThread.load() == std::this_thread::get_id()) {
        m_hasStoppedInside = true;
        return;
    }
    device->waitForReceiver();
    tellThatDeliveryStopped();
}

void CaptureSession::tellThatDeliveryStopped() {
    for (const auto& sink : *sinks())
        sink->deliveryStopped();
}

std::shared_ptr<const CaptureSession::Sinks> CaptureSession::sinks() const {
    const std::lock_guard lock(m_sinksMutex);
    return m_sinks;
}

void CaptureSession::changeSinks(const std::shared_ptr<QTCaptureOutput>& output, bool add) {
    const auto sink = std::dynamic_pointer_cast<SampleSink>(output);
    if (!sink)
        return;
    const std::lock_guard lock(m_sinksMutex);
    auto changed = std::make_shared<Sinks>(*m_sinks);
    if (!add)
        std::erase(*changed, sink);
    else if (std::ranges::find(*changed, sink) == changed->end())
        changed->push_back(sink);
    m_sinks = std::move(changed);
}

} // namespace merro::platform::session
