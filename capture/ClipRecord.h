// What is known of the clip that is being recorded, or was last.
//
// Any thread; each field is a cell of its own. A change is announced under the field's name, on the thread
// that makes it.
#pragma once

#include "platform/Cell.h"
#include "platform/Date.h"
#include "platform/KeyValueObserving.h"
#include "platform/SMPTETime.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace merro {

class ClipRecord {
public:
    explicit ClipRecord(platform::KeyValueObserving& announcements) : m_announcements(announcements) {}

    /// Whatever the host knows the clip by.
    [[nodiscard]] std::optional<platform::Value> clipId() const { return m_clipId.get(); }
    void setClipId(const std::optional<platform::Value>& clipId);

    /// Date of the first dated frame.
    [[nodiscard]] platform::DateRef clipRecordingDate() const { return m_clipRecordingDate.get(); }
    void setClipRecordingDate(const platform::DateRef& date);

    /// Timecode of the first frame.
    [[nodiscard]] TimecodeValue clipStartTimecode() const { return m_clipStartTimecode.get(); }
    void setClipStartTimecode(const TimecodeValue& timecode);

    /// Timecode of the last frame. Setting it sets the duration: end minus start, missing when either is.
    [[nodiscard]] TimecodeValue clipEndTimecode() const { return m_clipEndTimecode.get(); }
    void setClipEndTimecode(const TimecodeValue& timecode);

    [[nodiscard]] TimecodeValue clipDuration() const { return m_clipDuration.get(); }
    void setClipDuration(const TimecodeValue& duration);

    /// Aspect-ratio code (dv/DVConstants.h).
    [[nodiscard]] std::int32_t clipAspectRatio() const { return m_clipAspectRatio.get(); }
    void setClipAspectRatio(std::int32_t code);

    [[nodiscard]] std::optional<std::string> moviePath() const { return m_moviePath.get(); }
    void setMoviePath(const std::optional<std::string>& path);

    [[nodiscard]] std::optional<std::string> thumbnailsPath() const { return m_thumbnailsPath.get(); }
    void setThumbnailsPath(const std::optional<std::string>& path);

private:
    template <typename T>
    void assign(platform::Cell<T>& field, const T& value, const char* key);

    platform::KeyValueObserving& m_announcements;
    platform::Cell<std::optional<platform::Value>> m_clipId;
    platform::Cell<platform::DateRef> m_clipRecordingDate;
    platform::Cell<TimecodeValue> m_clipStartTimecode;
    platform::Cell<TimecodeValue> m_clipEndTimecode;
    platform::Cell<TimecodeValue> m_clipDuration;
    platform::Cell<std::int32_t> m_clipAspectRatio;
    platform::Cell<std::optional<std::string>> m_moviePath;
    platform::Cell<std::optional<std::string>> m_thumbnailsPath;
};

} // namespace merro
