// The thumbnails file of a clip: its first frame, the samples, and its last frame.
//
// No header and no trailer: whole raw DV frames one after the other, each exactly as it was delivered (120000
// or 144000 bytes), so that frame k starts at k times the frame size. No frame stands in it twice. One thread
// at a time (whoever has the recording turn), but for lastFrameData. Writing itself happens elsewhere
// (platform::FileHandle).
#pragma once

#include "platform/Cell.h"
#include "platform/Files.h"
#include "platform/FrameBytes.h"
#include "platform/SMPTETime.h"
#include "platform/UserDefaults.h"

#include <memory>
#include <string>

namespace merro {

class ThumbnailsFile {
public:
    ThumbnailsFile(platform::Files& files, const platform::UserDefaults& defaults)
        : m_files(files), m_defaults(defaults) {}
    ~ThumbnailsFile();
    ThumbnailsFile(const ThumbnailsFile&) = delete;
    ThumbnailsFile& operator=(const ThumbnailsFile&) = delete;

    /// Creates the file, or overwrites in place the one that is there.
    void createThumbnailsFile(const std::string& path);

    /// Writes a frame, when a file is open, and puts the next sampling point one sampling interval after
    /// `timecode`.
    void addFrameOnThumbnailsWithTimecode(const platform::FrameBytes& frame, const SMPTETime& timecode);

    /// Whether a frame with this timecode is at the next sampling point or past it.
    [[nodiscard]] bool samplingPointReached(const SMPTETime& timecode) const;

    /// Adds the newest frame that is not yet in the file, if any, and closes the file, if one is open. The
    /// frame is forgotten in any case: the next clip's file must not begin with it.
    void closeThumbnailsFile(const SMPTETime& lastTimecode);

    /// The newest frame not yet in the file; null when there is none. Any thread.
    [[nodiscard]] platform::FrameBytes lastFrameData() const { return m_lastFrameData.get(); }
    void setLastFrameData(const platform::FrameBytes& frame) { m_lastFrameData.set(frame); }

private:
    platform::Files& m_files;
    const platform::UserDefaults& m_defaults;
    std::unique_ptr<platform::FileHandle> m_fileHandle;
    platform::Cell<platform::FrameBytes> m_lastFrameData;
    SMPTETime m_thumbNextTimecode;
};

} // namespace merro
