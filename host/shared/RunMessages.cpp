#include "host/shared/RunMessages.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace merro::host {

using nlohmann::ordered_json;

void RunMessages::warn(const std::string& line) {
    tell(line, "warning");
}

void RunMessages::fail(const std::string& line) {
    m_hasFailed = true;
    tell(line, "problem");
}

void RunMessages::fail(const platform::Error& error) {
    m_hasFailed = true;
    bool isNew = true;
    if (error.systemCode != 0) {
        const std::lock_guard lock(m_mutex);
        isNew = m_toldCauses.insert(error.systemCode).second;
    }
    if (isNew)
        tell(error.text(), "problem");
    else
        event({{"event", "problem"}, {"text", error.text()}});
}

void RunMessages::event(const ordered_json& event) {
    if (m_listener.event)
        m_listener.event(event);
}

void RunMessages::log(const std::string& line) {
    if (m_listener.log)
        m_listener.log(line);
    event({{"event", "log"}, {"text", line}});
}

void RunMessages::tell(const std::string& line, const char* kind) {
    if (m_listener.line)
        m_listener.line(line);
    event({{"event", kind}, {"text", line}});
}

int LineAlerts::runModal(const platform::Alert& alert) {
    std::string line = alert.messageText;
    if (!alert.informativeText.empty())
        line += " " + alert.informativeText;
    std::replace(line.begin(), line.end(), '\n', ' ');
    m_messages.fail(line);
    return platform::kAlertDefaultReturn;
}

} // namespace merro::host
