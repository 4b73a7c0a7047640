#include "capture/StreamAlert.h"

#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingAlerts.h"

#include <gtest/gtest.h>

#include <string>

namespace merro::test {
namespace {

class StreamAlert : public ::testing::Test {
protected:
    RecordingAlerts alerts;
    PlainLocalization localization{"local "};
    merro::StreamAlert alert{alerts, localization};
    int stops = 0;
};

TEST_F(StreamAlert, theTextsAreInTheUsersLanguage) {
    alert.runModal();
    ASSERT_EQ(alerts.shown().size(), 1U);
    EXPECT_EQ(alerts.shown()[0].messageText, "local Cannot capture this stream.");
    EXPECT_TRUE(
        alerts.shown()[0].informativeText.starts_with("local The input video stream is not a DV stream."));
}

TEST_F(StreamAlert, withNoAlertUpASessionIsStoppedAtOnce) {
    alert.stopSession([&] { ++stops; });
    EXPECT_EQ(stops, 1);
    alert.runModal();
    EXPECT_EQ(stops, 1);
}

TEST_F(StreamAlert, aStopThatComesWhileTheAlertIsUpIsMadeWhenItHasBeenAnswered) {
    alerts.whileUp = [&](const platform::Alert&) {
        alert.stopSession([&] { ++stops; });
        EXPECT_EQ(stops, 0);
    };
    alert.runModal();
    EXPECT_EQ(stops, 1);
}

TEST_F(StreamAlert, aStopThatIsNotWantedAnyMoreIsNotMade) {
    alerts.whileUp = [&](const platform::Alert&) {
        alert.stopSession([&] { ++stops; });
        alert.keepSession();
    };
    alert.runModal();
    EXPECT_EQ(stops, 0);
}

TEST_F(StreamAlert, noAlertComesUpWhileTheSessionIsBeingStopped) {
    alert.stopSession([&] { alert.runModal(); });
    EXPECT_TRUE(alerts.shown().empty());
    alert.runModal();
    EXPECT_EQ(alerts.shown().size(), 1U);
}

} // namespace
} // namespace merro::test
