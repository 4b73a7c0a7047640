// What a capture controller tells its host and asks of it.
#pragma once

#include "platform/Value.h"

#include <functional>
#include <string>

namespace merro {

class BXMCController;

/// One member a message; an empty member is a message that the host does not answer. The controller holds the
/// delegate weakly and asks it anew for each message. The members are set before the delegate is handed over
/// and not changed afterwards.
///
/// The messages about a recording come in the order Begin, any number of (Will, Did), End, one at a time.
/// They come on the main or on the delivery thread: whoever opens or ends the clip sends them. A host may
/// take its time, wait for the main thread, and call setRecording from within each of them; what that causes
/// follows when the message has returned. It must not destroy the controller there, nor wait for a main
/// thread that is choosing a device or destroying the controller: that waits for the message.
struct BXMCControllerDelegate {
    /// Recording is switched on; nothing has been done to the tape yet.
    std::function<void(BXMCController& controller)> mccontrollerBeginRecord;

    /// A clip is about to open. Answers its identifier and the paths of its files (kBXMCClipId,
    /// kBXMCMoviePath, kBXMCThumbnailsPath), each of which may be left out (capture/ClipInfoKeys.h). A host
    /// that does not answer the message may set all three on the controller; a cut clears the paths.
    std::function<platform::Dictionary(BXMCController& controller)> mccontrollerWillRecord;

    /// A clip has ended; `info` tells what is known of it (capture/ClipInfoKeys.h). Its thumbnails file is
    /// complete but for what waits to be written; its movie ends with the clip's last frame, which may just
    /// be on its way there.
    std::function<void(BXMCController& controller, const platform::Dictionary& info)>
        mccontrollerDidRecordInfo;

    /// Recording is switched off, the last clip reported, the tape left as the user wants it.
    std::function<void(BXMCController& controller)> mccontrollerEndRecord;

    /// The user saves the settings as a preset; giving it a name and storing it is the host's business. Main
    /// thread.
    std::function<void(BXMCController& controller, const platform::Dictionary& preset)>
        mccontrollerSaveConfiguration;

    /// The user deletes the preset called `name`. Main thread. Never sent to a delegate that does not answer
    /// mccontrollerSaveConfiguration.
    std::function<void(BXMCController& controller, const std::string& name)>
        mccontrollerDeleteConfigurationName;
};

} // namespace merro
