#include "capture/DeviceTransport.h"

#include "tests/support/FakeCapture.h"
#include "tests/support/FakeDevice.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace merro::test {
namespace {

class TransportOfADevice : public testing::Test {
protected:
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>("deck", journal);
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>(journal);
    std::shared_ptr<platform::QTCaptureDevice> controllable = device;
    DeviceTransport transport{session, [this] { return controllable; }};
};

TEST_F(TransportOfADevice, NormalSpeedInPlayIsPlaying) {
    device->report({10000, 1});
    EXPECT_TRUE(transport.isDevicePlaying());
    EXPECT_FALSE(transport.isDevicePause());
    EXPECT_FALSE(transport.isDeviceFastForwarding());
    EXPECT_FALSE(transport.isDeviceRewinding());

    device->report({10000, 0});
    EXPECT_FALSE(transport.isDevicePlaying());
    EXPECT_FALSE(transport.isDeviceFastForwarding());
}

TEST_F(TransportOfADevice, StandingStillInPlayIsPauseAndOutOfPlayNeither) {
    device->report({0, 1});
    EXPECT_TRUE(transport.isDevicePause());
    EXPECT_FALSE(transport.isDevicePlaying());

    device->report({0, 0});
    EXPECT_FALSE(transport.isDevicePause());
    EXPECT_FALSE(transport.isDevicePlaying());
}

TEST_F(TransportOfADevice, EverySpeedBackwardsIsRewindingInAnyMode) {
    for (const int mode : {0, 1}) {
        for (const int speed : {-19000, -16000, -13000, -10000, -7000, -4000, -1000}) {
            device->report({speed, mode});
            EXPECT_TRUE(transport.isDeviceRewinding()) << speed;
            EXPECT_FALSE(transport.isDeviceFastForwarding()) << speed;
        }
    }
}

TEST_F(TransportOfADevice, EverySpeedForwardsButNormalPlayIsFastForwardingInAnyMode) {
    for (const int mode : {0, 1}) {
        for (const int speed : {1000, 4000, 7000, 13000, 16000, 19000}) {
            device->report({speed, mode});
            EXPECT_TRUE(transport.isDeviceFastForwarding()) << speed;
            EXPECT_FALSE(transport.isDeviceRewinding()) << speed;
        }
    }
}

TEST_F(TransportOfADevice, ASpeedOffTheScaleIsNeitherRewindingNorFastForwarding) {
    for (const int speed : {-22000, -13001, -2000, 2000, 12000, 22000}) {
        device->report({speed, 1});
        EXPECT_FALSE(transport.isDeviceRewinding()) << speed;
        EXPECT_FALSE(transport.isDeviceFastForwarding()) << speed;
    }
}

TEST_F(TransportOfADevice, TheDeviceIsAskedEachTime) {
    transport.setDevicePlaying(true);
    EXPECT_TRUE(transport.isDevicePlaying());

    device->report({0, 0}); // somebody pressed stop on the camcorder

    EXPECT_FALSE(transport.isDevicePlaying());
}

TEST_F(TransportOfADevice, PlayAndPauseThenStartTheSession) {
    transport.setDevicePlaying(true);
    transport.setDevicePlaying(false);

    EXPECT_EQ(journal->entries(), (std::vector<std::string>{
                                      "deck speed 10000 mode 1",
                                      "start",
                                      "deck speed 0 mode 1",
                                  }));
}

TEST_F(TransportOfADevice, WindingKeepsTheModeThatTheDeviceReports) {
    device->report({0, 1}); // paused
    transport.setDeviceRewinding(true);
    transport.setDeviceRewinding(false);
    transport.setDeviceFastForwarding(true);
    transport.setDeviceFastForwarding(false);
    EXPECT_EQ(device->commands(), (std::vector<Transport>{{-13000, 1}, {0, 1}, {13000, 1}, {0, 1}}));

    transport.stopDevice();
    device->forgetCommands();
    transport.setDeviceRewinding(true);
    transport.setDeviceFastForwarding(true);
    EXPECT_EQ(device->commands(), (std::vector<Transport>{{-13000, 0}, {13000, 0}}));
}

TEST_F(TransportOfADevice, WindingLeavesTheSessionAlone) {
    transport.setDeviceRewinding(true);
    transport.setDeviceFastForwarding(true);
    transport.playAtSpeed(-7000);

    EXPECT_FALSE(session->isRunning());
}

TEST_F(TransportOfADevice, StopStopsTheTapeAndThenARunningSession) {
    session->startRunning();
    journal->clear();

    transport.stopDevice();
    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"deck speed 0 mode 0", "stop"}));

    journal->clear();
    transport.stopDevice();
    EXPECT_EQ(journal->entries(), std::vector<std::string>{"deck speed 0 mode 0"});
}

TEST_F(TransportOfADevice, StopPlayingLeavesTheSessionRunning) {
    session->startRunning();

    transport.stopPlaying();

    EXPECT_EQ(device->commands(), (std::vector<Transport>{{0, 0}}));
    EXPECT_TRUE(session->isRunning());
}

TEST_F(TransportOfADevice, PlayAtSpeedPlaysWithThePicture) {
    transport.playAtSpeed(kTransportSpeedReversePlay);
    transport.playAtSpeed(-7000);

    EXPECT_EQ(device->commands(), (std::vector<Transport>{{-10000, 1}, {-7000, 1}}));
}

TEST_F(TransportOfADevice, WithoutADeviceOnlyTheSessionIsDriven) {
    controllable = nullptr;

    EXPECT_FALSE(transport.isDevicePlaying());
    EXPECT_FALSE(transport.isDevicePause());
    EXPECT_FALSE(transport.isDeviceRewinding());
    EXPECT_FALSE(transport.isDeviceFastForwarding());
    transport.setDeviceRewinding(true);
    transport.setDeviceFastForwarding(true);
    transport.playAtSpeed(1000);
    transport.stopPlaying();
    EXPECT_TRUE(journal->entries().empty());

    transport.setDevicePlaying(true);
    transport.stopDevice();
    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"start", "stop"}));
}

TEST_F(TransportOfADevice, ADeviceThatReportsNoTransportIsNeitherAskedNorCommanded) {
    device->report({10000, 1});
    device->hasTransport = false; // it has just gone away

    EXPECT_FALSE(transport.isDevicePlaying());
    transport.setDevicePlaying(true);
    transport.setDeviceRewinding(true);
    transport.stopDevice();

    EXPECT_TRUE(device->commands().empty());
}

TEST_F(TransportOfADevice, OnlyAWritableTransportCanBeDriven) {
    EXPECT_TRUE(hasWritableTransport(device));
    EXPECT_FALSE(hasWritableTransport(nullptr));
    device->transportIsReadOnly = true;
    EXPECT_FALSE(hasWritableTransport(device));
    device->transportIsReadOnly = false;
    device->hasTransport = false;
    EXPECT_FALSE(hasWritableTransport(device));
}

} // namespace
} // namespace merro::test
