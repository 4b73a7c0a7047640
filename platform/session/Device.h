// A capture device that a CaptureSession can take frames from.
#pragma once

#include "platform/QTCaptureDevice.h"

#include <cstdint>

namespace merro::platform::session {

/// Takes the frames of a device, on the device's delivery thread. While `frame` has not returned, the frames that pass
/// under the head are lost, and the next call says how many they were.
class FrameReceiver {
public:
    virtual ~FrameReceiver() = default;
    virtual void frame(const QTSampleBuffer& sampleBuffer, std::int64_t framesLostBefore) = 0;
};

class Device : public QTCaptureDevice {
public:
    /// Sends frames to `receiver` from now on, or to nobody when null. Once this returns, the receiver set before is
    /// not being called, unless the caller is itself inside such a call. Any thread.
    virtual void setReceiver(FrameReceiver* receiver) = 0;
};

} // namespace merro::platform::session
