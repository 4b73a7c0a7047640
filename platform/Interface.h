// Interface descriptions ("capture.nib") and the controls that the controllers talk to.
//
// Held by std::shared_ptr. Main thread unless said otherwise.
#pragma once

#include "platform/QTCompressionOptions.h"
#include "platform/Value.h"
#include "platform/View.h"

#include <memory>
#include <string>
#include <variant>

namespace merro::platform {

class Button {
public:
    virtual ~Button() = default;
    virtual void setState(bool on) = 0;
    [[nodiscard]] virtual bool state() const = 0;
};

/// What an item of a pop-up stands for: nothing, a preset, or a compression choice.
using RepresentedObject = std::variant<std::monostate, Dictionary, CompressionOptionsRef>;

struct PopUpItem {
    std::string title;
    int tag = 0;
    RepresentedObject representedObject;
};

class PopUpButton {
public:
    virtual ~PopUpButton() = default;
    virtual void removeAllItems() = 0;
    virtual void addItem(PopUpItem item) = 0;
    [[nodiscard]] virtual int numberOfItems() const = 0;
    /// None when the index is outside the items.
    [[nodiscard]] virtual const PopUpItem* itemAtIndex(int index) const = 0;
    /// Selects without running the pop-up's action; an index outside the items selects nothing. Any thread.
    virtual void selectItemAtIndex(int index) = 0;
    /// -1 when none is selected. Any thread.
    [[nodiscard]] virtual int indexOfSelectedItem() const = 0;

    [[nodiscard]] const PopUpItem* selectedItem() const { return itemAtIndex(indexOfSelectedItem()); }
};

/// One loaded interface description: its outlets by name. Asking for a name that it does not have answers
/// null.
class LoadedInterface {
public:
    virtual ~LoadedInterface() = default;
    [[nodiscard]] virtual std::shared_ptr<View> view(const std::string& outlet) = 0;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureView> captureView(const std::string& outlet) = 0;
    [[nodiscard]] virtual std::shared_ptr<PopUpButton> popUpButton(const std::string& outlet) = 0;
    [[nodiscard]] virtual std::shared_ptr<Button> button(const std::string& outlet) = 0;
};

class InterfaceLoader {
public:
    virtual ~InterfaceLoader() = default;
    /// Never null: a description that cannot be loaded is told to the user and has no outlets.
    [[nodiscard]] virtual std::unique_ptr<LoadedInterface> load(const std::string& name) = 0;
};

} // namespace merro::platform
