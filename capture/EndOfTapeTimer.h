// Stops the recording by itself when the tape has delivered no frame for a number of seconds.
//
// Every recorded frame asks for the timer to be started anew; it lives on the main thread only. A recording
// that never receives a frame is therefore never stopped by it.
#pragma once

#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace merro {

class EndOfTapeTimer {
public:
    /// `stopCapture` is called on the main thread when the timer fires. Made and destroyed on the main
    /// thread.
    EndOfTapeTimer(platform::RunLoop& runLoop, const platform::UserDefaults& defaults,
                   std::function<void()> stopCapture);
    ~EndOfTapeTimer();
    EndOfTapeTimer(const EndOfTapeTimer&) = delete;
    EndOfTapeTimer& operator=(const EndOfTapeTimer&) = delete;

    /// Has the main thread run launchStopCaptureTimer, without waiting for it. Forgotten when cancel is
    /// called before the main thread gets to it. Any thread.
    void requestLaunch();

    /// Starts the timer anew, at "detectEndTapeSecond" seconds; it also fires while an alert is up or a
    /// control is being dragged. With 0 seconds it fires at the next turn of the run loop. Main thread.
    void launchStopCaptureTimer();

    /// From here on nothing fires that was started or asked for before. Any thread.
    void cancel();

private:
    struct Pending;
    platform::RunLoop& m_runLoop;
    std::shared_ptr<Pending> m_pending;
};

} // namespace merro
