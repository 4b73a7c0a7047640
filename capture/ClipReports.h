// The conversation about clips with the host: which of the delegate's messages it answers, and sending them.
//
// Any thread; nothing is locked while a message is under way. The delegate is held weakly and asked anew each
// time.
#pragma once

#include "capture/BXMCControllerDelegate.h"
#include "capture/ClipInfoKeys.h"
#include "capture/ClipRecord.h"
#include "platform/Cell.h"
#include "platform/Value.h"

#include <memory>
#include <optional>

namespace merro {

/// The dictionary that reports a clip: each field that is known, and always the aspect ratio.
[[nodiscard]] platform::Dictionary clipDictionary(const ClipRecord& clip);

class ClipReports {
public:
    /// `controller` is handed to the delegate as the sender.
    explicit ClipReports(BXMCController& controller) : m_controller(controller) {}

    void setDelegate(const std::shared_ptr<BXMCControllerDelegate>& delegate) { m_delegate.set(delegate); }
    [[nodiscard]] std::shared_ptr<BXMCControllerDelegate> delegate() const { return m_delegate.get().lock(); }

    void beginRecord();

    /// The host's answer; none when there is no delegate or it does not answer the message.
    [[nodiscard]] std::optional<platform::Dictionary> willRecord();

    [[nodiscard]] bool answersDidRecord() const;
    void didRecord(const platform::Dictionary& info);

    void endRecord();

    [[nodiscard]] bool answersSaveConfiguration() const;
    void saveConfiguration(const platform::Dictionary& preset);
    void deleteConfiguration(const std::string& name);

private:
    BXMCController& m_controller;
    platform::Cell<std::weak_ptr<BXMCControllerDelegate>> m_delegate;
};

} // namespace merro
