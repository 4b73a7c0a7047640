// Surroundings for tests of single pieces: everything is a fake that the test can reach, threads are real.
#pragma once

#include "platform/native/Clock.h"
#include "platform/native/HeadlessInterface.h"
#include "platform/native/MemoryUserDefaults.h"
#include "platform/native/Threads.h"
#include "platform/NotificationCenter.h"
#include "platform/Surroundings.h"
#include "tests/support/FakeCapture.h"
#include "tests/support/FakeCompressionComponents.h"
#include "tests/support/Journal.h"
#include "tests/support/ManualTime.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingAlerts.h"
#include "tests/support/RecordingLog.h"

#include <map>
#include <memory>
#include <string>

namespace merro::test {

/// Loads the native interface and keeps a hold of its controls.
class KeptInterfaceLoader : public platform::InterfaceLoader {
public:
    std::string loadedName;
    std::map<std::string, std::shared_ptr<platform::PopUpButton>> popUps;
    std::map<std::string, std::shared_ptr<platform::Button>> buttons;
    std::shared_ptr<platform::native::HeadlessCaptureView> captureView;

    [[nodiscard]] std::unique_ptr<platform::LoadedInterface> load(const std::string& name) override {
        loadedName = name;
        auto interface = m_native.load(name);
        for (const char* outlet : {"configurationPopUp", "compressionPopUp", "sizePopUp"})
            popUps[outlet] = interface->popUpButton(outlet);
        for (const char* outlet : {"rewindButton", "playButton", "recordButton", "forwardButton"})
            buttons[outlet] = interface->button(outlet);
        captureView = std::dynamic_pointer_cast<platform::native::HeadlessCaptureView>(
            interface->captureView("captureView"));
        return interface;
    }

private:
    platform::native::HeadlessInterfaceLoader m_native;
};

struct TestSurroundings {
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();
    ManualClock clock;
    ManualRunLoop runLoop;
    platform::NotificationCenter notifications;
    platform::native::MemoryUserDefaults defaults;
    PlainLocalization localization;
    RecordingLog log;
    RecordingAlerts alerts;
    MemoryFiles files;
    KeptInterfaceLoader interfaces;
    FakeCaptureFramework capture{journal};
    FakeCompressionComponents compression;
    platform::native::Clock realClock;
    platform::native::Threads threads{realClock};

    platform::Surroundings all{clock, runLoop, threads, notifications, defaults, localization,
                               log,   alerts,  files,   interfaces,    capture,  compression};
};

} // namespace merro::test
