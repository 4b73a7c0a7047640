#include "capture/BXMCController.h"

#include "capture/BXMCControllerPieces.h"
#include "platform/UserDefaults.h"

namespace merro {

BXMCController::BXMCController(const platform::Surroundings& surroundings) {
    storeMissingCaptureDefaults(surroundings.defaults);
    m_pieces = std::make_unique<Pieces>(*this, surroundings);
    Pieces& pieces = *m_pieces;
    declareCaptureDependentKeys(pieces.announcements);
    if (pieces.captureView) {
        pieces.captureView->addOverlayView(pieces.timecodeView, platform::Ordered::Above);
        pieces.captureView->setCaptureSession(pieces.session);
    }
    pieces.connectOutputs();
    pieces.addOutputs();
    pieces.compression.buildVideoCompressionOptions();
    pieces.selection.startObservingTransport();
    pieces.configuration.startObservingDefaults();
}

BXMCController::~BXMCController() {
    Pieces& pieces = *m_pieces;
    pieces.fileOutput->setDelegate({});
    pieces.movieFileOutput->setDelegate({});
    if (pieces.session->isRunning())
        pieces.session->stopRunning();
    if (const auto input = pieces.selection.videoDeviceInput()) {
        pieces.session->removeInput(input);
        input->device()->close();
    }
    if (pieces.captureView) {
        pieces.captureView->removeOverlayView(pieces.timecodeView);
        pieces.captureView->setCaptureSession(nullptr);
    }
    pieces.movie.recordToNoFile();
    pieces.clip.closeFiles();
}

void BXMCController::setDelegate(const std::shared_ptr<BXMCControllerDelegate>& delegate) {
    m_pieces->reports.setDelegate(delegate);
}
std::shared_ptr<BXMCControllerDelegate> BXMCController::delegate() const {
    return m_pieces->reports.delegate();
}
platform::KeyValueObserving& BXMCController::announcements() {
    return m_pieces->announcements;
}

// --- Recording ---

bool BXMCController::isRecording() const {
    return m_pieces->state.isRecording();
}
void BXMCController::setRecording(bool recording) {
    m_pieces->recording.setRecording(recording);
}
bool BXMCController::isPrerolling() const {
    return m_pieces->state.isPrerolling();
}
void BXMCController::setIsPrerolling(bool prerolling) {
    m_pieces->state.setIsPrerolling(prerolling);
}
SMPTETime BXMCController::startTimecode() const {
    return m_pieces->state.startTimecode.get();
}
void BXMCController::setStartTimecode(const SMPTETime& timecode) {
    m_pieces->state.startTimecode.set(timecode);
}
std::string BXMCController::processNote() const {
    return m_pieces->recording.processNote();
}
void BXMCController::setProcessNote(const std::string& note) {
    m_pieces->recording.setProcessNote(note);
}

// --- The tape as the last frames showed it ---

TimecodeValue BXMCController::currentTimecodeValue() const {
    return m_pieces->state.currentTimecodeValue();
}
void BXMCController::setCurrentTimecodeValue(const TimecodeValue& timecode) {
    m_pieces->state.setCurrentTimecodeValue(timecode);
}
platform::DateRef BXMCController::currentDate() const {
    return m_pieces->state.currentDate();
}
void BXMCController::setCurrentDate(const platform::DateRef& date) {
    m_pieces->state.setCurrentDate(date);
}
TimecodeValue BXMCController::lastTimecodeValue() const {
    return m_pieces->state.lastTimecodeValue.get();
}
void BXMCController::setLastTimecodeValue(const TimecodeValue& timecode) {
    m_pieces->state.lastTimecodeValue.set(timecode);
}
platform::FrameBytes BXMCController::lastFrameData() const {
    return m_pieces->thumbnails.lastFrameData();
}
void BXMCController::setLastFrameData(const platform::FrameBytes& frame) {
    m_pieces->thumbnails.setLastFrameData(frame);
}
TimecodeValue BXMCController::timecodeStartValue() const {
    return m_pieces->movie.timecodeStartValue.get();
}
void BXMCController::setTimecodeStartValue(const TimecodeValue& timecode) {
    m_pieces->movie.timecodeStartValue.set(timecode);
}
TimecodeValue BXMCController::timecodeEndValue() const {
    return m_pieces->movie.timecodeEndValue.get();
}
void BXMCController::setTimecodeEndValue(const TimecodeValue& timecode) {
    m_pieces->movie.timecodeEndValue.set(timecode);
}

// --- The clip that is being recorded, or was last ---

std::optional<platform::Value> BXMCController::clipId() const {
    return m_pieces->record.clipId();
}
void BXMCController::setClipId(const std::optional<platform::Value>& clipId) {
    m_pieces->record.setClipId(clipId);
}
platform::DateRef BXMCController::clipRecordingDate() const {
    return m_pieces->record.clipRecordingDate();
}
void BXMCController::setClipRecordingDate(const platform::DateRef& date) {
    m_pieces->record.setClipRecordingDate(date);
}
TimecodeValue BXMCController::clipStartTimecode() const {
    return m_pieces->record.clipStartTimecode();
}
void BXMCController::setClipStartTimecode(const TimecodeValue& timecode) {
    m_pieces->record.setClipStartTimecode(timecode);
}
TimecodeValue BXMCController::clipEndTimecode() const {
    return m_pieces->record.clipEndTimecode();
}
void BXMCController::setClipEndTimecode(const TimecodeValue& timecode) {
    m_pieces->record.setClipEndTimecode(timecode);
}
TimecodeValue BXMCController::clipDuration() const {
    return m_pieces->record.clipDuration();
}
void BXMCController::setClipDuration(const TimecodeValue& duration) {
    m_pieces->record.setClipDuration(duration);
}
std::int32_t BXMCController::clipAspectRatio() const {
    return m_pieces->record.clipAspectRatio();
}
void BXMCController::setClipAspectRatio(std::int32_t code) {
    m_pieces->record.setClipAspectRatio(code);
}
std::optional<std::string> BXMCController::moviePath() const {
    return m_pieces->record.moviePath();
}
void BXMCController::setMoviePath(const std::optional<std::string>& path) {
    m_pieces->record.setMoviePath(path);
}
std::optional<std::string> BXMCController::thumbnailsPath() const {
    return m_pieces->record.thumbnailsPath();
}
void BXMCController::setThumbnailsPath(const std::optional<std::string>& path) {
    m_pieces->turn.enterOrDefer([this, path] { m_pieces->clip.setThumbnailsPath(path); });
}

// --- Devices and the tape transport ---

std::vector<BXMCController::DeviceRef> BXMCController::videoDevices() const {
    return m_pieces->videoDevices.get();
}
void BXMCController::setVideoDevices(std::vector<DeviceRef> devices) {
    m_pieces->announcements.willChangeValueForKey("videoDevices");
    m_pieces->videoDevices.set(std::move(devices));
    m_pieces->announcements.didChangeValueForKey("videoDevices");
}
BXMCController::DeviceRef BXMCController::selectedVideoDevice() const {
    return m_pieces->selection.selectedVideoDevice();
}
void BXMCController::setSelectedVideoDevice(const DeviceRef& device) {
    m_pieces->selection.setSelectedVideoDevice(device);
}
bool BXMCController::hasRecordingDevice() const {
    return m_pieces->selection.hasRecordingDevice();
}
BXMCController::DeviceRef BXMCController::controllableDevice() const {
    return m_pieces->selection.controllableDevice();
}
std::shared_ptr<platform::QTCaptureDeviceInput> BXMCController::videoDeviceInput() const {
    return m_pieces->selection.videoDeviceInput();
}

bool BXMCController::isDevicePlaying() {
    if (m_pieces->transport.isDevicePlaying())
        return true;
    // A controllable device reports its transport; without one nothing is known of the tape.
    if (isRecording() && controllableDevice())
        setRecording(false);
    return false;
}
bool BXMCController::isDevicePause() const {
    return m_pieces->transport.isDevicePause();
}
bool BXMCController::isDeviceRewinding() const {
    return m_pieces->transport.isDeviceRewinding();
}
bool BXMCController::isDeviceFastForwarding() const {
    return m_pieces->transport.isDeviceFastForwarding();
}
void BXMCController::setDevicePlaying(bool playing) {
    m_pieces->recording.setDevicePlaying(playing);
}
void BXMCController::setDeviceRewinding(bool rewinding) {
    m_pieces->transport.setDeviceRewinding(rewinding);
}
void BXMCController::setDeviceFastForwarding(bool forwarding) {
    m_pieces->transport.setDeviceFastForwarding(forwarding);
}
void BXMCController::stopDevice() {
    m_pieces->recording.stopDevice();
}

// --- Settings, presets, compression ---

std::vector<platform::Dictionary> BXMCController::allConfiguration() const {
    return m_pieces->configuration.allConfiguration();
}
void BXMCController::setAllConfiguration(const std::vector<platform::Dictionary>& presets) {
    m_pieces->configuration.setAllConfiguration(presets);
}
void BXMCController::selectConfigurationAtIndex(int index) {
    m_pieces->configuration.selectConfigurationAtIndex(index);
}
void BXMCController::changeConfiguration() {
    m_pieces->configuration.changeConfiguration();
}
void BXMCController::saveCurrentConfiguration() {
    m_pieces->configuration.saveCurrentConfiguration();
}
void BXMCController::deleteCurrentConfiguration() {
    m_pieces->configuration.deleteCurrentConfiguration();
}
bool BXMCController::loadingConfig() const {
    return m_pieces->configuration.loadingConfig();
}
std::int32_t BXMCController::frameSampleInterval() const {
    return m_pieces->configuration.frameSampleInterval();
}
bool BXMCController::captureMovie() const {
    return m_pieces->configuration.captureMovie();
}

void BXMCController::buildVideoCompressionOptions() {
    m_pieces->compression.buildVideoCompressionOptions();
}
std::vector<platform::CompressionOptionsRef> BXMCController::allVideoCompressionOptions() const {
    return m_pieces->compression.allVideoCompressionOptions();
}
platform::CompressionOptionsRef BXMCController::videoCompressionOptions() const {
    return m_pieces->compression.videoCompressionOptions();
}
void BXMCController::setVideoCompressionOptions(const platform::CompressionOptionsRef& choice) {
    m_pieces->compression.setVideoCompressionOptions(choice);
}
bool BXMCController::isCustomVideoCompression() const {
    return m_pieces->compression.isCustomVideoCompression();
}
bool BXMCController::isCompressed() const {
    return m_pieces->compression.isCompressed();
}
void BXMCController::changeCustomCompression() {
    m_pieces->compression.changeCustomCompression();
}
void BXMCController::updateVideoCompression() {
    m_pieces->compression.updateVideoCompression();
}

float BXMCController::captureVolume() const {
    return m_pieces->audioPreviewOutput->volume();
}
void BXMCController::setCaptureVolume(float volume) {
    m_pieces->setCaptureVolume(volume);
}

// --- What the host shows, and the session's pieces ---

std::shared_ptr<platform::QTCaptureView> BXMCController::captureView() const {
    return m_pieces->captureView;
}
std::shared_ptr<platform::View> BXMCController::configurationView() const {
    return m_pieces->interface->view("configurationView");
}
std::shared_ptr<platform::View> BXMCController::devicesView() const {
    return m_pieces->interface->view("devicesView");
}
std::shared_ptr<platform::View> BXMCController::compressionView() const {
    return m_pieces->interface->view("compressionView");
}
std::shared_ptr<platform::View> BXMCController::thumbnailsView() const {
    return m_pieces->interface->view("thumbnailsView");
}
std::shared_ptr<platform::View> BXMCController::controlView() const {
    return m_pieces->interface->view("controlView");
}
std::shared_ptr<BXTimecodeAndDateView> BXMCController::timecodeView() const {
    return m_pieces->timecodeView;
}

BXMCController::SessionRef BXMCController::session() const {
    return m_pieces->session;
}
std::shared_ptr<platform::QTCaptureMovieFileOutput> BXMCController::fileOutput() const {
    return m_pieces->fileOutput;
}
std::shared_ptr<platform::QTCaptureMovieFileOutput> BXMCController::movieFileOutput() const {
    return m_pieces->movieFileOutput;
}

} // namespace merro
