#include "capture/StreamAlert.h"

#include <utility>

namespace merro {

void StreamAlert::runModal() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_sessionsStopping > 0)
            return;
        m_isUp = true;
    }
    (void)m_alerts.runModal(
        {m_localization.text("Cannot capture this stream."),
         m_localization.text("The input video stream is not a DV stream. Please ensure that your connected "
                             "device is playing back its content in DV format and try again.\nCapture will "
                             "now stop.")});
    std::function<void()> putOff;
    {
        const std::lock_guard lock(m_mutex);
        m_isUp = false;
        putOff = std::exchange(m_putOff, nullptr);
    }
    if (putOff)
        putOff();
}

void StreamAlert::stopSession(std::function<void()> stopSession) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_isUp) {
            m_putOff = std::move(stopSession);
            return;
        }
        ++m_sessionsStopping;
    }
    stopSession();
    const std::lock_guard lock(m_mutex);
    --m_sessionsStopping;
}

void StreamAlert::keepSession() {
    const std::lock_guard lock(m_mutex);
    m_putOff = nullptr;
}

} // namespace merro
