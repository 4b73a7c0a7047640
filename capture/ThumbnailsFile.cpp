#include "capture/ThumbnailsFile.h"

#include "capture/CaptureDefaults.h"
#include "timecode/BXMCTimecodeUtils.h"

namespace merro {

ThumbnailsFile::~ThumbnailsFile() {
    if (m_fileHandle)
        m_fileHandle->close();
}

void ThumbnailsFile::createThumbnailsFile(const std::string& path) {
    m_fileHandle = m_files.openForWriting(path);
}

void ThumbnailsFile::addFrameOnThumbnailsWithTimecode(const platform::FrameBytes& frame,
                                                      const SMPTETime& timecode) {
    if (m_fileHandle)
        m_fileHandle->append(frame);
    const int intervalInFrames =
        storedSampleInterval(m_defaults) * BXMCTimecodeUtils::maxFrameForTimecode(timecode);
    m_thumbNextTimecode = BXMCTimecodeUtils::addNbFrameToTimecode(intervalInFrames, timecode);
}

bool ThumbnailsFile::samplingPointReached(const SMPTETime& timecode) const {
    return BXMCTimecodeUtils::timecodeCompareWith(m_thumbNextTimecode, timecode) <= 0;
}

void ThumbnailsFile::closeThumbnailsFile(const SMPTETime& lastTimecode) {
    const platform::FrameBytes lastFrame = m_lastFrameData.exchange({});
    if (!m_fileHandle)
        return;
    if (!lastFrame.isNull())
        addFrameOnThumbnailsWithTimecode(lastFrame, lastTimecode);
    m_fileHandle->close();
    m_fileHandle.reset();
}

} // namespace merro
