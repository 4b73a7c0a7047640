// Alerts on a terminal, over real and over virtual time.
#include "platform/native/TerminalAlerts.h"
#include "tests/platform/Worlds.h"

#include <atomic>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace merro::platform {
namespace {

using namespace std::chrono_literals;

/// A terminal of two pipes: what the user types, and what he sees.
class FakeTerminal {
public:
    FakeTerminal() {
        EXPECT_EQ(::pipe2(m_keyboard, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(m_screen, O_CLOEXEC | O_NONBLOCK), 0);
    }
    ~FakeTerminal() {
        for (const int end : {m_keyboard[0], m_keyboard[1], m_screen[0], m_screen[1]}) {
            if (end >= 0)
                ::close(end);
        }
    }
    FakeTerminal(const FakeTerminal&) = delete;
    FakeTerminal& operator=(const FakeTerminal&) = delete;

    [[nodiscard]] int input() const { return m_keyboard[0]; }
    [[nodiscard]] int output() const { return m_screen[1]; }
    void type(const std::string& text) const {
        EXPECT_EQ(::write(m_keyboard[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void endInput() { ::close(std::exchange(m_keyboard[1], -1)); }

    /// What has come on the screen since the last look.
    [[nodiscard]] std::string seen() const {
        char text[4096];
        const auto count = ::read(m_screen[0], text, sizeof text);
        return {text, count > 0 ? static_cast<std::size_t>(count) : 0};
    }

private:
    int m_keyboard[2] = {-1, -1};
    int m_screen[2] = {-1, -1};
};

const Alert kAlert{"Cannot capture this stream.", "The input video stream is not a DV stream."};

template <typename World>
class AlertsContract : public testing::Test {
protected:
    World m_world;
    FakeTerminal m_terminal;
    native::TerminalAlerts m_alerts{m_world.loop, m_terminal.output(), m_terminal.input()};
    native::TerminalAlerts m_unattended{m_world.loop, m_terminal.output(), std::nullopt};
};
TYPED_TEST_SUITE(AlertsContract, Worlds, WorldNames);

TYPED_TEST(AlertsContract, withNobodyToAskAnAlertIsShownAndAnsweredAtOnce) {
    EXPECT_EQ(this->m_unattended.runModal(kAlert), kAlertDefaultReturn);
    EXPECT_EQ(this->m_terminal.seen(),
              "\nCannot capture this stream.\n  The input video stream is not a DV stream.\n");
}

TYPED_TEST(AlertsContract, anErrorIsShownWithItsRemedy) {
    this->m_unattended.runForError({"Cannot open /dev/fw1", "add yourself to the group video"});
    EXPECT_EQ(this->m_terminal.seen(), "\nCannot open /dev/fw1\n  add yourself to the group video\n");
}

TYPED_TEST(AlertsContract, enterAnswersAnAlertOfTheMainThread) {
    this->m_terminal.type("\n");
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
    EXPECT_NE(this->m_terminal.seen().find("Press Enter"), std::string::npos);
}

TYPED_TEST(AlertsContract, enterAnswersOneAlertAndOtherKeysNone) {
    this->m_terminal.type("no\n\n");
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
}

TYPED_TEST(AlertsContract, theMainLoopServesWorkWhileItsAlertIsUp) {
    bool hasRun = false;
    this->m_world.loop.post([&] {
        hasRun = true;
        this->m_terminal.type("\n"); // the alert can only be answered from within
    });
    (void)this->m_alerts.runModal(kAlert);
    EXPECT_TRUE(hasRun);
}

TYPED_TEST(AlertsContract, modalTimersFireAndOthersDoNotWhileAnAlertIsUp) {
    bool hasDefaultFired = false;
    (void)this->m_world.loop.scheduleTimer(0ms, Repeats::No, {RunLoopMode::Default},
                                           [&] { hasDefaultFired = true; });
    (void)this->m_world.loop.scheduleTimer(1ms, Repeats::No, {RunLoopMode::ModalPanel},
                                           [&] { this->m_terminal.type("\n"); });
    (void)this->m_alerts.runModal(kAlert);
    EXPECT_FALSE(hasDefaultFired);
}

TYPED_TEST(AlertsContract, anAlertOfAnotherThreadDoesNotNeedTheMainThread) {
    std::atomic<int> answer = 0;
    this->m_terminal.type("\n");
    this->m_world.threads.detach("delivery", [&] { answer = this->m_alerts.runModal(kAlert); });
    while (answer == 0)
        this->m_world.clock.sleepFor(1ms); // the main thread is busy and serves no loop
    EXPECT_EQ(answer, kAlertDefaultReturn);
}

TYPED_TEST(AlertsContract, theEndOfTheInputAnswersThisAndAllLaterAlerts) {
    this->m_terminal.endInput();
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
    (void)this->m_terminal.seen();
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
    EXPECT_EQ(this->m_terminal.seen().find("Press Enter"), std::string::npos);
}

TYPED_TEST(AlertsContract, aProgramThatIsEndingDismissesAlertsFromAnyThread) {
    std::thread outside([&] {
        while (this->m_terminal.seen().empty())
            std::this_thread::yield();
        this->m_alerts.dismissAll();
    });
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
    outside.join();
}

TYPED_TEST(AlertsContract, stoppingTheLoopEndsTheAlertOfTheMainThread) {
    this->m_world.loop.post([&] { this->m_world.loop.stop(); });
    EXPECT_EQ(this->m_alerts.runModal(kAlert), kAlertDefaultReturn);
}

TEST(TerminalAlerts, aPipeIsNoTerminalToAsk) {
    const FakeTerminal terminal;
    EXPECT_EQ(native::TerminalAlerts::ifTerminal(terminal.input()), std::nullopt);
}

} // namespace
} // namespace merro::platform
