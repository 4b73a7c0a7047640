// What every QTCaptureSession promises, in real and in virtual time.
#include "tests/session/SessionFixture.h"

#include <atomic>

namespace merro::test {
namespace {

using platform::MediaType;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename World>
class CaptureSessionContract : public SessionFixture<World> {};
TYPED_TEST_SUITE(CaptureSessionContract, platform::Worlds, platform::WorldNames);

TYPED_TEST(CaptureSessionContract, samplesGoToTheOutputsInTheOrderInWhichTheseWereAdded) {
    this->addOutput("first");
    this->addOutput("second");
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("first 1", "second 1", "first 2", "second 2"));
}

TYPED_TEST(CaptureSessionContract, anOutputAddedTwiceReceivesEverySampleOnce) {
    const auto output = this->addOutput("first");
    this->session->addOutput(output);
    this->start();
    this->device->send(1);
    EXPECT_THAT(this->journal->entries(), ElementsAre("first 1"));
}

TYPED_TEST(CaptureSessionContract, aRemovedOutputReceivesNothing) {
    const auto output = this->addOutput("first");
    this->addOutput("second");
    this->start();
    this->session->removeOutput(output);
    this->device->send(1);
    EXPECT_THAT(this->journal->entries(), ElementsAre("second 1"));
}

TYPED_TEST(CaptureSessionContract, samplesAreDeliveredOnlyWhileTheSessionRuns) {
    this->addOutput("output");
    EXPECT_FALSE(this->session->addInput(this->input));
    this->device->send(1);
    this->session->startRunning();
    EXPECT_TRUE(this->session->isRunning());
    this->device->send(2);
    this->session->stopRunning();
    EXPECT_FALSE(this->session->isRunning());
    this->device->send(3);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 2"));
}

TYPED_TEST(CaptureSessionContract, anInputAddedToARunningSessionDelivers) {
    this->addOutput("output");
    this->session->startRunning();
    EXPECT_FALSE(this->session->addInput(this->input));
    this->device->send(1);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1"));
}

TYPED_TEST(CaptureSessionContract, aSecondInputIsRefusedUntilTheFirstIsRemoved) {
    EXPECT_FALSE(this->session->addInput(this->input));
    const auto other = std::make_shared<ManualDevice>(this->world.threads, "other");
    ASSERT_FALSE(other->open());
    const auto otherInput = this->framework->makeDeviceInput(other);
    EXPECT_TRUE(this->session->addInput(otherInput));
    EXPECT_THAT(this->session->inputs(), ElementsAre(this->input));
    this->session->removeInput(this->input);
    EXPECT_THAT(this->session->inputs(), IsEmpty());
    EXPECT_FALSE(this->session->addInput(otherInput));
}

TYPED_TEST(CaptureSessionContract, aDeviceThatIsNotOpenIsRefusedByName) {
    this->device->close();
    const auto error = this->session->addInput(this->input);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->text(), "\"camcorder\" cannot be used because it is not open: open the device first");
}

TYPED_TEST(CaptureSessionContract, aRemovedInputDeliversNothing) {
    this->addOutput("output");
    this->start();
    this->session->removeInput(this->input);
    this->device->send(1);
    EXPECT_THAT(this->journal->entries(), IsEmpty());
}

/// Delivers one sample on another thread, whose callback takes a while, and calls `stop` meanwhile.
template <typename Fixture>
void stopDuringCallback(Fixture& self, platform::Threads& threads, platform::Clock& clock,
                        ManualDevice& device, platform::QTCaptureMovieFileOutput& output,
                        const std::function<void()>& stop) {
    const std::shared_ptr<platform::ConditionLock> entered = threads.makeConditionLock(0);
    std::atomic<bool> returned = false;
    platform::QTCaptureFileOutputDelegate delegate;
    delegate.didOutputSampleBuffer = [&](auto&, auto&, auto&) {
        entered->lock();
        entered->unlockWithCondition(1);
        clock.sleepFor(5ms);
        returned = true;
    };
    output.setDelegate(delegate);
    const auto waitForDelivery = self([&] { device.send(1); });
    entered->lockWhenCondition(1);
    entered->unlock();
    stop();
    EXPECT_TRUE(returned);
    waitForDelivery();
}

TYPED_TEST(CaptureSessionContract, stopRunningWaitsForTheCallbackUnderWay) {
    const auto output = this->addOutput("output");
    this->start();
    const auto other = [this](auto body) { return this->onOtherThread(body); };
    stopDuringCallback(other, this->world.threads, this->world.clock, *this->device, *output,
                       [this] { this->session->stopRunning(); });
}

TYPED_TEST(CaptureSessionContract, removeInputWaitsForTheCallbackUnderWay) {
    const auto output = this->addOutput("output");
    this->start();
    const auto other = [this](auto body) { return this->onOtherThread(body); };
    stopDuringCallback(other, this->world.threads, this->world.clock, *this->device, *output,
                       [this] { this->session->removeInput(this->input); });
}

TYPED_TEST(CaptureSessionContract, removeOutputWaitsForTheCallbackUnderWay) {
    const auto output = this->addOutput("output");
    this->start();
    const auto other = [this](auto body) { return this->onOtherThread(body); };
    stopDuringCallback(other, this->world.threads, this->world.clock, *this->device, *output,
                       [&, this] { this->session->removeOutput(output); });
}

TYPED_TEST(CaptureSessionContract, setDelegateWaitsForTheCallbackUnderWay) {
    const auto output = this->addOutput("output");
    this->start();
    const auto other = [this](auto body) { return this->onOtherThread(body); };
    stopDuringCallback(other, this->world.threads, this->world.clock, *this->device, *output,
                       [&] { output->setDelegate({}); });
}

TYPED_TEST(CaptureSessionContract, aCallbackMayStopTheSessionAndTheSampleGoesNoFurther) {
    this->addOutput("first", [this](int) { this->session->stopRunning(); });
    this->addOutput("second");
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("first 1"));
    this->session->startRunning();
    this->device->send(3);
    EXPECT_THAT(this->journal->entries(), ElementsAre("first 1", "first 3"));
}

TYPED_TEST(CaptureSessionContract, aCallbackMayRemoveTheInputAndItsOwnDelegate) {
    const auto output = this->framework->makeMovieFileOutput();
    output->setDelegate(this->journalDelegate("output", [&, this](int) {
        this->session->removeInput(this->input);
        output->setDelegate({});
    }));
    this->session->addOutput(output);
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1"));
}

TYPED_TEST(CaptureSessionContract, framesLostByTheDeviceAreToldAndAddedUp) {
    this->addOutput("output");
    this->start();
    this->device->send(1, 3);
    this->device->send(2);
    this->device->send(3, 4);
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("lost 3", "output 1", "output 2", "lost 4", "output 3"));
    EXPECT_EQ(this->framework->framesLost(), 7);
}

TYPED_TEST(CaptureSessionContract, theSessionMayBeLetGoOfWithinACallback) {
    this->addOutput("output", [this](int) { this->session.reset(); });
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1"));
}

TYPED_TEST(CaptureSessionContract, devicesAreListedByMediumInTheOrderOfConnecting) {
    const auto microphone = std::make_shared<ManualDevice>(this->world.threads, "microphone");
    microphone->formats = {{MediaType::Sound, 0}};
    const auto second = std::make_shared<ManualDevice>(this->world.threads, "second");
    this->framework->addDevice(this->device);
    this->framework->addDevice(microphone);
    this->framework->addDevice(second);
    this->framework->addDevice(this->device);
    EXPECT_THAT(this->framework->inputDevicesWithMediaType(MediaType::Muxed),
                ElementsAre(this->device, second));
    this->framework->removeDevice(this->device);
    EXPECT_THAT(this->framework->inputDevicesWithMediaType(MediaType::Muxed), ElementsAre(second));
}

TYPED_TEST(CaptureSessionContract, connectingAndDisconnectingIsPostedOnceOnTheMainThread) {
    const auto note = [this](const platform::Notification& notification) {
        EXPECT_TRUE(this->world.loop.isMainThread());
        EXPECT_EQ(notification.object, static_cast<const platform::QTCaptureDevice*>(this->device.get()));
        this->journal->add(notification.name);
    };
    const std::string connected(platform::QTCaptureDeviceWasConnectedNotification);
    const std::string disconnected(platform::QTCaptureDeviceWasDisconnectedNotification);
    const auto first = this->notifications.addObserver(connected, nullptr, note);
    const auto second = this->notifications.addObserver(disconnected, nullptr, note);
    this->onOtherThread([this] {
        this->framework->addDevice(this->device);
        this->framework->addDevice(this->device);
        this->framework->removeDevice(this->device);
        this->framework->removeDevice(this->device);
        this->world.loop.post([this] { this->world.loop.stop(); });
    })();
    EXPECT_THAT(this->journal->entries(), IsEmpty());
    EXPECT_TRUE(this->world.loop.run());
    EXPECT_THAT(this->journal->entries(), ElementsAre(connected, disconnected));
}

} // namespace
} // namespace merro::test
