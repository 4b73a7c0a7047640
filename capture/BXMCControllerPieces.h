// How the capture controller is put together: its pieces, in the order in which they need each other, and the
// road of a sample from the outputs to them. Only BXMCController.cpp includes this.
#pragma once

#include "capture/BXMCController.h"
#include "capture/CaptureConfiguration.h"
#include "capture/CurrentClip.h"
#include "capture/DeviceSelection.h"
#include "capture/DeviceTransport.h"
#include "capture/RecordingSwitch.h"
#include "capture/SceneDetector.h"
#include "capture/VideoCompression.h"
#include "platform/Interface.h"

#include <memory>
#include <vector>

namespace merro {

struct BXMCController::Pieces {
    Pieces(BXMCController& face, const platform::Surroundings& given);

    void connectOutputs();
    void addOutputs();
    void captureOutput(platform::QTCaptureMovieFileOutput& output,
                       const platform::QTSampleBuffer& sampleBuffer);
    void switchMovie(const platform::QTSampleBuffer& sampleBuffer, bool hasTurn);
    void deviceSelected();
    void setCaptureVolume(float volume);

    BXMCController& controller;
    platform::Surroundings surroundings;
    platform::KeyValueObserving announcements;
    std::unique_ptr<platform::LoadedInterface> interface;
    std::shared_ptr<platform::QTCaptureView> captureView;
    std::shared_ptr<BXTimecodeAndDateView> timecodeView;

    std::shared_ptr<platform::QTCaptureSession> session;
    std::shared_ptr<platform::QTCaptureVideoPreviewOutput> videoPreviewOutput;
    std::shared_ptr<platform::QTCaptureAudioPreviewOutput> audioPreviewOutput;
    std::shared_ptr<platform::QTCaptureMovieFileOutput> fileOutput;
    std::shared_ptr<platform::QTCaptureMovieFileOutput> movieFileOutput;

    platform::Cell<std::vector<DeviceRef>> videoDevices;
    DeviceSelection selection;
    DeviceTransport transport;
    VideoCompression compression;
    CaptureConfiguration configuration;

    ClipReports reports;
    RecordingState state;
    ClipRecord record;
    ThumbnailsFile thumbnails;
    MovieSwitch movie;
    CurrentClip clip;
    RecordingTurn turn;
    StreamAlert streamAlert;
    EndOfTapeTimer endOfTapeTimer;
    RecordingSwitch recording;
    SceneDetector detector;
};

} // namespace merro
