// What is there to log from: the devices that the capture framework offers, and, where a FireWire bus has
// something on it that cannot be used, why not.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace merro::host {

/// Where the system tells of FireWire; tests put folders of their own here.
struct FireWirePlaces {
    std::string bus = "/sys/bus/firewire";
    std::string deviceNodes = "/dev";
};

enum class FireWireState {
    NoBus,        ///< no port, or its kernel module is not loaded
    NothingThere, ///< a port, and nothing connected to it
    NoPermission, ///< something is connected, and this user may not open it
    NotBuiltIn,   ///< something is connected, and this program was built without support for it
};

struct FireWireUnit {
    std::string node; ///< "/dev/fw1"
    std::string name; ///< vendor and model as the device tells them; may be empty
    std::string guid; ///< "0x0800460103c2a5b1"; may be empty
    bool isReadable = false;
};

struct DeviceReport {
    FireWireState fireWire = FireWireState::NoBus;
    std::vector<FireWireUnit> units; ///< without the machine's own ports
};

/// Looks; opens nothing.
[[nodiscard]] DeviceReport reportDevices(const FireWirePlaces& places = {});

/// One or two lines for people, and what to do.
[[nodiscard]] std::string describeDevices(const DeviceReport& report);

/// {"devices": [], "firewire": {"state", "why", "units": [{"node", "name", "guid", "readable"}]}}
[[nodiscard]] nlohmann::ordered_json devicesJson(const DeviceReport& report);

} // namespace merro::host
