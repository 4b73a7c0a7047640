// What a run has to say while it goes on: lines for people, events for programs.
//
// Any thread; nothing is locked while the listener is called.
#pragma once

#include "platform/Alerts.h"
#include "platform/Error.h"
#include "platform/Log.h"

#include <nlohmann/json_fwd.hpp>

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace merro::host {

/// Whoever shows what a run says. Called on any thread of the run; the calls do not wait for a slow reader.
/// Empty members are not called.
struct RunListener {
    /// One line that the user must see.
    std::function<void(const std::string& line)> line;
    /// One thing that happened; {"event": "didRecord", …}.
    std::function<void(const nlohmann::ordered_json& event)> event;
    /// One line for programmers and support.
    std::function<void(const std::string& line)> log;
};

class RunMessages {
public:
    explicit RunMessages(RunListener listener) : m_listener(std::move(listener)) {}

    /// Something the user must hear of that costs him nothing.
    void warn(const std::string& line);
    /// Something that he loses by.
    void fail(const std::string& line);
    /// The same for an error of the platform; a cause (a full disk) is told once, however many files it hits.
    void fail(const platform::Error& error);

    void event(const nlohmann::ordered_json& event);
    void log(const std::string& line);

    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

private:
    void tell(const std::string& line, const char* kind);

    RunListener m_listener;
    std::atomic<bool> m_hasFailed = false;
    std::mutex m_mutex; ///< guards m_toldCauses
    std::set<int> m_toldCauses;
};

/// Alerts of a run that nobody attends: one line each, answered at once.
class LineAlerts final : public platform::Alerts {
public:
    explicit LineAlerts(RunMessages& messages) : m_messages(messages) {}
    [[nodiscard]] int runModal(const platform::Alert& alert) override;

private:
    RunMessages& m_messages;
};

class RunLog final : public platform::Log {
public:
    explicit RunLog(RunMessages& messages) : m_messages(messages) {}
    void line(std::string_view text) override { m_messages.log(std::string(text)); }

private:
    RunMessages& m_messages;
};

} // namespace merro::host
