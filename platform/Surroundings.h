// Everything that the component asks of its surroundings, gathered for handing to a controller.
//
// References: whoever makes the surroundings keeps them alive longer than the controllers.
#pragma once

namespace merro::platform {

class Alerts;
class Clock;
class CompressionComponents;
class Files;
class InterfaceLoader;
class Localization;
class Log;
class NotificationCenter;
class QTCaptureFramework;
class RunLoop;
class Threads;
class UserDefaults;

struct Surroundings {
    Clock& clock;
    RunLoop& runLoop;
    Threads& threads;
    NotificationCenter& notifications;
    UserDefaults& defaults;
    Localization& localization;
    Log& log;
    Alerts& alerts;
    Files& files;
    InterfaceLoader& interfaces;
    QTCaptureFramework& capture;
    CompressionComponents& compression;
};

} // namespace merro::platform
