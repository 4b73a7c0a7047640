// The capture controller: what a host creates to log a DV tape.
//
// It owns a capture session with its outputs, cuts what arrives into clips where the recording date jumps,
// asks the host where to put each clip and reports each one when it ends (BXMCControllerDelegate). This class
// is a face; what it does lives in pieces that can be read alone (capture/README.md).
//
// Threads. Made, used and destroyed on the main thread. Frames arrive on the session's delivery thread.
// setRecording may also be called on any other thread, from within a message to the delegate too. Getters may
// be called on any thread. Announcements of changes (announcements()) come on the thread that makes the
// change.
#pragma once

#include "capture/BXMCControllerDelegate.h"
#include "capture/CaptureDefaults.h"
#include "capture/ClipInfoKeys.h"
#include "platform/Date.h"
#include "platform/KeyValueObserving.h"
#include "platform/QTCaptureSession.h"
#include "platform/SMPTETime.h"
#include "platform/Surroundings.h"
#include "platform/Value.h"
#include "platform/View.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro {

class BXTimecodeAndDateView;

class BXMCController {
public:
    using DeviceRef = std::shared_ptr<platform::QTCaptureDevice>;
    using SessionRef = std::shared_ptr<platform::QTCaptureSession>;

    /// Loads "capture.nib" and builds session and outputs; no device is chosen. Stores the first value of
    /// every setting that is missing. `surroundings` outlive the controller.
    explicit BXMCController(const platform::Surroundings& surroundings);

    /// Ends delivery, waiting for a frame that is being worked on, and closes the files of a clip that is
    /// being recorded; nothing is reported. Not from within a message to the delegate.
    ~BXMCController();
    BXMCController(const BXMCController&) = delete;
    BXMCController& operator=(const BXMCController&) = delete;

    /// Held weakly. May be replaced while recording.
    void setDelegate(const std::shared_ptr<BXMCControllerDelegate>& delegate);
    [[nodiscard]] std::shared_ptr<BXMCControllerDelegate> delegate() const;

    /// Keys: "recording", "prerolling", "processNote", the clip's fields below, "videoDevices",
    /// "selectedVideoDevice" and what depends on it, "devicePlaying", "deviceRewinding",
    /// "deviceFastForwarding", "videoCompressionOptions" and what depends on it.
    [[nodiscard]] platform::KeyValueObserving& announcements();

    // --- Recording ---

    [[nodiscard]] bool isRecording() const;

    /// Switches recording on or off. Never waits for a delegate or an alert of another thread. On: plays the
    /// tape, or, when it is paused at a known timecode, runs it back for two seconds first, during which the
    /// calling thread sleeps. Off: reports the clip that is open and does to the tape what
    /// "actionAfterRecord" says. The messages have been sent when this returns, unless somebody else was just
    /// opening or ending a clip: then he sends them next.
    void setRecording(bool recording);

    /// Whether frames are being skipped until startTimecode is reached.
    [[nodiscard]] bool isPrerolling() const;
    void setIsPrerolling(bool prerolling);
    [[nodiscard]] SMPTETime startTimecode() const;
    void setStartTimecode(const SMPTETime& timecode);

    /// "Recording started", "Recording stopped", or empty before the first recording.
    [[nodiscard]] std::string processNote() const;
    void setProcessNote(const std::string& note);

    // --- The tape as the last frames showed it ---

    /// Timecode of the newest frame that had one, recording or not.
    [[nodiscard]] TimecodeValue currentTimecodeValue() const;
    void setCurrentTimecodeValue(const TimecodeValue& timecode);
    /// Recording date of the newest dated frame since recording was switched on or off.
    [[nodiscard]] platform::DateRef currentDate() const;
    void setCurrentDate(const platform::DateRef& date);
    /// Timecode of the newest frame of this recording; missing when that frame had none.
    [[nodiscard]] TimecodeValue lastTimecodeValue() const;
    void setLastTimecodeValue(const TimecodeValue& timecode);
    /// The newest frame of the clip that is not yet in its thumbnails file; null when there is none.
    [[nodiscard]] platform::FrameBytes lastFrameData() const;
    void setLastFrameData(const platform::FrameBytes& frame);
    /// The marks at which the movie of a clip is started and ended; missing when none is waiting.
    [[nodiscard]] TimecodeValue timecodeStartValue() const;
    void setTimecodeStartValue(const TimecodeValue& timecode);
    [[nodiscard]] TimecodeValue timecodeEndValue() const;
    void setTimecodeEndValue(const TimecodeValue& timecode);

    // --- The clip that is being recorded, or was last ---

    [[nodiscard]] std::optional<platform::Value> clipId() const;
    void setClipId(const std::optional<platform::Value>& clipId);
    [[nodiscard]] platform::DateRef clipRecordingDate() const;
    void setClipRecordingDate(const platform::DateRef& date);
    [[nodiscard]] TimecodeValue clipStartTimecode() const;
    void setClipStartTimecode(const TimecodeValue& timecode);
    [[nodiscard]] TimecodeValue clipEndTimecode() const;
    /// Also sets the duration when the start is known.
    void setClipEndTimecode(const TimecodeValue& timecode);
    [[nodiscard]] TimecodeValue clipDuration() const;
    void setClipDuration(const TimecodeValue& duration);
    [[nodiscard]] std::int32_t clipAspectRatio() const;
    void setClipAspectRatio(std::int32_t code);
    [[nodiscard]] std::optional<std::string> moviePath() const;
    void setMoviePath(const std::optional<std::string>& path);
    [[nodiscard]] std::optional<std::string> thumbnailsPath() const;
    /// Closes the thumbnails file, with the clip's last frame, and opens the one at `path`, if any. Done at
    /// once, or as soon as whoever is just opening or ending a clip has finished.
    void setThumbnailsPath(const std::optional<std::string>& path);

    // --- Devices and the tape transport ---

    /// The devices to choose from, as the host handed them over.
    [[nodiscard]] std::vector<DeviceRef> videoDevices() const;
    void setVideoDevices(std::vector<DeviceRef> devices);
    [[nodiscard]] DeviceRef selectedVideoDevice() const;
    /// Opens the device (null: none) and makes it the session's input. Problems are told to the user; a
    /// device that does not deliver DV is warned about and used all the same.
    void setSelectedVideoDevice(const DeviceRef& device);
    [[nodiscard]] bool hasRecordingDevice() const;
    [[nodiscard]] DeviceRef controllableDevice() const;
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDeviceInput> videoDeviceInput() const;

    /// Reading this ends a recording when the device reports anything but normal play: buttons bound to it
    /// would otherwise go on showing a recording of a tape that has stopped.
    [[nodiscard]] bool isDevicePlaying();
    // The other questions have no such effect. All answer false without a controllable device.
    [[nodiscard]] bool isDevicePause() const;
    [[nodiscard]] bool isDeviceRewinding() const;
    [[nodiscard]] bool isDeviceFastForwarding() const;

    // Commands; they return before the mechanism has obeyed, and without a controllable device reach nobody.
    /// Plays, or pauses, and has the session running.
    void setDevicePlaying(bool playing);
    /// Winds in the mode that the device reports (a search while there is a picture), or stands still.
    void setDeviceRewinding(bool rewinding);
    void setDeviceFastForwarding(bool forwarding);
    /// Stops the tape, then the session.
    void stopDevice();

    // --- Settings, presets, compression ---

    /// The host's presets, dictionaries under the BXMCConf... keys; setting them also fills the preset
    /// pop-up. They are never stored by the component.
    [[nodiscard]] std::vector<platform::Dictionary> allConfiguration() const;
    void setAllConfiguration(const std::vector<platform::Dictionary>& presets);
    /// Selects an item of the preset pop-up and loads it: 0 stands for settings edited by hand, 1 for the
    /// first preset.
    void selectConfigurationAtIndex(int index);
    /// Copies the selected preset into the user's defaults; what it lacks stays as it is.
    void changeConfiguration();
    /// Hands the settings, as a preset without a name, to the delegate.
    void saveCurrentConfiguration();
    /// Asks the delegate to delete the selected preset, if it answers mccontrollerSaveConfiguration too.
    void deleteCurrentConfiguration();
    /// Whether changeConfiguration is under way.
    [[nodiscard]] bool loadingConfig() const;
    /// The stored sampling interval in seconds.
    [[nodiscard]] std::int32_t frameSampleInterval() const;
    /// Whether clips get a movie.
    [[nodiscard]] bool captureMovie() const;

    void buildVideoCompressionOptions();
    [[nodiscard]] std::vector<platform::CompressionOptionsRef> allVideoCompressionOptions() const;
    [[nodiscard]] platform::CompressionOptionsRef videoCompressionOptions() const;
    void setVideoCompressionOptions(const platform::CompressionOptionsRef& choice);
    [[nodiscard]] bool isCustomVideoCompression() const;
    [[nodiscard]] bool isCompressed() const;
    void changeCustomCompression();
    void updateVideoCompression();

    /// Volume of the preview's sound, 0.0 to 1.0; remembered in the user's defaults.
    [[nodiscard]] float captureVolume() const;
    void setCaptureVolume(float volume);

    // --- What the host shows, and the session's pieces ---

    /// Null where the interface has no such outlet.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureView> captureView() const;
    [[nodiscard]] std::shared_ptr<platform::View> configurationView() const;
    [[nodiscard]] std::shared_ptr<platform::View> devicesView() const;
    [[nodiscard]] std::shared_ptr<platform::View> compressionView() const;
    [[nodiscard]] std::shared_ptr<platform::View> thumbnailsView() const;
    [[nodiscard]] std::shared_ptr<platform::View> controlView() const;
    /// The overlay with timecode and date; shown while recording.
    [[nodiscard]] std::shared_ptr<BXTimecodeAndDateView> timecodeView() const;

    [[nodiscard]] SessionRef session() const;
    /// Carries the plain DV that feeds detection while movies are compressed.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureMovieFileOutput> fileOutput() const;
    /// Records the clip movies.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureMovieFileOutput> movieFileOutput() const;

private:
    struct Pieces;
    std::unique_ptr<Pieces> m_pieces;
};

} // namespace merro
