// The timecode and the recording date of the frame being captured, in two small boxes over the picture.
//
// Values are set on the delivery thread, for every frame; drawing happens on the main thread. Held by
// std::shared_ptr like every view.
#pragma once

#include "platform/Date.h"
#include "platform/Localization.h"
#include "platform/SMPTETime.h"
#include "platform/View.h"

#include <mutex>

namespace merro {

class BXTimecodeAndDateView : public platform::View {
public:
    /// Shows 00:00:00.00 and no date at first. `localization` words the date and outlives the view.
    BXTimecodeAndDateView(const platform::Rect& frame, const platform::Localization& localization);

    /// How both texts are drawn.
    [[nodiscard]] static const platform::TextAttributes& textAttributes();

    [[nodiscard]] SMPTETime timecode() const;
    /// Asks for a repaint at every call, also when the value is unchanged. Any thread.
    void setTimecode(const SMPTETime& timecode);

    /// Null when there is none.
    [[nodiscard]] platform::DateRef date() const;
    /// Does nothing when handed the very object that is shown, otherwise asks for a repaint. Any thread.
    void setDate(const platform::DateRef& date);

    /// Draws both boxes at their fixed places, whatever the view's size and `dirtyRect`.
    void drawRect(platform::GraphicsContext& context, const platform::Rect& dirtyRect) override;

private:
    const platform::Localization& m_localization;
    mutable std::mutex m_displayLock;
    SMPTETime m_timecode;
    platform::DateRef m_date;
};

} // namespace merro
