// Notifications and the announcements of changing properties.
#include "platform/NotificationCenter.h"

#include "platform/KeyValueObserving.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform {
namespace {

using Notes = std::vector<std::string>;

TEST(NotificationCenter, callsObserversInTheOrderInWhichTheyWereAdded) {
    NotificationCenter center;
    Notes notes;
    const auto first =
        center.addObserver("moved", nullptr, [&](const auto&) { notes.emplace_back("first"); });
    const auto second =
        center.addObserver("moved", nullptr, [&](const auto&) { notes.emplace_back("second"); });
    center.post({"moved", nullptr, {}});
    EXPECT_EQ(notes, (Notes{"first", "second"}));
}

TEST(NotificationCenter, anObserverHearsItsNameFromItsSenderOnly) {
    NotificationCenter center;
    const int deck = 0;
    const int otherDeck = 0;
    int fromDeck = 0;
    int fromAll = 0;
    const auto one = center.addObserver("moved", &deck, [&](const auto&) { ++fromDeck; });
    const auto all = center.addObserver("moved", nullptr, [&](const auto&) { ++fromAll; });
    center.post({"moved", &deck, {}});
    center.post({"moved", &otherDeck, {}});
    center.post({"stopped", &deck, {}});
    EXPECT_EQ(fromDeck, 1);
    EXPECT_EQ(fromAll, 2);
}

TEST(NotificationCenter, handsTheInformationOn) {
    NotificationCenter center;
    std::int64_t speed = 0;
    const auto observer = center.addObserver("moved", nullptr, [&](const Notification& notification) {
        speed = notification.information.at("speed").integerValue();
    });
    center.post({"moved", nullptr, {{"speed", -13000}}});
    EXPECT_EQ(speed, -13000);
}

TEST(NotificationCenter, anEndedObservationHearsNothingMore) {
    NotificationCenter center;
    int heard = 0;
    {
        const auto observer = center.addObserver("moved", nullptr, [&](const auto&) { ++heard; });
        center.post({"moved", nullptr, {}});
    }
    center.post({"moved", nullptr, {}});
    EXPECT_EQ(heard, 1);
}

TEST(NotificationCenter, anObserverMayEndAnotherOneAndItself) {
    NotificationCenter center;
    Notes notes;
    std::optional<Observation> self;
    std::optional<Observation> other;
    self = center.addObserver("moved", nullptr, [&](const auto&) {
        notes.emplace_back("self");
        other.reset();
        self.reset();
    });
    other = center.addObserver("moved", nullptr, [&](const auto&) { notes.emplace_back("other"); });
    center.post({"moved", nullptr, {}});
    center.post({"moved", nullptr, {}});
    EXPECT_EQ(notes, Notes{"self"});
}

TEST(NotificationCenter, anObserverAddedByAnObserverHearsTheNextOne) {
    NotificationCenter center;
    int heard = 0;
    std::optional<Observation> late;
    const auto observer = center.addObserver("moved", nullptr, [&](const auto&) {
        if (!late)
            late = center.addObserver("moved", nullptr, [&](const auto&) { ++heard; });
    });
    center.post({"moved", nullptr, {}});
    EXPECT_EQ(heard, 0);
    center.post({"moved", nullptr, {}});
    EXPECT_EQ(heard, 1);
}

TEST(NotificationCenter, anObservationMayOutliveTheCenter) {
    auto center = std::make_unique<NotificationCenter>();
    const auto observer = center->addObserver("moved", nullptr, [](const auto&) {});
    center.reset();
}

TEST(NotificationCenter, threadsMayComeAndGoWhileAnotherPosts) {
    NotificationCenter center;
    std::thread posts([&] {
        for (int i = 0; i < 2000; ++i)
            center.post({"moved", nullptr, {}});
    });
    for (int i = 0; i < 2000; ++i)
        (void)center.addObserver("moved", nullptr, [](const auto&) {});
    posts.join();
}

class Announcements : public testing::Test {
protected:
    void noteAll() {
        m_observation = m_observing.addObserver("", [this](const std::string& key, Change change) {
            m_notes.push_back((change == Change::Will ? "will " : "did ") + key);
        });
    }

    KeyValueObserving m_observing;
    Observation m_observation;
    Notes m_notes;
};

TEST_F(Announcements, sayBeforeAndAfterAChange) {
    noteAll();
    m_observing.willChangeValueForKey("isRecording");
    m_observing.didChangeValueForKey("isRecording");
    EXPECT_EQ(m_notes, (Notes{"will isRecording", "did isRecording"}));
}

TEST_F(Announcements, reachAnObserverOfTheKeyOnly) {
    int heard = 0;
    const auto observation = m_observing.addObserver("isPlaying", [&](const auto&, Change) { ++heard; });
    m_observing.didChangeValueForKey("isPlaying");
    m_observing.didChangeValueForKey("isRecording");
    EXPECT_EQ(heard, 1);
}

TEST_F(Announcements, areFollowedByThoseOfWhatDependsOnTheKey) {
    m_observing.setDependency("hasRecordingDevice", "selectedVideoDevice");
    m_observing.setDependency("controllable", "selectedVideoDevice");
    noteAll();
    m_observing.willChangeValueForKey("selectedVideoDevice");
    m_observing.didChangeValueForKey("hasRecordingDevice"); // nothing depends on it
    EXPECT_EQ(m_notes, (Notes{"will selectedVideoDevice", "will hasRecordingDevice", "will controllable",
                              "did hasRecordingDevice"}));
}

TEST_F(Announcements, goOnToWhatDependsOnADependentAndComeOnceEach) {
    m_observing.setDependency("b", "a");
    m_observing.setDependency("c", "b");
    m_observing.setDependency("c", "a");
    m_observing.setDependency("a", "c"); // a ring
    noteAll();
    m_observing.didChangeValueForKey("a");
    EXPECT_EQ(m_notes, (Notes{"did a", "did b", "did c"}));
}

TEST_F(Announcements, areMadeOnTheThreadThatAnnounces) {
    std::thread::id seen;
    const auto observation =
        m_observing.addObserver("key", [&](const auto&, Change) { seen = std::this_thread::get_id(); });
    std::thread announces([&] { m_observing.didChangeValueForKey("key"); });
    const auto expected = announces.get_id();
    announces.join();
    EXPECT_EQ(seen, expected);
}

} // namespace
} // namespace merro::platform
