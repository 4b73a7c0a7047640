#include "capture/QTCustomCompressionOptions.h"
#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using Controller = LoggingFixture;

TEST_F(Controller, loadsItsInterfaceAndLaysTheOverlayOverThePicture) {
    EXPECT_EQ(surroundings.interfaces.loadedName, "capture.nib");
    ASSERT_NE(controller->captureView(), nullptr);
    EXPECT_EQ(surroundings.interfaces.captureView->captureSession(), controller->session());
    ASSERT_EQ(surroundings.interfaces.captureView->overlayViews().size(), 1U);
    EXPECT_EQ(surroundings.interfaces.captureView->overlayViews()[0], controller->timecodeView());
    EXPECT_EQ(controller->timecodeView()->frame(), (platform::Rect{0, 0, 640, 480}));
    EXPECT_NE(controller->configurationView(), nullptr);
    EXPECT_NE(controller->devicesView(), nullptr);
    EXPECT_NE(controller->compressionView(), nullptr);
    EXPECT_NE(controller->thumbnailsView(), nullptr);
    EXPECT_NE(controller->controlView(), nullptr);
}

TEST_F(Controller, givesTheSessionItsOutputsInOrder) {
    const auto outputs = surroundings.capture.session->outputs();
    ASSERT_EQ(outputs.size(), 4U);
    EXPECT_NE(std::dynamic_pointer_cast<platform::QTCaptureVideoPreviewOutput>(outputs[0]), nullptr);
    EXPECT_EQ(outputs[1], surroundings.capture.audioPreviewOutput);
    EXPECT_EQ(outputs[2], controller->fileOutput());
    EXPECT_EQ(outputs[3], controller->movieFileOutput());
}

TEST_F(Controller, choosesNoDeviceAndRunsNoSessionByItself) {
    EXPECT_EQ(controller->selectedVideoDevice(), nullptr);
    EXPECT_FALSE(controller->hasRecordingDevice());
    EXPECT_FALSE(controller->session()->isRunning());
    EXPECT_FALSE(controller->isRecording());
}

TEST_F(Controller, storesTheFirstValuesOfTheSettings) {
    EXPECT_EQ(surroundings.defaults.objectForKey(BXMCDetectScene), platform::Value(true));
    EXPECT_EQ(surroundings.defaults.objectForKey(BXMCDetectEndTapeSecond), platform::Value(1));
}

TEST_F(Controller, theVolumeIsHalfAtFirstAndRememberedFromThenOn) {
    EXPECT_EQ(controller->captureVolume(), 0.5F);
    EXPECT_EQ(surroundings.defaults.doubleForKey(BXMCCaptureMovieVolume), 0.5);
    controller->setCaptureVolume(0.25F);
    EXPECT_EQ(surroundings.capture.audioPreviewOutput->volume(), 0.25F);
    EXPECT_EQ(surroundings.defaults.doubleForKey(BXMCCaptureMovieVolume), 0.25);
    controller.reset();
    controller = std::make_unique<BXMCController>(surroundings.all);
    EXPECT_EQ(surroundings.capture.audioPreviewOutput->volume(), 0.25F);
}

TEST_F(Controller, holdsTheDevicesThatTheHostHandsOver) {
    Entries announced;
    const auto observation = controller->announcements().addObserver(
        "videoDevices", [&](const std::string& key, platform::Change) { announced.push_back(key); });
    controller->setVideoDevices({deck});
    EXPECT_EQ(controller->videoDevices(), (std::vector<BXMCController::DeviceRef>{deck}));
    EXPECT_EQ(announced.size(), 2U);
}

TEST_F(Controller, aDeviceThatIsChosenIsOpenedAndTheCurrentTimecodeForgotten) {
    deliver("01:00:00:00", "10:00:00");
    connectDeck();
    EXPECT_TRUE(deck->isOpen());
    EXPECT_EQ(controller->selectedVideoDevice(), deck);
    EXPECT_EQ(text(controller->currentTimecodeValue()), "-");
    EXPECT_EQ(controller->timecodeView()->timecode(), SMPTETime{});
}

TEST_F(Controller, choosingADeviceSwitchesItsButtonOnAndNoneOff) {
    const auto& buttons = surroundings.interfaces.buttons;
    connectDeck({13000, 1});
    EXPECT_TRUE(buttons.at("forwardButton")->state());
    EXPECT_FALSE(buttons.at("playButton")->state());
    connectDeck(kPlaying);
    EXPECT_TRUE(buttons.at("playButton")->state());
    connectDeck({-13000, 0});
    EXPECT_TRUE(buttons.at("rewindButton")->state());
    EXPECT_TRUE(buttons.at("forwardButton")->state());
    EXPECT_FALSE(buttons.at("recordButton")->state());
}

TEST_F(Controller, choosingNoDeviceWhileRecordingSwitchesTheRecordButtonOnAtMost) {
    controller->setRecording(true);
    controller->setSelectedVideoDevice(nullptr);
    const auto& buttons = surroundings.interfaces.buttons;
    EXPECT_TRUE(buttons.at("recordButton")->state());
    EXPECT_FALSE(buttons.at("playButton")->state());
    EXPECT_FALSE(buttons.at("rewindButton")->state());
    EXPECT_FALSE(buttons.at("forwardButton")->state());
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(Controller, choosingADeckThatDoesNotPlayEndsARecording) {
    controller->setRecording(true);
    connectDeck(kPaused);
    EXPECT_FALSE(controller->isRecording());
    EXPECT_FALSE(surroundings.interfaces.buttons.at("recordButton")->state());
}

TEST_F(Controller, choosingAPlayingDeckWhileRecordingSwitchesTheRecordButtonOnToo) {
    controller->setRecording(true);
    connectDeck(kPlaying);
    EXPECT_TRUE(controller->isRecording());
    EXPECT_TRUE(surroundings.interfaces.buttons.at("recordButton")->state());
}

TEST_F(Controller, choosingADeviceAppliesTheCompressionToIt) {
    const auto& output = *surroundings.capture.movieFileOutputs[1];
    const auto applied = output.compressionOptions().size();
    connectDeck();
    EXPECT_EQ(output.compressionOptions().size(), applied + 1);
}

TEST_F(Controller, drivesTheTape) {
    connectDeck(kPaused);
    controller->setDeviceRewinding(true);
    EXPECT_TRUE(controller->isDeviceRewinding());
    controller->setDeviceFastForwarding(true);
    EXPECT_TRUE(controller->isDeviceFastForwarding());
    controller->setDevicePlaying(true);
    EXPECT_TRUE(controller->isDevicePlaying());
    controller->setDevicePlaying(false);
    EXPECT_TRUE(controller->isDevicePause());
    controller->stopDevice();
    controller->setDeviceRewinding(true);
    EXPECT_EQ(deck->commands(),
              (std::vector<Transport>{{-13000, 1}, {13000, 1}, {10000, 1}, {0, 1}, {0, 0}, {-13000, 0}}));
    EXPECT_FALSE(controller->session()->isRunning());
}

TEST_F(Controller, announcesWhatFollowsFromTheDeviceAndItsTransport) {
    Entries announced;
    const auto observation =
        controller->announcements().addObserver("", [&](const std::string& key, platform::Change change) {
            if (change == platform::Change::Did)
                announced.push_back(key);
        });
    connectDeck();
    EXPECT_EQ(announced, (Entries{"selectedVideoDevice", "hasRecordingDevice", "controllableDevice",
                                  "videoDeviceInput"}));
    announced.clear();
    deck->postAttributeNotification(surroundings.notifications,
                                    platform::QTCaptureDeviceAttributeDidChangeNotification,
                                    platform::QTCaptureDeviceAVCTransportControlsAttribute);
    EXPECT_EQ(announced, (Entries{"devicePlaying", "deviceFastForwarding", "deviceRewinding"}));
}

// --- Reading "is the device playing?" ---

TEST_F(Controller, readingIsDevicePlayingEndsARecordingOnceTheTapeIsNotInNormalPlay) {
    connectDeck();
    controller->setRecording(true);
    EXPECT_TRUE(controller->isDevicePlaying());
    EXPECT_TRUE(controller->isRecording());
    deck->report(kPaused);
    EXPECT_FALSE(controller->isDevicePlaying());
    EXPECT_FALSE(controller->isRecording());
    EXPECT_EQ(messages(), (Entries{"begin", "will 1", "did 1", "end"}));
}

TEST_F(Controller, readingIsDevicePlayingWithoutADeckToDriveAnswersFalseAndEndsNothing) {
    controller->setRecording(true);
    EXPECT_FALSE(controller->isDevicePlaying());
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(Controller, readingIsDevicePlayingEndsNothingWhereTheDeckCannotBeDriven) {
    connectDeck();
    controller->setRecording(true);
    deck->report(kPaused);
    deck->transportIsReadOnly = true;
    EXPECT_FALSE(controller->isDevicePlaying());
    deck->transportIsReadOnly = false;
    deck->hasTransport = false;
    EXPECT_FALSE(controller->isDevicePlaying());
    EXPECT_TRUE(controller->isRecording());
}

TEST_F(Controller, readingTheOtherTransportPropertiesEndsNothing) {
    connectDeck();
    controller->setRecording(true);
    deck->report(kPaused);
    EXPECT_TRUE(controller->isDevicePause());
    EXPECT_FALSE(controller->isDeviceRewinding());
    EXPECT_FALSE(controller->isDeviceFastForwarding());
    EXPECT_TRUE(controller->isRecording());
}

// --- Which output feeds detection ---

TEST_F(Controller, withoutCompressionTheMovieFileOutputFeedsDetection) {
    const auto& outputs = surroundings.capture.movieFileOutputs;
    outputs[0]->deliver(makeFrame("01:00:00:00", ""));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "-");
    outputs[1]->deliver(makeFrame("01:00:00:00", ""));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "01:00:00:00");
}

TEST_F(Controller, withCompressionTheOtherOutputFeedsDetection) {
    const auto& outputs = surroundings.capture.movieFileOutputs;
    controller->setVideoCompressionOptions(QTCustomCompressionOptions::customCompressionOptions());
    outputs[1]->deliver(makeFrame("01:00:00:00", ""));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "-");
    outputs[0]->deliver(makeFrame("01:00:00:00", ""));
    EXPECT_EQ(text(controller->currentTimecodeValue()), "01:00:00:00");
}

TEST_F(Controller, moviesAreSwitchedByTheFramesOfTheMovieFileOutputWithCompressionToo) {
    controller->setVideoCompressionOptions(QTCustomCompressionOptions::customCompressionOptions());
    connectDeck();
    controller->setRecording(true);
    const auto frame = makeFrame("01:00:00:00", "10:00:00");
    surroundings.capture.movieFileOutputs[0]->deliver(frame);
    EXPECT_TRUE(movies().empty());
    surroundings.capture.movieFileOutputs[1]->deliver(frame);
    EXPECT_EQ(movies(), (Entries{"/1.mov"}));
}

TEST_F(Controller, soundAndEmptySamplesAreNoFrames) {
    platform::QTSampleBuffer sample = makeFrame("01:00:00:00", "10:00:00");
    sample.mediaType = platform::MediaType::Sound;
    deliver(sample);
    deliver({platform::MediaType::Video, {}, timecode("01:00:00:00")});
    EXPECT_EQ(text(controller->currentTimecodeValue()), "-");
    EXPECT_TRUE(surroundings.alerts.shown().empty());
}

TEST_F(Controller, theMovieIsNotSwitchedWhileNothingIsRecorded) {
    controller->setTimecodeStartValue(timecode("00:00:00:00"));
    deliver("01:00:00:00", "10:00:00");
    EXPECT_TRUE(movies().empty());
}

// --- What a host may set by hand ---

TEST_F(Controller, keepsWhatIsSetByHand) {
    const auto date = platform::dateFromCalendar({2005, 3, 17, 10, 0, 0});
    controller->setCurrentTimecodeValue(timecode("00:00:00:01"));
    controller->setCurrentDate(date);
    controller->setLastTimecodeValue(timecode("00:00:00:02"));
    controller->setTimecodeStartValue(timecode("00:00:00:03"));
    controller->setTimecodeEndValue(timecode("00:00:00:04"));
    controller->setStartTimecode(timecode("00:00:00:05").SMPTETimeValue());
    controller->setIsPrerolling(true);
    controller->setProcessNote("note");
    controller->setClipId(platform::Value(7));
    controller->setClipRecordingDate(date);
    controller->setClipAspectRatio(1);
    EXPECT_EQ(text(controller->currentTimecodeValue()), "00:00:00:01");
    EXPECT_EQ(controller->timecodeView()->timecode().mFrames, 1) << "shown over the picture";
    EXPECT_EQ(controller->currentDate(), date);
    EXPECT_EQ(controller->timecodeView()->date(), date);
    EXPECT_EQ(text(controller->lastTimecodeValue()), "00:00:00:02");
    EXPECT_EQ(text(controller->timecodeStartValue()), "00:00:00:03");
    EXPECT_EQ(text(controller->timecodeEndValue()), "00:00:00:04");
    EXPECT_EQ(controller->startTimecode(), timecode("00:00:00:05").SMPTETimeValue());
    EXPECT_TRUE(controller->isPrerolling());
    EXPECT_EQ(controller->processNote(), "note");
    EXPECT_EQ(controller->clipId(), platform::Value(7));
    EXPECT_EQ(controller->clipRecordingDate(), date);
    EXPECT_EQ(controller->clipAspectRatio(), 1);
}

TEST_F(Controller, theEndOfAClipSetByHandSetsItsDuration) {
    controller->setClipStartTimecode(timecode("00:00:01:20"));
    controller->setClipEndTimecode(timecode("00:00:03:10"));
    // 10 - 20 frames borrow a second of 25: 15 frames, 3 - 1 - 1 seconds
    EXPECT_EQ(text(controller->clipDuration()), "00:00:01:15");
    controller->setClipDuration(timecode("00:00:09:00"));
    EXPECT_EQ(text(controller->clipDuration()), "00:00:09:00");
}

TEST_F(Controller, aLastFrameSetByHandEndsTheThumbnailsFile) {
    controller->setThumbnailsPath("/by hand");
    const auto frame = makeFrame("00:00:00:00", "");
    controller->setLastFrameData(frame.bytesForAllSamples);
    controller->setThumbnailsPath(std::nullopt);
    EXPECT_EQ(framesIn("/by hand"), (std::vector<int>{0}));
    EXPECT_TRUE(controller->lastFrameData().isNull());
}

// --- Presets ---

TEST_F(Controller, savesAndDeletesPresetsThroughTheHost) {
    platform::Dictionary saved;
    std::string deleted;
    host->mccontrollerSaveConfiguration = [&](BXMCController&, const platform::Dictionary& preset) {
        saved = preset;
    };
    host->mccontrollerDeleteConfigurationName = [&](BXMCController&, const std::string& name) {
        deleted = name;
    };
    controller->setAllConfiguration({{{std::string(BXMCConfName), "mine"}}});
    controller->saveCurrentConfiguration();
    EXPECT_NE(platform::find(saved, BXMCConfDetectScene), nullptr);
    controller->selectConfigurationAtIndex(1);
    controller->deleteCurrentConfiguration();
    EXPECT_EQ(deleted, "mine");
}

// A host that answers only the deletion never hears of it.
TEST_F(Controller, asksOnlyAHostThatAnswersSavingToDelete) {
    int deletions = 0;
    const auto countDeletion = [&](BXMCController&, const std::string&) { ++deletions; };
    controller->setAllConfiguration({{{std::string(BXMCConfName), "mine"}}});
    controller->selectConfigurationAtIndex(1);

    host->mccontrollerDeleteConfigurationName = countDeletion;
    controller->deleteCurrentConfiguration();
    controller->saveCurrentConfiguration();
    EXPECT_EQ(deletions, 0);

    host->mccontrollerSaveConfiguration = [](BXMCController&, const platform::Dictionary&) {};
    controller->deleteCurrentConfiguration();
    EXPECT_EQ(deletions, 1);

    host->mccontrollerDeleteConfigurationName = {};
    controller->deleteCurrentConfiguration();
    host.reset();
    controller->deleteCurrentConfiguration();
    controller->saveCurrentConfiguration();
    EXPECT_EQ(deletions, 1);
}

TEST_F(Controller, loadsAPresetAndShowsWhenItIsNoLongerWhatIsSet) {
    const platform::Dictionary preset{{std::string(BXMCConfName), "mine"},
                                      {std::string(BXMCConfSampleInterval), 5},
                                      {std::string(BXMCConfCaptureMovie), false}};
    controller->setAllConfiguration({preset});
    EXPECT_EQ(controller->allConfiguration(), (std::vector<platform::Dictionary>{preset}));

    controller->selectConfigurationAtIndex(1);
    EXPECT_EQ(controller->frameSampleInterval(), 5);
    EXPECT_FALSE(controller->captureMovie());
    EXPECT_FALSE(controller->loadingConfig());
    const auto& popUp = surroundings.interfaces.popUps.at("configurationPopUp");
    EXPECT_EQ(popUp->indexOfSelectedItem(), 1);

    set(BXMCDetectScene, false);
    EXPECT_EQ(popUp->indexOfSelectedItem(), 0);

    set(BXMCSampleInterval, 0);
    popUp->selectItemAtIndex(1);
    controller->changeConfiguration();
    EXPECT_EQ(controller->frameSampleInterval(), 5);
}

// --- Teardown ---

TEST_F(Controller, destroyedWhileRecordingClosesTheFilesAndReportsNothing) {
    connectDeck();
    set(BXMCDetectEndTape, true);
    controller->setRecording(true);
    deliverRun(3, "01:00:00:00", "10:00:00");
    surroundings.runLoop.runPosted();
    deliver("01:00:00:03", "10:00:00");
    const auto fileOutput = controller->fileOutput();
    controller.reset();
    EXPECT_EQ(messages(), (Entries{"begin", "will 1"}));
    EXPECT_EQ(surroundings.files.file(thumbnails(1)).openNow, 0);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 3}));
    EXPECT_EQ(movies(), (Entries{"/1.mov", "nothing"}));
    EXPECT_FALSE(deck->isOpen());
    EXPECT_FALSE(surroundings.capture.session->isRunning());
    EXPECT_TRUE(surroundings.interfaces.captureView->overlayViews().empty());
    EXPECT_EQ(surroundings.interfaces.captureView->captureSession(), nullptr);
    // Nothing that is still under way finds its way to the controller that is gone.
    surroundings.runLoop.runPosted();
    EXPECT_TRUE(surroundings.runLoop.timers().empty());
    deliver("01:00:00:04", "10:00:00");
    set(BXMCDetectScene, false);
    deck->postAttributeNotification(surroundings.notifications,
                                    platform::QTCaptureDeviceAttributeDidChangeNotification,
                                    platform::QTCaptureDeviceAVCTransportControlsAttribute);
}

TEST_F(Controller, anInterfaceWithoutOutletsIsNoHindrance) {
    struct Empty : platform::InterfaceLoader {
        std::unique_ptr<platform::LoadedInterface> load(const std::string&) override {
            return std::make_unique<platform::native::HeadlessInterface>();
        }
    } empty;
    controller.reset();
    platform::Surroundings bare{surroundings.clock,    surroundings.runLoop,
                                surroundings.threads,  surroundings.notifications,
                                surroundings.defaults, surroundings.localization,
                                surroundings.log,      surroundings.alerts,
                                surroundings.files,    empty,
                                surroundings.capture,  surroundings.compression};
    BXMCController withoutOutlets(bare);
    withoutOutlets.setSelectedVideoDevice(deck);
    withoutOutlets.setRecording(true);
    EXPECT_EQ(withoutOutlets.captureView(), nullptr);
}

} // namespace
} // namespace merro::test
