// A VideoCompression over fakes, for the tests of its choices and of its compression component.
#pragma once

#include "capture/CaptureDefaults.h"
#include "capture/QTCustomCompressionOptions.h"
#include "capture/QTNoCompressionOptions.h"
#include "capture/VideoCompression.h"
#include "tests/support/FakeDevice.h"
#include "tests/support/TestSurroundings.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::test {

using platform::CompressionOptionsRef;
using platform::Data;
using platform::fourCharCode;
using platform::QTVideoCompressionOptions;
using platform::Value;
using platform::native::HeadlessPopUpButton;

inline constexpr std::uint32_t kCodec = fourCharCode("avc1");

/// The choices are "None" (0), "H.264" (1), "Photo JPEG" (2), "Custom..." (3).
class Compression : public testing::Test {
protected:
    Compression() {
        storeMissingCaptureDefaults(surroundings.defaults);
        declareCaptureDependentKeys(announcements);
        component.codecType = kCodec;
    }

    void giveTheSessionAnInput() {
        const auto input = std::make_shared<FakeDeviceInput>(std::make_shared<FakeDevice>());
        ASSERT_FALSE(session->addInput(input).has_value());
    }

    /// What the video connection was given last.
    [[nodiscard]] CompressionOptionsRef applied() const {
        const auto all = output->compressionOptions();
        return all.empty() ? nullptr : all.back().second;
    }
    [[nodiscard]] std::shared_ptr<const QTVideoCompressionOptions> appliedCustomOptions() const {
        return std::dynamic_pointer_cast<const QTVideoCompressionOptions>(applied());
    }

    void storeCustomSettings(const Data& settings) {
        defaults.setObjectForKey(settings, "captureMovieCompressionData");
    }
    [[nodiscard]] std::optional<Value> storedCustomSettings() const {
        return defaults.objectForKey("captureMovieCompressionData");
    }
    [[nodiscard]] std::vector<std::string> logged() const { return surroundings.log.lines(); }

    TestSurroundings surroundings;
    platform::native::MemoryUserDefaults& defaults = surroundings.defaults;
    FakeCompressionComponents& component = surroundings.compression;
    platform::KeyValueObserving announcements;
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>(surroundings.journal);
    std::shared_ptr<FakeMovieFileOutput> output =
        std::make_shared<FakeMovieFileOutput>(1, surroundings.journal);
    std::shared_ptr<HeadlessPopUpButton> popUp = std::make_shared<HeadlessPopUpButton>();
    CompressionOptionsRef none = QTNoCompressionOptions::noCompressionOptions();
    CompressionOptionsRef custom = QTCustomCompressionOptions::customCompressionOptions();
    CompressionOptionsRef h264 = surroundings.capture.videoChoices[0].second;
    CompressionOptionsRef jpeg = surroundings.capture.videoChoices[1].second;
    VideoCompression compression{surroundings.all, announcements, session,
                                 output,           popUp,         "captureMovieCompressionData"};
};

} // namespace merro::test
