// The alert about a stream that is no DV, and how it keeps out of the way of a stop.
//
// The alert blocks the delivery thread until it is answered, perhaps by someone who works on the main thread;
// stopping the session waits for the delivery thread. The two never wait for each other: a session stop that
// comes while the alert is up is done by the delivery thread once the alert is answered, and no alert comes
// up while the session is being stopped.
#pragma once

#include "platform/Alerts.h"
#include "platform/Localization.h"

#include <functional>
#include <mutex>

namespace merro {

class StreamAlert {
public:
    StreamAlert(platform::Alerts& alerts, const platform::Localization& localization)
        : m_alerts(alerts), m_localization(localization) {}

    /// Tells the user that the stream cannot be captured and blocks until he has answered. Delivery thread.
    void runModal();

    /// Runs `stopSession` at once, or, while the alert is up, when it has been answered. Any thread.
    void stopSession(std::function<void()> stopSession);

    /// A session stop that waits for the alert's answer is not wanted any more. Any thread.
    void keepSession();

private:
    platform::Alerts& m_alerts;
    const platform::Localization& m_localization;
    std::mutex m_mutex;
    bool m_isUp = false;
    int m_sessionsStopping = 0;
    std::function<void()> m_putOff;
};

} // namespace merro
