#include "capture/BXMCControllerPieces.h"

#include "platform/UserDefaults.h"

namespace merro {

namespace {

constexpr platform::Rect kTimecodeViewFrame{0, 0, 640, 480};
constexpr float kFirstVolume = 0.5F;

std::shared_ptr<BXTimecodeAndDateView> makeTimecodeView(const platform::Localization& localization) {
    auto view = std::make_shared<BXTimecodeAndDateView>(kTimecodeViewFrame, localization);
    view->setHidden(true);
    return view;
}

} // namespace

BXMCController::Pieces::Pieces(BXMCController& face, const platform::Surroundings& given)
    : controller(face), surroundings(given), interface(given.interfaces.load("capture.nib")),
      captureView(interface->captureView("captureView")), timecodeView(makeTimecodeView(given.localization)),
      session(given.capture.makeSession()), videoPreviewOutput(given.capture.makeVideoPreviewOutput()),
      audioPreviewOutput(given.capture.makeAudioPreviewOutput()),
      fileOutput(given.capture.makeMovieFileOutput()), movieFileOutput(given.capture.makeMovieFileOutput()),
      selection(given, session, announcements, [this] { deviceSelected(); }),
      transport(session, [this] { return selection.controllableDevice(); }),
      compression(given, announcements, session, movieFileOutput, interface->popUpButton("compressionPopUp"),
                  BXMCCaptureCompressionData),
      configuration(given, compression, interface->popUpButton("configurationPopUp"),
                    {[this] { return reports.answersSaveConfiguration(); },
                     [this](const platform::Dictionary& preset) { reports.saveConfiguration(preset); },
                     [this](const std::string& name) { reports.deleteConfiguration(name); }}),
      reports(face), state(announcements, timecodeView), record(announcements),
      thumbnails(given.files, given.defaults), movie(movieFileOutput, record, given.log),
      clip(state, record, thumbnails, movie, reports, given.defaults),
      streamAlert(given.alerts, given.localization),
      endOfTapeTimer(given.runLoop, given.defaults, [this] { recording.setRecording(false); }),
      recording({state, turn, clip, movie, reports, endOfTapeTimer, streamAlert, transport, given.defaults,
                 given.clock, announcements},
                session, [this] { return selection.controllableDevice(); }),
      detector(state, turn, clip, endOfTapeTimer, streamAlert, given.defaults,
               [this] { recording.setRecording(false); }) {}

void BXMCController::Pieces::addOutputs() {
    session->addOutput(videoPreviewOutput);
    const auto stored = surroundings.defaults.objectForKey(BXMCCaptureMovieVolume);
    setCaptureVolume(stored ? static_cast<float>(stored->doubleValue()) : kFirstVolume);
    session->addOutput(audioPreviewOutput);
    // Detection on fileOutput has to see a frame, and set its marks, before movieFileOutput hands over the
    // same one.
    session->addOutput(fileOutput);
    session->addOutput(movieFileOutput);
}

void BXMCController::Pieces::connectOutputs() {
    for (const auto& output : {fileOutput, movieFileOutput}) {
        platform::QTCaptureFileOutputDelegate delegate;
        delegate.didOutputSampleBuffer =
            [this](platform::QTCaptureMovieFileOutput& sender, const platform::QTSampleBuffer& sampleBuffer,
                   const platform::QTCaptureConnection&) { captureOutput(sender, sampleBuffer); };
        delegate.mustChangeOutputFile = [this](platform::QTCaptureMovieFileOutput&, const std::string&,
                                               const std::optional<platform::Error>&) {
            recording.changeFiles();
        };
        output->setDelegate(std::move(delegate));
    }
}

/// Exactly one output feeds detection: the one that carries plain DV.
void BXMCController::Pieces::captureOutput(platform::QTCaptureMovieFileOutput& output,
                                           const platform::QTSampleBuffer& sampleBuffer) {
    if (sampleBuffer.mediaType != platform::MediaType::Video || sampleBuffer.lengthForAllSamples() == 0)
        return;
    const bool isMovieOutput = &output == movieFileOutput.get();
    const bool carriesPlainDV = isMovieOutput != compression.isCompressed();
    if (!carriesPlainDV && !isMovieOutput)
        return;
    const auto held = carriesPlainDV ? detector.detectAndCaptureThumbnail(sampleBuffer) : turn.tryEnter();
    if (isMovieOutput)
        switchMovie(sampleBuffer, static_cast<bool>(held));
}

/// A movie holds the frames of its clip. A frame that comes while recording is being switched off is in it
/// when it was recorded before the stop got its turn, and is otherwise left out.
void BXMCController::Pieces::switchMovie(const platform::QTSampleBuffer& sampleBuffer, bool hasTurn) {
    const bool isBeingEnded = !state.isRecording() || state.isBeingSwitched() || movie.isEnded();
    if (hasTurn && (clip.isOpen() || !isBeingEnded))
        movie.movieDetection(sampleBuffer);
    else if (isBeingEnded)
        movie.leaveFrameOut();
}

void BXMCController::Pieces::deviceSelected() {
    state.setCurrentTimecodeValue({});
    compression.updateVideoCompression();
    const auto switchOn = [this](const char* outlet, bool on) {
        if (const auto button = interface->button(outlet); button && on)
            button->setState(true);
    };
    switchOn("playButton", controller.isDevicePlaying());
    switchOn("rewindButton", transport.isDeviceRewinding());
    switchOn("forwardButton", transport.isDeviceFastForwarding());
    switchOn("recordButton", state.isRecording());
}

void BXMCController::Pieces::setCaptureVolume(float volume) {
    audioPreviewOutput->setVolume(volume);
    surroundings.defaults.setObjectForKey(static_cast<double>(volume), BXMCCaptureMovieVolume);
}

} // namespace merro
