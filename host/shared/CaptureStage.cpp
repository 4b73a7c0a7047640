#include "host/shared/CaptureStage.h"

#include "host/shared/RunSettings.h"
#include "platform/Surroundings.h"

#include <utility>

namespace merro::host {

using platform::session::WhenFull;

namespace {

/// In real time the tape begins to move a moment after the command, as a camcorder's does; by then whoever
/// waits for its first frame is listening.
constexpr platform::Duration kStartingTime = std::chrono::milliseconds(250);

WhenFull whenFull(RunTime time) {
    return time == RunTime::Real ? WhenFull::LoseFrame : WhenFull::Wait;
}

platform::native::BackgroundFilesLimits limits(RunTime time) {
    platform::native::BackgroundFilesLimits limits;
    limits.whenFull = whenFull(time);
    return limits;
}

} // namespace

std::unique_ptr<platform::CompressionComponent>
NoCompressionComponents::openDefaultComponent(std::uint32_t /*type*/, std::uint32_t /*subType*/) {
    return nullptr;
}

CaptureStage::CaptureStage(RunTime time, platform::UserDefaults& stored, RunMessages& messages,
                           platform::session::CaptureEvents captureEvents,
                           platform::native::BackgroundFilesEvents filesEvents)
    : m_time(time), m_messages(messages), m_world(makeRunWorld(time)), m_defaults(stored),
      m_files(std::move(filesEvents), limits(time)) {
    platform::setProcessLog(&m_log);
    m_framework = std::make_unique<platform::session::CaptureFramework>(
        m_world->threads(), m_world->runLoop(), m_notifications, &m_recorders, whenFull(time),
        std::move(captureEvents));
    m_controller = std::make_unique<BXMCController>(surroundings());
    holdSettingsForThisRun(m_defaults);
}

CaptureStage::~CaptureStage() {
    close();
    platform::setProcessLog(nullptr);
}

platform::Surroundings CaptureStage::surroundings() {
    return {m_world->clock(),
            m_world->runLoop(),
            m_world->threads(),
            m_notifications,
            m_defaults,
            m_localization,
            m_log,
            m_alerts,
            m_files,
            m_interfaces,
            *m_framework,
            m_compression};
}

std::shared_ptr<platform::deck::Deck> CaptureStage::insertTape(TapeSource& source) {
    platform::deck::DeckSettings settings;
    settings.uniqueID = source.path;
    settings.displayName = source.name;
    settings.mechanism = platform::deck::MechanismSettings::ideal();
    if (m_time == RunTime::Real)
        settings.mechanism.reaction = kStartingTime;
    m_deck = platform::deck::makeDeck(m_world->clock(), m_world->threads(), m_world->runLoop(),
                                      m_notifications, std::move(source.tape), std::move(settings));
    m_framework->addDevice(m_deck);
    m_controller->setVideoDevices({m_deck});
    m_controller->setSelectedVideoDevice(m_deck);
    return m_deck;
}

void CaptureStage::close() {
    m_controller.reset();
    m_deck.reset();
    m_framework.reset();
    m_files.drain();
}

} // namespace merro::host
