// Alerts that are answered at once and kept.
#pragma once

#include "platform/Alerts.h"

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace merro::test {

class RecordingAlerts : public platform::Alerts {
public:
    int runModal(const platform::Alert& alert) override {
        {
            const std::lock_guard lock(m_mutex);
            m_shown.push_back(alert);
        }
        if (whileUp)
            whileUp(alert);
        return platform::kAlertDefaultReturn;
    }

    [[nodiscard]] std::vector<platform::Alert> shown() const {
        const std::lock_guard lock(m_mutex);
        return m_shown;
    }

    /// Called on the thread that shows the alert, while it is up. Set before the first alert.
    std::function<void(const platform::Alert&)> whileUp;

private:
    mutable std::mutex m_mutex;
    std::vector<platform::Alert> m_shown;
};

} // namespace merro::test
