// How clip movies are compressed: the list of choices, the current one, and its way to the movie-file output.
//
// Changes on the main thread; videoCompressionOptions, isCompressed and isCustomVideoCompression may be asked
// on any thread, for each frame. Owned by a controller.
#pragma once

#include "platform/Cell.h"
#include "platform/Interface.h"
#include "platform/KeyValueObserving.h"
#include "platform/QTCaptureSession.h"
#include "platform/Surroundings.h"
#include "platform/Value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace merro {

class VideoCompression {
public:
    /// `movieFileOutput` is the output of `session` whose movies are compressed. `compressionPopUp` shows the
    /// choices and may be null where the interface has none. The custom settings are stored in the user's
    /// defaults under `customSettingsKey`. Announces through `announcements`, which outlives this object.
    VideoCompression(const platform::Surroundings& surroundings, platform::KeyValueObserving& announcements,
                     std::shared_ptr<platform::QTCaptureSession> session,
                     std::shared_ptr<platform::QTCaptureMovieFileOutput> movieFileOutput,
                     std::shared_ptr<platform::PopUpButton> compressionPopUp,
                     std::string_view customSettingsKey);

    /// Makes the list of choices ("None", the platform's own for video, "Custom..."), fills the pop-up with
    /// it and applies the stored choice; "None" where the list has no such entry (settings brought from
    /// another machine). Announces "allVideoCompressionOptions".
    void buildVideoCompressionOptions();

    /// Empty before the list was made. Any thread.
    [[nodiscard]] std::vector<platform::CompressionOptionsRef> allVideoCompressionOptions() const {
        return m_allVideoCompressionOptions.get();
    }

    /// The current choice; null before the list was made.
    [[nodiscard]] platform::CompressionOptionsRef videoCompressionOptions() const { return m_choice.get(); }

    /// Takes another choice, stores the index of the pop-up's selected item, and applies it. Does nothing for
    /// the choice that is current. Announces "videoCompressionOptions".
    void setVideoCompressionOptions(const platform::CompressionOptionsRef& choice);

    /// Selects an item of the pop-up and takes its choice. An index outside the items changes nothing.
    void selectItemAtIndex(std::int64_t index);
    /// Index of the "Custom..." item; -1 before the list was made.
    [[nodiscard]] int lastIndex() const;

    /// Whether the choice is "Custom...". Any thread.
    [[nodiscard]] bool isCustomVideoCompression() const;
    /// Whether the choice is anything but "None". Any thread.
    [[nodiscard]] bool isCompressed() const;

    /// Shows the compression dialog, stores what was set in it and applies it.
    void changeCustomCompression();

    /// Gives the movie-file output the current choice. Interrupts a running session; afterwards the session
    /// runs whenever it has an input.
    void updateVideoCompression();

    /// Runs the standard compression component for sound or video. Given `settings` it works silently; with
    /// null it shows the dialog, which opens with what is stored under `autosaveName`. Where `autosaveName`
    /// is not empty, the settings are stored under it in the end. Writes the codec type and the frame rate (a
    /// second) where the pointers are not null. Answers null after a failure, which is logged, and after a
    /// cancelled dialog, which stores nothing. Main thread.
    [[nodiscard]] std::shared_ptr<platform::CompressionSessionOptions>
    userOptions(std::uint32_t* codecType, double* frameRate, const platform::Data* settings,
                const std::string& autosaveName, platform::MediaType mediaType);

private:
    [[nodiscard]] platform::CompressionOptionsRef customOptions();

    platform::Surroundings m_surroundings;
    platform::KeyValueObserving& m_announcements;
    std::shared_ptr<platform::QTCaptureSession> m_session;
    std::shared_ptr<platform::QTCaptureMovieFileOutput> m_movieFileOutput;
    std::shared_ptr<platform::PopUpButton> m_compressionPopUp;
    std::string m_customSettingsKey;
    platform::Cell<std::vector<platform::CompressionOptionsRef>> m_allVideoCompressionOptions;
    platform::Cell<platform::CompressionOptionsRef> m_choice;
};

} // namespace merro
