// A capture controller with everything around it that it asks for: time and threads, settings, files, the
// capture framework, and a deck with a tape.
//
// Made, used and destroyed on the main thread of its world.
#pragma once

#include "capture/BXMCController.h"
#include "host/shared/Movies.h"
#include "host/shared/RunMessages.h"
#include "host/shared/RunWorld.h"
#include "host/shared/TapeSource.h"
#include "platform/CompressionComponent.h"
#include "platform/deck/Deck.h"
#include "platform/native/BackgroundFiles.h"
#include "platform/native/HeadlessInterface.h"
#include "platform/native/Localization.h"
#include "platform/native/OverriddenUserDefaults.h"
#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"

#include <memory>

namespace merro::host {

/// A program without a screen has no compression dialog.
class NoCompressionComponents final : public platform::CompressionComponents {
public:
    [[nodiscard]] std::unique_ptr<platform::CompressionComponent>
    openDefaultComponent(std::uint32_t type, std::uint32_t subType) override;
};

class CaptureStage {
public:
    /// `stored` and `messages` outlive the stage. Settings that `stored` lacks are written to it; afterwards
    /// the settings belong to this stage alone.
    CaptureStage(RunTime time, platform::UserDefaults& stored, RunMessages& messages,
                 platform::session::CaptureEvents captureEvents,
                 platform::native::BackgroundFilesEvents filesEvents);
    ~CaptureStage(); ///< closes

    CaptureStage(const CaptureStage&) = delete;
    CaptureStage& operator=(const CaptureStage&) = delete;

    /// Puts the tape into a deck, stopped at its start, and has the controller choose it. Once.
    std::shared_ptr<platform::deck::Deck> insertTape(TapeSource& source);

    [[nodiscard]] BXMCController& controller() { return *m_controller; }
    [[nodiscard]] platform::native::OverriddenUserDefaults& defaults() { return m_defaults; }
    [[nodiscard]] platform::MainRunLoop& runLoop() { return m_world->runLoop(); }
    [[nodiscard]] platform::native::BackgroundFiles& files() { return m_files; }

    /// Frames lost so far, on their way from the device and in front of a slow or full disk. Any thread.
    [[nodiscard]] std::int64_t framesLost() const { return m_framework->framesLost(); }

    /// Ends delivery and waits until movies and files are whole. Afterwards there is no controller, and none
    /// of the events is told any more.
    void close();

private:
    [[nodiscard]] platform::Surroundings surroundings();

    const RunTime m_time;
    RunMessages& m_messages;
    RunLog m_log{m_messages};
    LineAlerts m_alerts{m_messages};
    std::unique_ptr<RunWorld> m_world;
    platform::NotificationCenter m_notifications;
    platform::native::OverriddenUserDefaults m_defaults;
    platform::native::Localization m_localization;
    platform::native::HeadlessInterfaceLoader m_interfaces;
    NoCompressionComponents m_compression;
    MovieRecorders m_recorders;
    platform::native::BackgroundFiles m_files;
    std::unique_ptr<platform::session::CaptureFramework> m_framework;
    std::shared_ptr<platform::deck::Deck> m_deck;
    std::unique_ptr<BXMCController> m_controller; ///< the last is the first to go
};

} // namespace merro::host
