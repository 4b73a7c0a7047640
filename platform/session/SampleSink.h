// What a CaptureSession hands its samples to.
#pragma once

#include "platform/QTSampleBuffer.h"

namespace merro::platform::session {

class SampleSink {
public:
    virtual ~SampleSink() = default;

    /// Delivery thread.
    virtual void receive(const QTSampleBuffer& sampleBuffer) = 0;

    /// No more samples for now. On the thread that stopped the delivery, after the last sample has returned.
    virtual void deliveryStopped() {}
};

} // namespace merro::platform::session
