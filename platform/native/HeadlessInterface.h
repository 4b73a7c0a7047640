// Interface descriptions for a program without a screen: controls that only remember their state.
#pragma once

#include "platform/Interface.h"
#include "platform/Log.h"

#include <atomic>
#include <map>
#include <mutex>
#include <vector>

namespace merro::platform::native {

/// Any thread.
class HeadlessButton final : public Button {
public:
    void setState(bool on) override { m_isOn = on; }
    [[nodiscard]] bool state() const override { return m_isOn; }

private:
    std::atomic<bool> m_isOn = false;
};

/// Items belong to the main thread; selecting is allowed on any. Adding the first item selects nothing.
class HeadlessPopUpButton final : public PopUpButton {
public:
    void removeAllItems() override;
    void addItem(PopUpItem item) override;
    [[nodiscard]] int numberOfItems() const override;
    [[nodiscard]] const PopUpItem* itemAtIndex(int index) const override;
    void selectItemAtIndex(int index) override;
    [[nodiscard]] int indexOfSelectedItem() const override;

private:
    mutable std::mutex m_mutex;
    std::vector<std::unique_ptr<PopUpItem>> m_items; ///< items stay where they are when others are added
    int m_selected = -1;
};

/// Remembers its session and overlays and shows nothing. Main thread.
class HeadlessCaptureView final : public QTCaptureView {
public:
    using QTCaptureView::QTCaptureView;
    void setCaptureSession(const std::shared_ptr<QTCaptureSession>& session) override { m_session = session; }
    void addOverlayView(const std::shared_ptr<View>& view, Ordered ordered) override;
    void removeOverlayView(const std::shared_ptr<View>& view) override;

    [[nodiscard]] const std::shared_ptr<QTCaptureSession>& captureSession() const { return m_session; }
    /// From the lowest to the topmost.
    [[nodiscard]] const std::vector<std::shared_ptr<View>>& overlayViews() const { return m_overlays; }

private:
    std::shared_ptr<QTCaptureSession> m_session;
    std::vector<std::shared_ptr<View>> m_overlays;
};

/// Outlets by name, filled by whoever makes it.
class HeadlessInterface final : public LoadedInterface {
public:
    [[nodiscard]] std::shared_ptr<View> view(const std::string& outlet) override;
    [[nodiscard]] std::shared_ptr<QTCaptureView> captureView(const std::string& outlet) override;
    [[nodiscard]] std::shared_ptr<PopUpButton> popUpButton(const std::string& outlet) override;
    [[nodiscard]] std::shared_ptr<Button> button(const std::string& outlet) override;

    void addView(const std::string& outlet, std::shared_ptr<View> view);
    void addCaptureView(const std::string& outlet, std::shared_ptr<QTCaptureView> view); ///< a view, too
    void addPopUpButton(const std::string& outlet, std::shared_ptr<PopUpButton> popUp);
    void addButton(const std::string& outlet, std::shared_ptr<Button> button);

private:
    std::map<std::string, std::shared_ptr<View>> m_views;
    std::map<std::string, std::shared_ptr<QTCaptureView>> m_captureViews;
    std::map<std::string, std::shared_ptr<PopUpButton>> m_popUps;
    std::map<std::string, std::shared_ptr<Button>> m_buttons;
};

/// Knows "capture.nib" (with or without the ending):
///   configurationPopUp   item 0, selected, is "Custom settings": settings edited by hand
///   compressionPopUp     empty
///   sizePopUp            tags 0 to 4, "160 x 120" to "1980 x 1080", and 5, the codec's own size; tag 2
///   selected rewindButton playButton recordButton forwardButton captureView, configurationView devicesView
///   compressionView thumbnailsView controlView
/// Any other name has no outlets and gets a line in `log`, which outlives the loader.
class HeadlessInterfaceLoader final : public InterfaceLoader {
public:
    explicit HeadlessInterfaceLoader(Log& log = processLog()) : m_log(log) {}
    [[nodiscard]] std::unique_ptr<LoadedInterface> load(const std::string& name) override;

private:
    Log& m_log;
};

} // namespace merro::platform::native
