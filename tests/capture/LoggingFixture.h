// A capture controller among fakes, a deck, a host that answers every message, and frames to hand over.
//
// Everything that happens goes into one journal, in order: the messages ("begin", "will 1", "did 1", "end"),
// the commands to the deck ("deck speed 10000 mode 1"), the session ("start", "stop"), and the movies ("1
// record /1.mov", "1 record nothing"; 1 is the movie-file output).
#pragma once

#include "capture/BXMCController.h"
#include "capture/CaptureDefaults.h"
#include "platform/deck/DVFrameBuilder.h"
#include "tests/support/FakeDevice.h"
#include "tests/support/TestSurroundings.h"
#include "timecode/BXMCTimecodeUtils.h"
#include "views/BXTimecodeAndDateView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::test {

using Entries = std::vector<std::string>;

constexpr Transport kPlaying{10000, 1};
constexpr Transport kPaused{0, 1};

/// "01:02:03:04" at 25 frames a second; missing when empty.
inline TimecodeValue timecode(const std::string& text) {
    if (text.empty())
        return {};
    SMPTETime time = BXMCTimecodeUtils::generateTimecodeValueWithTimecodeString(text).SMPTETimeValue();
    time.mType = kSMPTETimeType25;
    return TimecodeValue::valueWithSMPTETime(time);
}

/// "01:02:03:04", or "-" when missing.
inline std::string text(const TimecodeValue& value) {
    if (!value)
        return "-";
    const SMPTETime time = value.SMPTETimeValue();
    std::string result(12, '\0');
    result.resize(
        static_cast<std::size_t>(std::snprintf(result.data(), result.size(), "%02d:%02d:%02d:%02d",
                                               time.mHours, time.mMinutes, time.mSeconds, time.mFrames)));
    return result;
}

/// "hh:mm:ss" of a date of 17 March 2005, or "-" when there is none.
inline std::string text(const platform::DateRef& date) {
    if (!date)
        return "-";
    const platform::CalendarFields fields = platform::calendarFromDate(*date);
    std::string result(9, '\0');
    result.resize(static_cast<std::size_t>(std::snprintf(result.data(), result.size(), "%02d:%02d:%02d",
                                                         fields.hours, fields.minutes, fields.seconds)));
    return result;
}

class LoggingFixture : public ::testing::Test {
protected:
    LoggingFixture() {
        platform::setProcessLog(&surroundings.log);
        host->mccontrollerBeginRecord = [this](BXMCController&) {
            note("begin");
            if (onBegin)
                onBegin();
        };
        host->mccontrollerWillRecord = [this](BXMCController&) {
            const std::string number = std::to_string(++clipsOpened);
            note("will " + number);
            if (onWill)
                onWill();
            return answer ? *answer
                          : platform::Dictionary{{std::string(kBXMCClipId), number},
                                                 {std::string(kBXMCMoviePath), "/" + number + ".mov"},
                                                 {std::string(kBXMCThumbnailsPath), thumbnails(clipsOpened)}};
        };
        host->mccontrollerDidRecordInfo = [this](BXMCController&, const platform::Dictionary& info) {
            const platform::Value* clipId = platform::find(info, kBXMCClipId);
            note("did " + (clipId != nullptr ? clipId->stringValue() : std::string("-")));
            reports.push_back(info);
            if (onDid)
                onDid();
        };
        host->mccontrollerEndRecord = [this](BXMCController&) {
            note("end");
            if (onEnd)
                onEnd();
        };
        controller = std::make_unique<BXMCController>(surroundings.all);
        controller->setDelegate(host);
        set(BXMCActionAfterRecord, 0);
        set(BXMCSampleInterval, 0);
    }

    ~LoggingFixture() override { platform::setProcessLog(nullptr); }

    // --- Steps of a test ---

    void note(const std::string& entry) { surroundings.journal->add(entry); }
    void set(std::string_view key, const platform::Value& value) {
        surroundings.defaults.setObjectForKey(value, key);
    }

    /// Connects the deck, which then stands as `transport` says.
    void connectDeck(Transport transport = kPlaying) {
        deck->report(transport);
        controller->setSelectedVideoDevice(deck);
        surroundings.journal->clear();
    }

    /// Makes a frame of 17 March 2005 (`time` is "hh:mm:ss"; empty for no date) with a timecode (empty for
    /// none).
    [[nodiscard]] platform::QTSampleBuffer makeFrame(const std::string& timecodeText,
                                                     const std::string& time) {
        platform::deck::DVFrameBuilder builder(platform::deck::DVSystem::System625_50);
        builder.setFrameCount(static_cast<unsigned>(framesMade.size() % 12));
        if (!time.empty()) {
            builder.setRecordingDateTime({2005, 3, 17, std::stoi(time.substr(0, 2)),
                                          std::stoi(time.substr(3, 2)), std::stoi(time.substr(6, 2))});
        }
        builder.setPicture({.isWide = isWide});
        // The frame's number, in picture bytes that nothing here reads.
        auto bytes = builder.bytes();
        bytes[bytes.size() - 1] = static_cast<std::uint8_t>(framesMade.size());
        bytes[bytes.size() - 2] = static_cast<std::uint8_t>(framesMade.size() >> 8);
        framesMade.push_back(platform::FrameBytes::taking(std::move(bytes)));
        return {platform::MediaType::Video, framesMade.back(), timecode(timecodeText)};
    }

    /// Hands a frame to both outputs, as the session does, and answers it.
    platform::QTSampleBuffer deliver(const std::string& timecodeText, const std::string& time) {
        platform::QTSampleBuffer frame = makeFrame(timecodeText, time);
        deliver(frame);
        return frame;
    }
    void deliver(const platform::QTSampleBuffer& frame) {
        for (const auto& output : surroundings.capture.movieFileOutputs)
            output->deliver(frame);
    }

    /// Hands over `count` frames in a row from a timecode on, all of one recording time.
    void deliverRun(int count, const std::string& firstTimecode, const std::string& time) {
        SMPTETime next = timecode(firstTimecode).SMPTETimeValue();
        for (int i = 0; i < count; ++i) {
            deliver(text(TimecodeValue::valueWithSMPTETime(next)), time);
            next = BXMCTimecodeUtils::addNbFrameToTimecode(1, next);
        }
    }

    // --- What came of it ---

    [[nodiscard]] static std::string thumbnails(int clip) {
        return "/" + std::to_string(clip) + ".thumbnails";
    }

    /// The numbers of the frames in a thumbnails file, in order, frames being counted from 0 as they were
    /// made; -1 for anything that is no whole frame.
    [[nodiscard]] std::vector<int> framesIn(const std::string& path) const {
        const auto bytes = surroundings.files.file(path).bytes;
        std::vector<int> numbers;
        std::size_t offset = 0;
        while (offset < bytes.size()) {
            int number = -1;
            for (std::size_t i = 0; i < framesMade.size() && number < 0; ++i) {
                const auto frame = framesMade[i].bytes();
                if (offset + frame.size() <= bytes.size() &&
                    std::equal(frame.begin(), frame.end(),
                               bytes.begin() + static_cast<std::ptrdiff_t>(offset)))
                    number = static_cast<int>(i);
            }
            numbers.push_back(number);
            if (number < 0)
                break;
            offset += framesMade[static_cast<std::size_t>(number)].size();
        }
        return numbers;
    }

    [[nodiscard]] Entries journal() const { return surroundings.journal->entries(); }

    /// The journal's messages to the host, without the rest.
    [[nodiscard]] Entries messages() const {
        Entries found;
        for (const std::string& entry : journal()) {
            if (entry == "begin" || entry == "end" || entry.starts_with("will") || entry.starts_with("did"))
                found.push_back(entry);
        }
        return found;
    }

    /// The journal's lines about the movie-file output, without its number.
    [[nodiscard]] Entries movies() const {
        Entries found;
        for (const std::string& entry : journal()) {
            if (entry.starts_with("1 record "))
                found.push_back(entry.substr(9));
        }
        return found;
    }

    [[nodiscard]] static TimecodeValue timecodeIn(const platform::Dictionary& info, std::string_view key) {
        const platform::Value* value = platform::find(info, key);
        return value != nullptr ? *value->getIf<TimecodeValue>() : TimecodeValue();
    }
    [[nodiscard]] static platform::DateRef dateIn(const platform::Dictionary& info) {
        const platform::Value* value = platform::find(info, kBXMCClipRecordingDate);
        return value != nullptr ? *value->getIf<platform::DateRef>() : nullptr;
    }
    /// "start - end date" of a report.
    [[nodiscard]] std::string report(std::size_t index) const {
        const platform::Dictionary& info = reports.at(index);
        return text(timecodeIn(info, kBXMCClipStartTimecode)) + " - " +
               text(timecodeIn(info, kBXMCClipEndTimecode)) + " " + text(dateIn(info));
    }

    TestSurroundings surroundings;
    std::shared_ptr<FakeDevice> deck = std::make_shared<FakeDevice>("deck", surroundings.journal);
    std::shared_ptr<BXMCControllerDelegate> host = std::make_shared<BXMCControllerDelegate>();
    std::unique_ptr<BXMCController> controller;

    // What the host does within a message, besides noting it.
    std::function<void()> onBegin;
    std::function<void()> onWill;
    std::function<void()> onDid;
    std::function<void()> onEnd;
    std::optional<platform::Dictionary>
        answer; ///< to "will"; by default identifier and paths with the clip's number
    int clipsOpened = 0;
    std::vector<platform::Dictionary> reports;
    bool isWide = false; ///< the next frames
    std::vector<platform::FrameBytes> framesMade;
};

} // namespace merro::test
