#include "capture/DeviceSelection.h"

#include "capture/CaptureDefaults.h"
#include "tests/support/FakeDevice.h"
#include "tests/support/TestSurroundings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace merro::test {
namespace {

using platform::Change;
using platform::fourCharCode;
using platform::MediaType;
using platform::QTCaptureDeviceAttributeDidChangeNotification;
using platform::QTCaptureDeviceAttributeWillChangeNotification;
using platform::QTCaptureDeviceAVCTransportControlsAttribute;

class Selection : public testing::Test {
protected:
    Selection() { declareCaptureDependentKeys(announcements); }

    [[nodiscard]] std::shared_ptr<FakeDevice> makeDevice(const std::string& name) const {
        return std::make_shared<FakeDevice>(name, journal);
    }

    TestSurroundings surroundings;
    std::shared_ptr<Journal> journal = surroundings.journal;
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>(journal);
    platform::KeyValueObserving announcements;
    std::vector<std::string> announced;
    platform::Observation observation =
        announcements.addObserver({}, [this](const std::string& key, Change change) {
            announced.push_back((change == Change::Will ? "will " : "did ") + key);
        });
    DeviceSelection selection{surroundings.all, session, announcements, [this] { journal->add("selected"); }};
};

TEST_F(Selection, NothingIsSelectedAtFirst) {
    EXPECT_EQ(selection.selectedVideoDevice(), nullptr);
    EXPECT_EQ(selection.videoDeviceInput(), nullptr);
    EXPECT_EQ(selection.controllableDevice(), nullptr);
    EXPECT_FALSE(selection.hasRecordingDevice());
}

TEST_F(Selection, SelectingOpensTheDeviceAndGivesTheSessionItsInput) {
    const auto deck = makeDevice("deck");

    selection.setSelectedVideoDevice(deck);

    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"open deck", "addInput deck", "selected"}));
    EXPECT_EQ(selection.selectedVideoDevice(), deck);
    EXPECT_TRUE(selection.hasRecordingDevice());
    ASSERT_EQ(session->inputs().size(), 1U);
    EXPECT_EQ(session->inputs()[0], selection.videoDeviceInput());
    EXPECT_TRUE(surroundings.alerts.shown().empty());
}

TEST_F(Selection, SelectingAnotherDeviceLetsGoOfTheOneBeforeFirst) {
    selection.setSelectedVideoDevice(makeDevice("first"));
    journal->clear();

    selection.setSelectedVideoDevice(makeDevice("second"));

    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"removeInput first", "close first", "open second",
                                                            "addInput second", "selected"}));
}

TEST_F(Selection, SelectingNoneRemovesTheInput) {
    const auto deck = makeDevice("deck");
    selection.setSelectedVideoDevice(deck);
    journal->clear();

    selection.setSelectedVideoDevice(nullptr);

    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"removeInput deck", "close deck", "selected"}));
    EXPECT_FALSE(selection.hasRecordingDevice());
    EXPECT_EQ(selection.selectedVideoDevice(), nullptr);
    EXPECT_FALSE(deck->isOpen());
}

TEST_F(Selection, SelectingNoneTwiceTouchesNoDevice) {
    selection.setSelectedVideoDevice(nullptr);

    EXPECT_EQ(journal->entries(), std::vector<std::string>{"selected"});
}

TEST_F(Selection, EveryDVFormatPassesWithoutAWord) {
    const auto deck = makeDevice("deck");
    deck->formats.clear();
    for (const auto code : {fourCharCode("dv  "), fourCharCode("dvc "), fourCharCode("dvcp"),
                            fourCharCode("dvpp"), fourCharCode("dv5n"), fourCharCode("dv5p")})
        deck->formats.push_back({MediaType::Muxed, code});

    selection.setSelectedVideoDevice(deck);

    EXPECT_TRUE(surroundings.alerts.shown().empty());
}

TEST_F(Selection, ADeviceThatIsNotDVIsWarnedAboutOnceForEachFormatAndUsedAllTheSame) {
    const auto camera = makeDevice("camera");
    camera->formats = {{MediaType::Muxed, fourCharCode("hdv2")},
                       {MediaType::Muxed, fourCharCode("dvc ")},
                       {MediaType::Video, fourCharCode("2vuy")}};

    selection.setSelectedVideoDevice(camera);

    const auto shown = surroundings.alerts.shown();
    ASSERT_EQ(shown.size(), 2U);
    for (const platform::Alert& alert : shown) {
        EXPECT_EQ(alert.messageText, "The original stream is not DV.");
        EXPECT_EQ(alert.informativeText,
                  "This version of the application cannot handle video stream that is not encoded in DV. If "
                  "your camcorder is a HD camcorder, please activate the DV down-conversion option at "
                  "playback (most HDV camcorders offer this option) to capture video.");
    }
    EXPECT_EQ(selection.selectedVideoDevice(), camera);
}

TEST_F(Selection, TheWarningComesInTheUsersLanguageAndBeforeTheDeviceIsOpened) {
    PlainLocalization french("fr:");
    const platform::Surroundings& all = surroundings.all;
    const platform::Surroundings translated{all.clock,    all.runLoop,    all.threads, all.notifications,
                                            all.defaults, french,         all.log,     all.alerts,
                                            all.files,    all.interfaces, all.capture, all.compression};
    DeviceSelection other(translated, session, announcements, [] {});
    const auto camera = makeDevice("camera");
    camera->formats = {{MediaType::Muxed, fourCharCode("hdv2")}};
    bool wasOpen = true;
    surroundings.alerts.whileUp = [&](const platform::Alert&) { wasOpen = camera->isOpen(); };

    other.setSelectedVideoDevice(camera);

    ASSERT_EQ(surroundings.alerts.shown().size(), 1U);
    EXPECT_TRUE(surroundings.alerts.shown()[0].messageText.starts_with("fr:"));
    EXPECT_TRUE(surroundings.alerts.shown()[0].informativeText.starts_with("fr:"));
    EXPECT_FALSE(wasOpen);
}

TEST_F(Selection, ADeviceThatDoesNotOpenIsToldAndNotSelected) {
    const auto deck = makeDevice("deck");
    deck->openError = platform::Error{"deck is in use", "quit the other program"};

    selection.setSelectedVideoDevice(deck);

    ASSERT_EQ(surroundings.alerts.shown().size(), 1U);
    EXPECT_EQ(surroundings.alerts.shown()[0].messageText, "deck is in use");
    EXPECT_EQ(surroundings.alerts.shown()[0].informativeText, "quit the other program");
    EXPECT_EQ(journal->entries(), std::vector<std::string>{"open deck"});
    EXPECT_FALSE(selection.hasRecordingDevice());
}

TEST_F(Selection, AnInputThatTheSessionRefusesIsToldAndItsDeviceClosed) {
    session->addInputError = platform::Error{"the session is full", ""};
    const auto deck = makeDevice("deck");

    selection.setSelectedVideoDevice(deck);

    ASSERT_EQ(surroundings.alerts.shown().size(), 1U);
    EXPECT_EQ(surroundings.alerts.shown()[0].messageText, "the session is full");
    EXPECT_EQ(journal->entries(), (std::vector<std::string>{"open deck", "addInput deck", "close deck"}));
    EXPECT_FALSE(selection.hasRecordingDevice());
    EXPECT_EQ(deck.use_count(), 1); // the input is gone, too
}

TEST_F(Selection, WhatHangsOnTheDeviceIsAnnouncedWithIt) {
    const std::vector<std::string> expected{"will selectedVideoDevice", "will hasRecordingDevice",
                                            "will controllableDevice",  "will videoDeviceInput",
                                            "did selectedVideoDevice",  "did hasRecordingDevice",
                                            "did controllableDevice",   "did videoDeviceInput"};

    selection.setSelectedVideoDevice(makeDevice("deck"));
    EXPECT_EQ(announced, expected);

    announced.clear();
    const auto broken = makeDevice("broken");
    broken->openError = platform::Error{"broken", ""};
    selection.setSelectedVideoDevice(broken);
    EXPECT_EQ(announced, expected);
}

TEST_F(Selection, OnlyADeviceWithAWritableTransportIsControllable) {
    const auto deck = makeDevice("deck");
    selection.setSelectedVideoDevice(deck);
    EXPECT_EQ(selection.controllableDevice(), deck);

    deck->transportIsReadOnly = true;
    EXPECT_EQ(selection.controllableDevice(), nullptr);
    EXPECT_EQ(selection.selectedVideoDevice(), deck);

    deck->transportIsReadOnly = false;
    deck->hasTransport = false;
    EXPECT_EQ(selection.controllableDevice(), nullptr);
}

TEST_F(Selection, AChangeOfTheTransportIsAnnouncedAsThreeProperties) {
    const auto deck = makeDevice("deck");
    selection.setSelectedVideoDevice(deck);
    selection.startObservingTransport();
    announced.clear();

    deck->postAttributeNotification(surroundings.notifications,
                                    QTCaptureDeviceAttributeWillChangeNotification,
                                    QTCaptureDeviceAVCTransportControlsAttribute);
    deck->postAttributeNotification(surroundings.notifications, QTCaptureDeviceAttributeDidChangeNotification,
                                    QTCaptureDeviceAVCTransportControlsAttribute);

    EXPECT_EQ(announced, (std::vector<std::string>{"will devicePlaying", "will deviceFastForwarding",
                                                   "will deviceRewinding", "did devicePlaying",
                                                   "did deviceFastForwarding", "did deviceRewinding"}));
}

TEST_F(Selection, OtherDevicesAndOtherAttributesAreNotAnnounced) {
    const auto deck = makeDevice("deck");
    selection.setSelectedVideoDevice(deck);
    selection.startObservingTransport();
    announced.clear();

    makeDevice("other")->postAttributeNotification(surroundings.notifications,
                                                   QTCaptureDeviceAttributeDidChangeNotification,
                                                   QTCaptureDeviceAVCTransportControlsAttribute);
    deck->postAttributeNotification(surroundings.notifications, QTCaptureDeviceAttributeDidChangeNotification,
                                    "QTCaptureDeviceSuspendedAttribute");
    surroundings.notifications.post({std::string(QTCaptureDeviceAttributeDidChangeNotification),
                                     static_cast<const platform::QTCaptureDevice*>(deck.get()),
                                     {}});
    deck->transportIsReadOnly = true; // no longer the controllable device
    deck->postAttributeNotification(surroundings.notifications,
                                    QTCaptureDeviceAttributeWillChangeNotification,
                                    QTCaptureDeviceAVCTransportControlsAttribute);

    EXPECT_TRUE(announced.empty());
}

} // namespace
} // namespace merro::test
