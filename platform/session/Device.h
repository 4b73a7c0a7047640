// A capture device that a CaptureSession can take frames from.
#pragma once

#include "platform/QTCaptureDevice.h"

#include <cstdint>

namespace merro::platform::session {

/// Takes the frames of a device, on the device's delivery thread. While `frame` has not returned, the frames
/// that pass under the head are lost, and the next call says how many they were.
class FrameReceiver {
public:
    virtual ~FrameReceiver() = default;
    virtual void frame(const QTSampleBuffer& sampleBuffer, std::int64_t framesLostBefore) = 0;
};

class Device : public QTCaptureDevice {
public:
    /// Whether the device has been opened and not closed or lost since. Any thread.
    [[nodiscard]] virtual bool isOpen() const = 0;

    /// Sends frames to `receiver` from now on, or to nobody when null. Does not wait: a call to the receiver
    /// set before may still be under way. May be called with a lock held. Any thread.
    virtual void setReceiver(FrameReceiver* receiver) = 0;

    /// Waits until no call to a receiver is under way that was set before the last setReceiver; at once when
    /// the caller is itself inside such a call. Any thread, no lock held.
    virtual void waitForReceiver() = 0;
};

} // namespace merro::platform::session
