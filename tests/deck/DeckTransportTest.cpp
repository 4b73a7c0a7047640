#include "tests/deck/DeckFixture.h"

namespace merro::platform::deck {
namespace {

using testing::ElementsAre;

class DeckTransport : public DeckFixture {
protected:
    /// Notes each notification with the state that the deck reports then: "will 0 0", "did 10000 1".
    void observe() {
        const auto note = [this](const std::string& word) {
            return [this, word](const Notification& notification) {
                EXPECT_TRUE(world.loop.isMainThread());
                EXPECT_EQ(notification.object, static_cast<const QTCaptureDevice*>(deck.get()));
                EXPECT_EQ(find(notification.information, QTCaptureDeviceChangedAttributeKey)->stringValue(),
                          QTCaptureDeviceAVCTransportControlsAttribute);
                notes.push_back(word + " " + std::to_string(state()->speed) + " " +
                                std::to_string(state()->mode) + " after " +
                                std::to_string(receiver.numbers.size()));
            };
        };
        m_will = notifications.addObserver(std::string(QTCaptureDeviceAttributeWillChangeNotification),
                                           nullptr, note("will"));
        m_did = notifications.addObserver(std::string(QTCaptureDeviceAttributeDidChangeNotification), nullptr,
                                          note("did"));
    }

    std::vector<std::string> notes;

private:
    Observation m_will;
    Observation m_did;
};

TEST_F(DeckTransport, anIdealDeckReportsWhatItWasToldAtOnce) {
    load(numberedTape(100));
    EXPECT_EQ(state(), stopped);
    command(playing);
    EXPECT_EQ(state(), playing);
    command(paused);
    EXPECT_EQ(state(), paused);
    command({-13000, 0});
    command(stopped);
    EXPECT_EQ(state(), stopped);
}

TEST_F(DeckTransport, aCamcorderReportsTheStateItHasAndNotTheOneItWasTold) {
    settings.mechanism = MechanismSettings();
    load(numberedTape(100));
    command(playing);
    EXPECT_EQ(state(), stopped);
    letPass(1579ms);
    EXPECT_EQ(state(), stopped);
    letPass(1ms);
    EXPECT_EQ(state(), playing);
}

TEST_F(DeckTransport, eachChangeIsNotifiedOnTheMainThreadAndTheEndOfTheTapeAfterTheLastFrame) {
    load(numberedTape(10));
    observe();
    command(playing);
    letAllHappen();
    EXPECT_THAT(notes, ElementsAre("will 10000 1 after 1", "did 10000 1 after 1", "will 0 0 after 10",
                                   "did 0 0 after 10"));
    EXPECT_EQ(world.clock.now(), 400ms);
}

TEST_F(DeckTransport, theEndOfTheTapeIsNotifiedAfterTheLastFrameThoughTheReceiverIsBusyThen) {
    load(numberedTape(10));
    receiver.then = [this](int number) {
        if (number == 7)
            letPass(2s);
    };
    command(playing);
    letPass(1s);
    observe();
    EXPECT_EQ(state(), stopped); // that is what it is, though frame 9 has not been delivered yet
    letAllHappen();
    EXPECT_EQ(receiver.numbers.back(), 9);
    // The notifications of the start were posted before.
    EXPECT_THAT(notes,
                ElementsAre("will 0 0 after 8", "did 0 0 after 8", "will 0 0 after 9", "did 0 0 after 9"));
}

TEST_F(DeckTransport, theReceiverSeesTheStateOfThisMomentAndCommandsTheDeckFromWithinItsCall) {
    load(numberedTape(100));
    std::vector<std::optional<TransportState>> seen;
    receiver.then = [&](int number) {
        if (number != 5)
            return;
        command(stopped);
        seen.push_back(state());
        command({13000, 0});
        seen.push_back(state());
        letPass(1s);
        command(playing);
        seen.push_back(state());
    };
    command(playing);
    letPass(1210ms);
    EXPECT_THAT(seen,
                ElementsAre(stopped, TransportState{13000, 0}, stopped)); // 30 times 25 frames: at the end
    EXPECT_EQ(receiver.numbers, numbers(0, 5));
    EXPECT_EQ(deck->framesLost(), 0);
}

TEST_F(DeckTransport, windCommandsAreSearchWhilePlayingAndWindsFromStop) {
    settings.mechanism = MechanismSettings();
    load(numberedTape(100));
    command(playing);
    letPass(1600ms);
    command({13000, state()->mode});
    letPass(300ms);
    EXPECT_EQ(state(), (TransportState{13000, 1}));
    EXPECT_GT(receiver.numbers.size(), 1U);
}

TEST_F(DeckTransport, whatIsNoTransportCommandChangesNothing) {
    load(numberedTape(100));
    deck->setAttributeForKey(Value(10000), QTCaptureDeviceAVCTransportControlsAttribute);
    deck->setAttributeForKey(Dictionary{{std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), 10000}},
                             QTCaptureDeviceAVCTransportControlsAttribute);
    deck->setAttributeForKey(Dictionary{}, "another attribute");
    EXPECT_EQ(state(), stopped);
    EXPECT_FALSE(deck->attributeForKey("another attribute"));
    EXPECT_TRUE(deck->attributeIsReadOnly("another attribute"));
    EXPECT_FALSE(deck->attributeIsReadOnly(QTCaptureDeviceAVCTransportControlsAttribute));
}

TEST_F(DeckTransport, isAMuxedDVDevice) {
    settings.uniqueID = "id";
    settings.displayName = "name";
    load(numberedTape(1));
    EXPECT_EQ(deck->uniqueID(), "id");
    EXPECT_EQ(deck->localizedDisplayName(), "name");
    ASSERT_EQ(deck->formatDescriptions().size(), 1U);
    EXPECT_EQ(deck->formatDescriptions()[0].mediaType, MediaType::Muxed);
    EXPECT_EQ(deck->formatDescriptions()[0].formatType, fourCharCode("dvc "));
    EXPECT_TRUE(deck->isOpen());
    deck->close();
    EXPECT_FALSE(deck->isOpen());
}

} // namespace
} // namespace merro::platform::deck
