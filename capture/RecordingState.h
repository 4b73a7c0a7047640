// What the pieces of the capture controller know in common: whether recording is on, and what the newest
// frames said.
//
// Fields that the main and the delivery thread touch are cells of their own; nothing here calls out but to
// the overlay, with no lock held.
#pragma once

#include "platform/Cell.h"
#include "platform/Date.h"
#include "platform/KeyValueObserving.h"
#include "platform/SMPTETime.h"
#include "views/BXTimecodeAndDateView.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace merro {

class RecordingState {
public:
    RecordingState(platform::KeyValueObserving& announcements,
                   std::shared_ptr<BXTimecodeAndDateView> timecodeView)
        : m_announcements(announcements), m_timecodeView(std::move(timecodeView)) {}

    // --- Any thread ---

    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    /// Announces nothing. A preroll takes recording back for two seconds, and bound buttons should not
    /// flicker.
    void setIsRecording(bool recording) { m_isRecording = recording; }

    [[nodiscard]] bool isPrerolling() const { return m_isPrerolling; }
    void setIsPrerolling(bool prerolling) {
        if (m_isPrerolling == prerolling)
            return;
        m_announcements.willChangeValueForKey("prerolling");
        m_isPrerolling = prerolling;
        m_announcements.didChangeValueForKey("prerolling");
    }

    /// A start or stop has been asked for and has not begun its work: whoever has the turn opens no more
    /// clips.
    [[nodiscard]] bool isBeingSwitched() const { return m_switchesWaiting > 0; }
    void switchAskedFor() { ++m_switchesWaiting; }
    void switchBegun() { --m_switchesWaiting; }

    /// A missing timecode shows as zero.
    void setCurrentTimecodeValue(const TimecodeValue& timecode) {
        m_currentTimecodeValue.set(timecode);
        m_timecodeView->setTimecode(timecode.SMPTETimeValue());
    }
    [[nodiscard]] TimecodeValue currentTimecodeValue() const { return m_currentTimecodeValue.get(); }

    void setCurrentDate(const platform::DateRef& date) {
        m_currentDate.set(date);
        m_timecodeView->setDate(date);
    }
    [[nodiscard]] platform::DateRef currentDate() const { return m_currentDate.get(); }

    [[nodiscard]] BXTimecodeAndDateView& timecodeView() const { return *m_timecodeView; }

    platform::Cell<SMPTETime> startTimecode;
    platform::Cell<TimecodeValue> lastTimecodeValue;

    // --- Whoever has the turn ---

    /// Whether the host has been told of a beginning and not yet of its end.
    bool isBegun = false;
    /// Frames that a skip after a cut still lasts; 0 when only startTimecode decides.
    std::int64_t framesToSkip = 0;

private:
    platform::KeyValueObserving& m_announcements;
    std::shared_ptr<BXTimecodeAndDateView> m_timecodeView;
    std::atomic<bool> m_isRecording = false;
    std::atomic<bool> m_isPrerolling = false;
    std::atomic<int> m_switchesWaiting = 0;
    platform::Cell<TimecodeValue> m_currentTimecodeValue;
    platform::Cell<platform::DateRef> m_currentDate;
};

} // namespace merro
