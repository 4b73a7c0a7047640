// What logging a tape must give, worked out from the tape's description in the plainest way: one pass over
// the frames that were delivered, no timers, no files, no marks. Shares no code with the component.
#pragma once

#include "tests/scenarios/TapeScript.h"

#include <chrono>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace merro::test {

struct ModelSettings {
    bool detectScene = true;
    int framesToSkip = 0;
    bool sampling = true;
    int intervalInSeconds = 1;
};

struct ModelClip {
    std::vector<int> frames;
    std::vector<int> thumbnails;
    std::optional<std::chrono::sys_seconds> date;
    TimecodeValue start;
    TimecodeValue end;
    int aspect = 0;
    bool isReportedWithoutMovie = false; ///< cut again by the very frame that opened it
};

class LoggingModel {
public:
    explicit LoggingModel(const TapeScript& script, ModelSettings settings)
        : m_script(script), m_settings(settings) {}

    /// A frame that passes while nothing is recorded.
    void preview(int frame) { knowTimecode(frame); }

    /// Recording from now on; from `startAt` on, when the tape has been run back.
    void start(const TimecodeValue& startAt = {}) {
        m_waitsFor = startAt;
        m_isOpen = !startAt;
        m_skipsLeft = 0;
        m_lastDate.reset();
        if (m_isOpen)
            open();
    }

    void record(int frame) {
        knowTimecode(frame);
        if (!m_isOpen) {
            const bool hasPassed = m_skipsLeft > 0 && --m_skipsLeft == 0;
            if (!hasPassed && fields(m_script.at(frame).timecode) < fields(m_waitsFor))
                return;
            open();
            take(frame);
            cutIfJumped(frame, true);
        } else {
            cutIfJumped(frame, false);
        }
    }

    void stop() {
        if (m_isOpen)
            close(clips.back().frames.empty() ? m_known : m_knownAtNewest);
        m_isOpen = false;
    }

    std::vector<ModelClip> clips;

private:
    using Fields = std::tuple<int, int, int, int>;
    static Fields fields(const TimecodeValue& timecode) {
        const SMPTETime time = timecode.SMPTETimeValue();
        return {time.mHours, time.mMinutes, time.mSeconds, time.mFrames};
    }
    static Fields later(Fields time, int seconds) {
        auto& [h, m, s, f] = time;
        s += seconds;
        m += s / 60;
        s %= 60;
        h += m / 60;
        m %= 60;
        return time;
    }

    /// The tape's clock in a zone that has no clock changes.
    [[nodiscard]] std::optional<std::chrono::sys_seconds> dateOf(int frame) const {
        using namespace std::chrono;
        const auto& date = m_script.at(frame).date;
        if (!date)
            return std::nullopt;
        const year_month_day day{year(date->year), month(static_cast<unsigned>(date->month)),
                                 std::chrono::day(static_cast<unsigned>(date->day))};
        return sys_days(day) + hours(date->hours) + minutes(date->minutes) + seconds(date->seconds);
    }

    void knowTimecode(int frame) {
        if (m_script.at(frame).timecode)
            m_known = m_script.at(frame).timecode;
    }

    void open() {
        m_isOpen = true;
        clips.emplace_back();
        clips.back().aspect = m_aspect;
    }

    void cutIfJumped(int frame, bool isTaken) {
        const auto date = dateOf(frame);
        bool belongs = true;
        if (m_settings.detectScene && date && m_lastDate &&
            (*date - *m_lastDate > std::chrono::seconds(1) || *date < *m_lastDate)) {
            clips.back().isReportedWithoutMovie = isTaken;
            close(m_lastTimecode);
            isTaken = false;
            if (m_settings.framesToSkip > 0) {
                m_isOpen = belongs = false;
                m_skipsLeft = m_settings.framesToSkip;
                SMPTETime target = m_script.at(frame).timecode.SMPTETimeValue();
                const int perSecond = m_script.at(frame).timecode ? 25 : 24;
                Fields wanted = fields(m_script.at(frame).timecode);
                std::get<3>(wanted) += m_settings.framesToSkip;
                const int carried = std::get<3>(wanted) / perSecond;
                std::get<3>(wanted) %= perSecond;
                wanted = later(wanted, carried);
                std::tie(target.mHours, target.mMinutes, target.mSeconds, target.mFrames) = wanted;
                m_waitsFor = TimecodeValue::valueWithSMPTETime(target);
            } else {
                open();
            }
        }
        if (date)
            m_lastDate = date;
        if (belongs) {
            ModelClip& clip = clips.back();
            if (!clip.date) {
                clip.date = m_lastDate;
                clip.aspect = m_aspect = m_script.at(frame).isWide ? 0 : 1;
            }
            if (!isTaken)
                take(frame);
        }
        m_lastTimecode = m_script.at(frame).timecode;
    }

    void take(int frame) {
        ModelClip& clip = clips.back();
        const Fields time = fields(m_script.at(frame).timecode);
        if (clip.frames.empty() || (m_settings.sampling && m_nextSample <= time)) {
            clip.thumbnails.push_back(frame);
            m_nextSample = later(time, m_settings.intervalInSeconds);
        }
        clip.frames.push_back(frame);
        if (!clip.start)
            clip.start = m_known;
        m_knownAtNewest = m_known;
        m_lastTimecode = m_script.at(frame).timecode;
    }

    void close(const TimecodeValue& end) {
        ModelClip& clip = clips.back();
        clip.end = end;
        if (!clip.frames.empty() && clip.thumbnails.back() != clip.frames.back())
            clip.thumbnails.push_back(clip.frames.back());
    }

    const TapeScript& m_script;
    const ModelSettings m_settings;
    bool m_isOpen = false;
    int m_skipsLeft = 0;
    int m_aspect = 0;
    TimecodeValue m_waitsFor;
    TimecodeValue m_known;         ///< of the newest frame that had one
    TimecodeValue m_knownAtNewest; ///< the same, as of the clip's newest frame
    TimecodeValue m_lastTimecode;  ///< of the newest recorded frame, missing when it had none
    std::optional<std::chrono::sys_seconds> m_lastDate;
    Fields m_nextSample;
};

} // namespace merro::test
