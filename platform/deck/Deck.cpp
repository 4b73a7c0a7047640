#include "platform/deck/Deck.h"

#include "platform/deck/DeckDrive.h"
#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"

#include <utility>

namespace merro::platform::deck {

namespace {

void postBothNotifications(NotificationCenter& notifications, const QTCaptureDevice& device) {
    const Dictionary information{{std::string(QTCaptureDeviceChangedAttributeKey),
                                  std::string(QTCaptureDeviceAVCTransportControlsAttribute)}};
    for (const auto name :
         {QTCaptureDeviceAttributeWillChangeNotification, QTCaptureDeviceAttributeDidChangeNotification})
        notifications.post({std::string(name), &device, information});
}

} // namespace

std::shared_ptr<Deck> makeDeck(Clock& clock, Threads& threads, RunLoop& runLoop,
                               NotificationCenter& notifications, std::unique_ptr<Tape> tape,
                               DeckSettings settings) {
    auto deck = std::make_shared<Deck>(Deck::Key{});
    auto stateChanged = [&runLoop, &notifications, weak = std::weak_ptr(deck)] {
        runLoop.post([&notifications, weak] {
            if (const auto alive = weak.lock())
                postBothNotifications(notifications, *alive);
        });
    };
    auto drive = std::make_shared<DeckDrive>(clock, threads, std::move(tape), std::move(settings),
                                             std::move(stateChanged));
    deck->m_drive = drive;
    threads.detach("deck", [drive] { drive->run(); });
    return deck;
}

Deck::~Deck() {
    m_drive->quit();
}

DeckPosition Deck::position() const {
    return m_drive->position();
}

std::int64_t Deck::framesLost() const {
    return m_drive->framesLost();
}

std::int64_t Deck::refusedCommands() const {
    return m_drive->refusedCommands();
}

std::vector<TapeFinding> Deck::findings() const {
    return m_drive->tape().findings();
}

std::string Deck::uniqueID() const {
    return m_drive->settings().uniqueID;
}

std::string Deck::localizedDisplayName() const {
    return m_drive->settings().displayName;
}

std::vector<FormatDescription> Deck::formatDescriptions() const {
    return {{MediaType::Muxed, fourCharCode("dvc ")}};
}

std::optional<Error> Deck::open() {
    if (m_drive->open())
        return std::nullopt;
    return Error{"\"" + localizedDisplayName() + "\" cannot be opened because it is not connected",
                 "check its cable and that it is switched on"};
}

void Deck::close() {
    m_drive->close();
}

std::optional<Value> Deck::attributeForKey(std::string_view key) const {
    if (key != QTCaptureDeviceAVCTransportControlsAttribute)
        return std::nullopt;
    const std::optional<TransportState> state = m_drive->state();
    if (!state)
        return std::nullopt;
    return Dictionary{{std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), state->speed},
                      {std::string(QTCaptureDeviceAVCTransportControlsPlaybackModeKey), state->mode}};
}

bool Deck::attributeIsReadOnly(std::string_view key) const {
    return key != QTCaptureDeviceAVCTransportControlsAttribute;
}

void Deck::setAttributeForKey(const Value& value, std::string_view key) {
    const auto* wanted = value.getIf<Dictionary>();
    if (key != QTCaptureDeviceAVCTransportControlsAttribute || wanted == nullptr)
        return;
    const Value* speed = find(*wanted, QTCaptureDeviceAVCTransportControlsSpeedKey);
    const Value* mode = find(*wanted, QTCaptureDeviceAVCTransportControlsPlaybackModeKey);
    if (speed != nullptr && mode != nullptr)
        m_drive->command({speed->integerValue(), mode->integerValue()});
}

bool Deck::isOpen() const {
    return m_drive->isOpen();
}

void Deck::setReceiver(session::FrameReceiver* receiver) {
    m_drive->setReceiver(receiver);
}

void Deck::waitForReceiver() {
    m_drive->waitForReceiver();
}

} // namespace merro::platform::deck
