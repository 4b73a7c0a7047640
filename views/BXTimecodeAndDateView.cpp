#include "views/BXTimecodeAndDateView.h"

#include <array>
#include <cstdio>
#include <string>

namespace merro {

using platform::Color;
using platform::GraphicsContext;
using platform::RoundedRect;

namespace {

constexpr float kCornerRadius = 10;
constexpr RoundedRect kTimecodeBox{{10, 455, 72, 15}, kCornerRadius};
constexpr RoundedRect kDateBox{{90, 455, 82, 15}, kCornerRadius};
constexpr Color kDarkGreen{0.1F, 0.5F, 0.2F, 1.0F};

void drawBox(GraphicsContext& context, const RoundedRect& box, const Color& color) {
    context.setLineWidth(2);
    context.setFillColor(color);
    context.fill(box);
    context.setStrokeColor(platform::kWhite);
    context.stroke(box);
}

std::string timecodeText(const SMPTETime& time) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%02d", time.mHours, time.mMinutes,
                        time.mSeconds, time.mFrames);
    return text.data();
}

} // namespace

BXTimecodeAndDateView::BXTimecodeAndDateView(const platform::Rect& frame,
                                             const platform::Localization& localization)
    : View(frame), m_localization(localization) {}

const platform::TextAttributes& BXTimecodeAndDateView::textAttributes() {
    static const platform::TextAttributes attributes{
        .fontName = "Helvetica",
        .fontSize = 11,
        .color = platform::kWhite,
        .alignment = platform::TextAlignment::Centred,
        .lineBreak = platform::LineBreak::TruncateTail,
        .firstLineIndent = 0,
    };
    return attributes;
}

SMPTETime BXTimecodeAndDateView::timecode() const {
    const std::lock_guard lock(m_displayLock);
    return m_timecode;
}

void BXTimecodeAndDateView::setTimecode(const SMPTETime& timecode) {
    {
        const std::lock_guard lock(m_displayLock);
        m_timecode = timecode;
    }
    setNeedsDisplay(true);
}

platform::DateRef BXTimecodeAndDateView::date() const {
    const std::lock_guard lock(m_displayLock);
    return m_date;
}

void BXTimecodeAndDateView::setDate(const platform::DateRef& date) {
    {
        const std::lock_guard lock(m_displayLock);
        if (date == m_date)
            return;
        m_date = date;
    }
    setNeedsDisplay(true);
}

void BXTimecodeAndDateView::drawRect(GraphicsContext& context, const platform::Rect&) {
    // Both values are taken together and then drawn without the lock, so that a slow screen never holds up
    // the thread that brings the frames.
    SMPTETime shownTimecode;
    platform::DateRef shownDate;
    {
        const std::lock_guard lock(m_displayLock);
        shownTimecode = m_timecode;
        shownDate = m_date;
    }
    context.saveState();
    drawBox(context, kTimecodeBox, platform::kBlack);
    context.drawText(timecodeText(shownTimecode), kTimecodeBox.rect, textAttributes());
    drawBox(context, kDateBox, kDarkGreen);
    if (shownDate)
        context.drawText(m_localization.mediumDateAndTime(*shownDate), kDateBox.rect, textAttributes());
    context.restoreState();
}

} // namespace merro
