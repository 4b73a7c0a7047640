// Signals, the log, dates and controls of a program without a toolkit.
#include "platform/native/HeadlessInterface.h"
#include "platform/native/Localization.h"
#include "platform/native/Log.h"
#include "platform/native/SignalWatch.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/platform/Worlds.h"

#include <csignal>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform {
namespace {

class KeptLog final : public Log {
public:
    void line(std::string_view text) override {
        const std::lock_guard lock(m_mutex);
        m_lines.emplace_back(text);
    }
    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

template <typename World>
class Signals : public testing::Test {
protected:
    World m_world;
};
TYPED_TEST_SUITE(Signals, Worlds, WorldNames);

TYPED_TEST(Signals, areHandledOnTheMainThreadWhileTheLoopRuns) {
    bool isOnMainThread = false;
    const auto hold = this->m_world.loop.holdForOutsideWork(); // a program that waits for its user
    const auto watch = native::watchSignal(this->m_world.loop, SIGUSR1, [&] {
        isOnMainThread = this->m_world.loop.isMainThread();
        this->m_world.loop.stop();
    });
    this->m_world.loop.post([] { ASSERT_EQ(std::raise(SIGUSR1), 0); });
    EXPECT_TRUE(this->m_world.loop.run());
    EXPECT_TRUE(isOnMainThread);
}

TEST(SignalWatch, givesTheSignalBackWhenItEnds) {
    struct sigaction ignoring {};
    ignoring.sa_handler = SIG_IGN;
    ASSERT_EQ(::sigaction(SIGUSR2, &ignoring, nullptr), 0);
    {
        const native::SignalWatch watch(SIGUSR2, [] {});
    }
    struct sigaction now {};
    ASSERT_EQ(::sigaction(SIGUSR2, nullptr, &now), 0);
    EXPECT_EQ(now.sa_handler, SIG_IGN);
}

TEST(SignalWatch, aNewWatchHearsNothingOfOldSignals) {
    for (int i = 0; i < 3; ++i) {
        std::atomic<int> heard = 0;
        const native::SignalWatch watch(SIGUSR2, [&] { ++heard; });
        EXPECT_EQ(heard, 0);
        ASSERT_EQ(std::raise(SIGUSR2), 0);
        while (heard == 0)
            std::this_thread::yield();
    }
}

TEST(ProcessLog, linesGoToTheLogThatIsSetAndToStandardErrorOtherwise) {
    KeptLog log;
    setProcessLog(&log);
    processLog().line("Cannot decode");
    setProcessLog(nullptr);
    testing::internal::CaptureStderr();
    processLog().line("to standard error");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "to standard error\n");
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Cannot decode"});
}

TEST(NativeLog, writesWholeLinesToTheEndOfItsFile) {
    const TemporaryFolder folder;
    TemporaryFolder::write(folder.path("log"), "before\n");
    {
        native::Log log(folder.path("log"));
        log.line("one\nline");
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int line = 0; line < 50; ++line)
                    log.line("whole");
            });
        for (auto& thread : threads)
            thread.join();
    }
    std::string expected = "before\none line\n";
    for (int i = 0; i < 200; ++i)
        expected += "whole\n";
    EXPECT_EQ(TemporaryFolder::contents(folder.path("log")), expected);
}

TEST(NativeLog, saysWhyItsFileCannotBeOpenedAndGoesToStandardError) {
    testing::internal::CaptureStderr();
    {
        native::Log log("/dev/null/log");
        log.line("kept");
    }
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(text.starts_with("Cannot open the log /dev/null/log: Not a directory")) << text;
    EXPECT_TRUE(text.ends_with("\nkept\n")) << text;
}

TEST(NativeLocalization, theEnglishTextIsTheKey) {
    const native::Localization localization;
    EXPECT_EQ(localization.text("Custom..."), "Custom...");
    EXPECT_EQ(localization.text("None", "SarnetDV"), "None");
}

TEST(NativeLocalization, aDateIsTheSystemZonesClock) {
    const native::Localization localization(std::locale::classic());
    EXPECT_EQ(localization.mediumDateAndTime(*dateFromCalendar({2005, 3, 17, 14, 3, 22})),
              "17 Mar 2005 14:03:22");
    EXPECT_EQ(localization.mediumDateAndTime(*dateFromCalendar({1999, 12, 1, 0, 0, 5})),
              "1 Dec 1999 00:00:05");
}

TEST(HeadlessInterface, aPopUpSelectsAmongItsItemsOrNothing) {
    native::HeadlessPopUpButton popUp;
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    EXPECT_EQ(popUp.selectedItem(), nullptr);
    popUp.addItem({"None", 0, {}});
    popUp.addItem({"Custom...", 7, Dictionary{{"optionsName", "mine"}}});
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    popUp.selectItemAtIndex(1);
    ASSERT_NE(popUp.selectedItem(), nullptr);
    EXPECT_EQ(popUp.selectedItem()->tag, 7);
    EXPECT_EQ(popUp.numberOfItems(), 2);
    EXPECT_EQ(popUp.itemAtIndex(2), nullptr);
    EXPECT_EQ(popUp.itemAtIndex(-1), nullptr);
    popUp.selectItemAtIndex(2);
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    popUp.selectItemAtIndex(0);
    popUp.removeAllItems();
    EXPECT_EQ(popUp.numberOfItems(), 0);
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
}

TEST(HeadlessInterface, theCaptureInterfaceHasItsOutlets) {
    native::HeadlessInterfaceLoader loader;
    const auto interface = loader.load("capture.nib");
    for (const char* const outlet : {"rewindButton", "playButton", "recordButton", "forwardButton"})
        EXPECT_NE(interface->button(outlet), nullptr) << outlet;
    for (const char* const outlet : {"configurationView", "devicesView", "compressionView", "thumbnailsView",
                                     "controlView", "captureView"})
        EXPECT_NE(interface->view(outlet), nullptr) << outlet;
    EXPECT_EQ(interface->view("captureView"), interface->captureView("captureView"));
    EXPECT_EQ(interface->button("unknown"), nullptr);
    EXPECT_EQ(interface->view("playButton"), nullptr);

    const auto configurations = interface->popUpButton("configurationPopUp");
    ASSERT_NE(configurations, nullptr);
    EXPECT_EQ(configurations->selectedItem(), configurations->itemAtIndex(0));
    EXPECT_EQ(configurations->itemAtIndex(0)->title, "Custom settings");
    EXPECT_EQ(interface->popUpButton("compressionPopUp")->numberOfItems(), 0);
    const auto sizes = interface->popUpButton("sizePopUp");
    ASSERT_EQ(sizes->numberOfItems(), 6);
    for (int tag = 0; tag < 6; ++tag)
        EXPECT_EQ(sizes->itemAtIndex(tag)->tag, tag);
    EXPECT_EQ(sizes->selectedItem()->title, "640 x 480");
}

TEST(HeadlessInterface, everyLoadMakesControlsOfItsOwn) {
    native::HeadlessInterfaceLoader loader;
    const auto one = loader.load("capture.nib");
    const auto other = loader.load("capture.nib");
    one->button("playButton")->setState(true);
    EXPECT_TRUE(one->button("playButton")->state());
    EXPECT_FALSE(other->button("playButton")->state());
}

TEST(HeadlessInterface, anUnknownDescriptionHasNoOutletsAndIsTold) {
    KeptLog log;
    native::HeadlessInterfaceLoader loader(log);
    EXPECT_EQ(loader.load("missing.nib")->button("playButton"), nullptr);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"There is no interface description \"missing.nib\""});
}

TEST(HeadlessInterface, overlaysLieInTheOrderAskedFor) {
    native::HeadlessCaptureView view;
    const auto timecode = std::make_shared<View>();
    const auto message = std::make_shared<View>();
    view.addOverlayView(timecode, Ordered::Above);
    view.addOverlayView(message, Ordered::Below);
    EXPECT_EQ(view.overlayViews(), (std::vector{message, timecode}));
    view.removeOverlayView(message);
    EXPECT_EQ(view.overlayViews(), std::vector{timecode});
}

} // namespace
} // namespace merro::platform
