#include "platform/native/HeadlessInterface.h"

#include <algorithm>
#include <array>

namespace merro::platform::native {

namespace {

template <typename T>
std::shared_ptr<T> outletNamed(const std::map<std::string, std::shared_ptr<T>>& outlets,
                               const std::string& name) {
    const auto found = outlets.find(name);
    return found == outlets.end() ? nullptr : found->second;
}

std::unique_ptr<HeadlessInterface> makeCaptureInterface() {
    auto interface = std::make_unique<HeadlessInterface>();

    auto configurations = std::make_shared<HeadlessPopUpButton>();
    configurations->addItem({"Custom settings", 0, {}});
    configurations->selectItemAtIndex(0);
    interface->addPopUpButton("configurationPopUp", std::move(configurations));
    interface->addPopUpButton("compressionPopUp", std::make_shared<HeadlessPopUpButton>());

    auto sizes = std::make_shared<HeadlessPopUpButton>();
    constexpr std::array kSizes{"160 x 120",  "320 x 240",   "640 x 480",
                                "1280 x 720", "1980 x 1080", "Size of the original"};
    for (std::size_t tag = 0; tag < kSizes.size(); ++tag)
        sizes->addItem({kSizes.at(tag), static_cast<int>(tag), {}});
    sizes->selectItemAtIndex(2);
    interface->addPopUpButton("sizePopUp", std::move(sizes));

    for (const char* const outlet : {"rewindButton", "playButton", "recordButton", "forwardButton"})
        interface->addButton(outlet, std::make_shared<HeadlessButton>());
    for (const char* const outlet :
         {"configurationView", "devicesView", "compressionView", "thumbnailsView", "controlView"})
        interface->addView(outlet, std::make_shared<View>());
    interface->addCaptureView("captureView", std::make_shared<HeadlessCaptureView>(Rect{0, 0, 640, 480}));
    return interface;
}

} // namespace

void HeadlessPopUpButton::removeAllItems() {
    std::vector<std::unique_ptr<PopUpItem>> removed; // what the items stand for goes without the lock
    const std::lock_guard lock(m_mutex);
    removed.swap(m_items);
    m_selected = -1;
}

void HeadlessPopUpButton::addItem(PopUpItem item) {
    auto added = std::make_unique<PopUpItem>(std::move(item));
    const std::lock_guard lock(m_mutex);
    m_items.push_back(std::move(added));
}

int HeadlessPopUpButton::numberOfItems() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_items.size());
}

const PopUpItem* HeadlessPopUpButton::itemAtIndex(int index) const {
    const std::lock_guard lock(m_mutex);
    const bool isInside = index >= 0 && index < static_cast<int>(m_items.size());
    return isInside ? m_items[static_cast<std::size_t>(index)].get() : nullptr;
}

void HeadlessPopUpButton::selectItemAtIndex(int index) {
    const std::lock_guard lock(m_mutex);
    m_selected = index >= 0 && index < static_cast<int>(m_items.size()) ? index : -1;
}

int HeadlessPopUpButton::indexOfSelectedItem() const {
    const std::lock_guard lock(m_mutex);
    return m_selected;
}

void HeadlessCaptureView::addOverlayView(const std::shared_ptr<View>& view, Ordered ordered) {
    m_overlays.insert(ordered == Ordered::Above ? m_overlays.end() : m_overlays.begin(), view);
}

void HeadlessCaptureView::removeOverlayView(const std::shared_ptr<View>& view) {
    std::erase(m_overlays, view);
}

std::shared_ptr<View> HeadlessInterface::view(const std::string& outlet) {
    return outletNamed(m_views, outlet);
}

std::shared_ptr<QTCaptureView> HeadlessInterface::captureView(const std::string& outlet) {
    return outletNamed(m_captureViews, outlet);
}

std::shared_ptr<PopUpButton> HeadlessInterface::popUpButton(const std::string& outlet) {
    return outletNamed(m_popUps, outlet);
}

std::shared_ptr<Button> HeadlessInterface::button(const std::string& outlet) {
    return outletNamed(m_buttons, outlet);
}

void HeadlessInterface::addView(const std::string& outlet, std::shared_ptr<View> view) {
    m_views[outlet] = std::move(view);
}

void HeadlessInterface::addCaptureView(const std::string& outlet, std::shared_ptr<QTCaptureView> view) {
    m_views[outlet] = view;
    m_captureViews[outlet] = std::move(view);
}

void HeadlessInterface::addPopUpButton(const std::string& outlet, std::shared_ptr<PopUpButton> popUp) {
    m_popUps[outlet] = std::move(popUp);
}

void HeadlessInterface::addButton(const std::string& outlet, std::shared_ptr<Button> button) {
    m_buttons[outlet] = std::move(button);
}

std::unique_ptr<LoadedInterface> HeadlessInterfaceLoader::load(const std::string& name) {
    if (name == "capture.nib" || name == "capture")
        return makeCaptureInterface();
    m_log.line("There is no interface description \"" + name + "\"");
    return std::make_unique<HeadlessInterface>();
}

} // namespace merro::platform::native
