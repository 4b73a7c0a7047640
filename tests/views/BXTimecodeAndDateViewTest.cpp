#include "views/BXTimecodeAndDateView.h"

#include "tests/support/PlainLocalization.h"
#include "tests/support/RecordingGraphicsContext.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace merro::test {
namespace {

using platform::Date;
using platform::DateRef;

DateRef dateAt(int seconds) {
    return std::make_shared<Date>(Date::Instant(std::chrono::seconds(seconds)));
}

SMPTETime timecodeOf(std::int16_t hours, std::int16_t minutes, std::int16_t seconds, std::int16_t frames) {
    SMPTETime time;
    time.mHours = hours;
    time.mMinutes = minutes;
    time.mSeconds = seconds;
    time.mFrames = frames;
    return time;
}

class TimecodeAndDateView : public testing::Test {
protected:
    std::vector<std::string> drawn(const platform::Rect& dirtyRect = {0, 0, 640, 480}) {
        context = {};
        view.drawRect(context, dirtyRect);
        return context.lines;
    }

    std::vector<std::string> textsDrawn() {
        std::vector<std::string> texts;
        for (const std::string& line : drawn()) {
            if (line.starts_with("text"))
                texts.push_back(line);
        }
        return texts;
    }

    PlainLocalization localization;
    RecordingGraphicsContext context;
    BXTimecodeAndDateView view{{0, 0, 640, 480}, localization};
};

TEST_F(TimecodeAndDateView, ANewViewShowsAnAllZeroTimecodeAndAnEmptyDateBox) {
    EXPECT_EQ(drawn(), (std::vector<std::string>{
                           "save",
                           "line width 2",
                           "fill color 0 0 0 1",
                           "fill 10 455 72 15 radius 10",
                           "stroke color 1 1 1 1",
                           "stroke 10 455 72 15 radius 10",
                           "text \"00:00:00.00\" 10 455 72 15",
                           "line width 2",
                           "fill color 0.1 0.5 0.2 1",
                           "fill 90 455 82 15 radius 10",
                           "stroke color 1 1 1 1",
                           "stroke 90 455 82 15 radius 10",
                           "restore",
                       }));
    EXPECT_EQ(view.timecode(), SMPTETime{});
    EXPECT_EQ(view.date(), nullptr);
}

TEST_F(TimecodeAndDateView, TheDateIsWordedByTheLocalizationAndDrawnLastIntoItsBox) {
    view.setDate(dateAt(77));

    const auto lines = drawn();

    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[12], "text \"date 77\" 90 455 82 15");
    EXPECT_EQ(lines[13], "restore");
}

TEST_F(TimecodeAndDateView, TheTimecodeHasTwoDigitsEachAndTheFramesAfterAFullStop) {
    view.setTimecode(timecodeOf(1, 2, 3, 4));
    EXPECT_EQ(textsDrawn(), std::vector<std::string>{"text \"01:02:03.04\" 10 455 72 15"});

    view.setTimecode(timecodeOf(23, 59, 58, 29));
    EXPECT_EQ(textsDrawn(), std::vector<std::string>{"text \"23:59:58.29\" 10 455 72 15"});
}

TEST_F(TimecodeAndDateView, TheWholeTimecodeRecordIsKept) {
    SMPTETime time = timecodeOf(1, 2, 3, 4);
    time.mType = kSMPTETimeType25;
    time.mFlags = 5;
    time.mCounter = 6;
    time.mSubframes = 7;
    time.mSubframeDivisor = 80;

    view.setTimecode(time);

    EXPECT_EQ(view.timecode(), time);
}

TEST_F(TimecodeAndDateView, TextsAreWhiteCentredAndCutAtTheTail) {
    view.setDate(dateAt(0));
    (void)drawn();

    const platform::TextAttributes expected{"Helvetica",
                                            11,
                                            {1, 1, 1, 1},
                                            platform::TextAlignment::Centred,
                                            platform::LineBreak::TruncateTail,
                                            0};
    EXPECT_EQ(context.textAttributes, (std::vector{expected, expected}));
}

TEST_F(TimecodeAndDateView, NeitherTheDirtyRectangleNorTheFrameLimitsTheDrawing) {
    EXPECT_EQ(drawn({0, 0, 1, 1}).size(), 13U);

    BXTimecodeAndDateView small({0, 0, 20, 20}, localization);
    RecordingGraphicsContext other;
    small.drawRect(other, {});
    EXPECT_EQ(other.lines, drawn());
}

TEST_F(TimecodeAndDateView, SettingAnUnchangedTimecodeAsksForARepaintAllTheSame) {
    int repaints = 0;
    view.setRepaintRequest([&repaints] { ++repaints; });

    view.setTimecode(timecodeOf(1, 2, 3, 4));
    view.setTimecode(timecodeOf(1, 2, 3, 4));

    EXPECT_EQ(repaints, 2);
    EXPECT_TRUE(view.needsDisplay());
}

TEST_F(TimecodeAndDateView, OnlyAnotherDateObjectAsksForARepaint) {
    int repaints = 0;
    view.setRepaintRequest([&repaints] { ++repaints; });
    const DateRef date = dateAt(5);

    view.setDate(nullptr);
    EXPECT_EQ(repaints, 0);
    EXPECT_FALSE(view.needsDisplay());
    view.setDate(date);
    EXPECT_EQ(repaints, 1);
    view.setDate(date);
    EXPECT_EQ(repaints, 1);
    view.setDate(dateAt(5)); // equal, but another object
    EXPECT_EQ(repaints, 2);
    view.setDate(nullptr);
    EXPECT_EQ(repaints, 3);
}

TEST_F(TimecodeAndDateView, TheRepaintMayReadAndDrawTheViewAtOnce) {
    view.setRepaintRequest([this] {
        (void)drawn();
        (void)view.timecode();
    });

    view.setTimecode(timecodeOf(1, 0, 0, 0));
    view.setDate(dateAt(1));

    EXPECT_EQ(context.textAttributes.size(), 2U);
}

TEST_F(TimecodeAndDateView, TheViewLetsGoOfItsDate) {
    const DateRef date = dateAt(1);
    {
        BXTimecodeAndDateView shortLived({}, localization);
        shortLived.setDate(date);
        EXPECT_EQ(date.use_count(), 2);
    }
    EXPECT_EQ(date.use_count(), 1);
}

TEST_F(TimecodeAndDateView, DrawingNeverShowsHalfATimecodeWhileFramesArrive) {
    std::atomic<bool> done = false;
    std::thread delivery([&] {
        for (int i = 0; i < 2000; ++i) {
            const auto number = static_cast<std::int16_t>(i % 24);
            view.setTimecode(timecodeOf(number, number, number, number));
            view.setDate(dateAt(i));
        }
        done = true;
    });

    bool whole = true;
    do {
        const std::string text = textsDrawn().front(); // text "hh:mm:ss.ff" ...
        whole = whole && text.substr(6, 2) == text.substr(9, 2) && text.substr(6, 2) == text.substr(15, 2);
    } while (!done);
    delivery.join();

    EXPECT_TRUE(whole);
}

} // namespace
} // namespace merro::test
