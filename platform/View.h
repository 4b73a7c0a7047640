// A rectangle on the screen that draws itself.
#pragma once

#include "platform/GraphicsContext.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace merro::platform {

/// Held by std::shared_ptr. Drawing and the frame belong to the main thread; hiding and asking for a repaint
/// are allowed on any thread.
class View {
public:
    explicit View(const Rect& frame = {}) : m_frame(frame) {}
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    [[nodiscard]] const Rect& frame() const { return m_frame; }

    [[nodiscard]] bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }

    /// Asks whoever shows the view to have it drawn again soon on the main thread; never draws at once.
    void setNeedsDisplay(bool needs) {
        m_needsDisplay = needs;
        std::function<void()> repaint;
        {
            const std::lock_guard lock(m_mutex);
            repaint = m_repaint;
        }
        if (needs && repaint)
            repaint();
    }
    [[nodiscard]] bool needsDisplay() const { return m_needsDisplay; }

    /// What setNeedsDisplay calls, on the thread that asks; set by the window that shows the view.
    void setRepaintRequest(std::function<void()> repaint) {
        const std::lock_guard lock(m_mutex);
        m_repaint = std::move(repaint);
    }

    /// Draws the view in its own coordinates. `dirtyRect` is the part that needs it.
    virtual void drawRect(GraphicsContext& context, const Rect& dirtyRect) {
        (void)context;
        (void)dirtyRect;
    }

private:
    Rect m_frame;
    std::atomic<bool> m_hidden = false;
    std::atomic<bool> m_needsDisplay = false;
    std::mutex m_mutex;
    std::function<void()> m_repaint;
};

enum class Ordered { Above, Below };

class QTCaptureSession;

/// The preview of a capture session, with views laid over the picture. Main thread.
class QTCaptureView : public View {
public:
    using View::View;
    virtual void setCaptureSession(const std::shared_ptr<QTCaptureSession>& session) = 0;
    virtual void addOverlayView(const std::shared_ptr<View>& view, Ordered ordered) = 0;
    virtual void removeOverlayView(const std::shared_ptr<View>& view) = 0;
};

} // namespace merro::platform
