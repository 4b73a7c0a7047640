#include "capture/ClipRecord.h"

#include "timecode/BXMCTimecodeUtils.h"

namespace merro {

template <typename T>
void ClipRecord::assign(platform::Cell<T>& field, const T& value, const char* key) {
    if (field.get() == value)
        return;
    m_announcements.willChangeValueForKey(key);
    field.set(value);
    m_announcements.didChangeValueForKey(key);
}

void ClipRecord::setClipId(const std::optional<platform::Value>& clipId) {
    assign(m_clipId, clipId, "clipId");
}

void ClipRecord::setClipRecordingDate(const platform::DateRef& date) {
    assign(m_clipRecordingDate, date, "clipRecordingDate");
}

void ClipRecord::setClipStartTimecode(const TimecodeValue& timecode) {
    assign(m_clipStartTimecode, timecode, "clipStartTimecode");
}

void ClipRecord::setClipEndTimecode(const TimecodeValue& timecode) {
    assign(m_clipEndTimecode, timecode, "clipEndTimecode");
    const TimecodeValue start = clipStartTimecode();
    // Without the reset, a clip on a stretch without timecodes would be reported with the duration of the one
    // before.
    setClipDuration(start && timecode
                        ? BXMCTimecodeUtils::subTimecodeFromTimecodeWithTimebase(start, timecode, 0)
                        : TimecodeValue());
}

void ClipRecord::setClipDuration(const TimecodeValue& duration) {
    assign(m_clipDuration, duration, "clipDuration");
}

void ClipRecord::setClipAspectRatio(std::int32_t code) {
    assign(m_clipAspectRatio, code, "clipAspectRatio");
}

void ClipRecord::setMoviePath(const std::optional<std::string>& path) {
    assign(m_moviePath, path, "moviePath");
}

void ClipRecord::setThumbnailsPath(const std::optional<std::string>& path) {
    assign(m_thumbnailsPath, path, "thumbnailsPath");
}

} // namespace merro
