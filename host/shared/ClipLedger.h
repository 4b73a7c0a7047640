// The host's side of the conversation about clips: hands out identifiers and paths, takes the reports, and
// follows each clip's files until they are whole.
//
// willRecord and didRecord come from the thread that opens or ends a clip, one at a time; the others from any
// thread. Nothing here waits for a disk.
#pragma once

#include "host/shared/BackgroundWorker.h"
#include "host/shared/CatalogueKeeper.h"
#include "host/shared/LoggingFolder.h"
#include "host/shared/RunMessages.h"
#include "platform/ffmpeg/MovieLibrary.h"
#include "platform/native/BackgroundFiles.h"
#include "platform/session/MovieRecorder.h"
#include "platform/Value.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace merro::host {

class ClipLedger {
public:
    struct Settings {
        int firstNumber = 1;
        bool movies = true;
        platform::ffmpeg::PosterWriter writePoster; ///< no posters when empty
        /// Frames lost so far, on their way from the device and in front of a slow or full disk.
        std::function<std::int64_t()> framesLost;
    };

    ClipLedger(const LoggingFolder& folder, CatalogueKeeper& keeper, platform::native::BackgroundFiles& files,
               RunMessages& messages, Settings settings);
    ~ClipLedger();
    ClipLedger(const ClipLedger&) = delete;
    ClipLedger& operator=(const ClipLedger&) = delete;

    /// The answer to "a clip is about to open".
    [[nodiscard]] platform::Dictionary willRecord();
    /// The clip's report: kept, and its thumbnails file given its name once it is whole.
    void didRecord(const platform::Dictionary& info);
    void movieFinished(const platform::session::RecordingResult& result);
    /// A file written in the background is without so many of the frames meant for it.
    void framesMissingInFile(const std::string& path, std::int64_t frames);

    /// No more clips, and all movies have ended. Returns when the posters are made. The files have been
    /// drained before.
    void finish();

    [[nodiscard]] int clipCount() const { return m_clipCount; }

private:
    void finishThumbnails(int number);
    void makePoster(int number);

    const LoggingFolder& m_folder;
    CatalogueKeeper& m_keeper;
    platform::native::BackgroundFiles& m_files;
    RunMessages& m_messages;
    const Settings m_settings;

    std::atomic<int> m_nextNumber;
    std::atomic<int> m_clipCount = 0;
    std::atomic<std::int64_t> m_framesLostBefore = 0; ///< when the open clip was opened
    std::mutex m_mutex;                               ///< guards the two below
    std::set<int> m_withoutMovie;                     ///< clips opened that a movie is still wanted of
    std::set<int> m_withoutTimecode;                  ///< clips whose first frame had none

    BackgroundWorker m_posters;
};

} // namespace merro::host
