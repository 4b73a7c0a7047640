#include "capture/RecordingTurn.h"

#include <utility>

namespace merro {

void RecordingTurn::enterOrDefer(Work work) {
    defer(std::move(work));
    runDeferred();
}

void RecordingTurn::runBetweenTurns(Work work) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isTaken && m_deferred.empty()) {
            work();
            return;
        }
        m_deferred.push_back(std::move(work));
    }
    runDeferred();
}

void RecordingTurn::defer(Work work) {
    const std::lock_guard lock(m_mutex);
    m_deferred.push_back(std::move(work));
}

void RecordingTurn::runDeferred() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_isTaken)
            return;
        m_isTaken = true;
    }
    leave();
}

RecordingTurn::Hold RecordingTurn::tryEnter() {
    const std::lock_guard lock(m_mutex);
    if (m_isTaken || !m_deferred.empty())
        return {};
    m_isTaken = true;
    return Hold(this);
}

void RecordingTurn::leave() {
    for (;;) {
        Work work;
        {
            const std::lock_guard lock(m_mutex);
            if (m_deferred.empty()) {
                m_isTaken = false;
                return;
            }
            work = std::move(m_deferred.front());
            m_deferred.pop_front();
        }
        work();
    }
}

RecordingTurn::Hold::Hold(Hold&& other) noexcept : m_turn(std::exchange(other.m_turn, nullptr)) {}

RecordingTurn::Hold::~Hold() {
    if (m_turn != nullptr)
        m_turn->leave();
}

} // namespace merro
