#include "host/shared/DeviceReport.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace merro::host {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLogAFile = "Any DV file can be logged: merro log FILE --into FOLDER";

std::string firstLine(const fs::path& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

/// "fw0", "fw1"; units within a device are "fw1.0".
bool isNodeName(const std::string& name) {
    return name.size() > 2 && name.starts_with("fw") &&
           std::all_of(name.begin() + 2, name.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

FireWireUnit readUnit(const fs::path& entry, const std::string& name, const FireWirePlaces& places) {
    FireWireUnit unit;
    unit.node = (fs::path(places.deviceNodes) / name).string();
    unit.guid = firstLine(entry / "guid");
    const std::string vendor = firstLine(entry / "vendor_name");
    const std::string model = firstLine(entry / "model_name");
    unit.name = vendor + (vendor.empty() || model.empty() ? "" : " ") + model;
    unit.isReadable = ::access(unit.node.c_str(), R_OK | W_OK) == 0;
    return unit;
}

const char* stateName(FireWireState state) {
    switch (state) {
    case FireWireState::NoBus:
        return "noBus";
    case FireWireState::NothingThere:
        return "nothingConnected";
    case FireWireState::NoPermission:
        return "noPermission";
    case FireWireState::NotBuiltIn:
        break;
    }
    return "notBuiltIn";
}

std::string why(const DeviceReport& report) {
    switch (report.fireWire) {
    case FireWireState::NoBus:
        return "This machine has no FireWire port, or its kernel module firewire_ohci is not loaded (sudo "
               "modprobe "
               "firewire_ohci)";
    case FireWireState::NothingThere:
        return "There is a FireWire port and nothing on it: is the cable in, and the camcorder on and set to "
               "play back?";
    case FireWireState::NoPermission:
        return "A device is connected, but you may not open it: the group video owns it (sudo adduser $USER "
               "video, "
               "then log in again)";
    case FireWireState::NotBuiltIn:
        break;
    }
    return "A device is connected, but this program was built without support for FireWire";
}

} // namespace

DeviceReport reportDevices(const FireWirePlaces& places) {
    DeviceReport report;
    bool hasPort = false;
    std::error_code error;
    for (fs::directory_iterator entry(fs::path(places.bus) / "devices", error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!isNodeName(name))
            continue;
        if (firstLine(entry->path() / "is_local") == "1")
            hasPort = true;
        else
            report.units.push_back(readUnit(entry->path(), name, places));
    }
    std::sort(report.units.begin(), report.units.end(),
              [](const FireWireUnit& left, const FireWireUnit& right) { return left.node < right.node; });
    const bool anyReadable = std::any_of(report.units.begin(), report.units.end(),
                                         [](const FireWireUnit& unit) { return unit.isReadable; });
    if (!report.units.empty())
        report.fireWire = anyReadable ? FireWireState::NotBuiltIn : FireWireState::NoPermission;
    else
        report.fireWire = hasPort ? FireWireState::NothingThere : FireWireState::NoBus;
    return report;
}

std::string describeDevices(const DeviceReport& report) {
    std::string text = "No capture device can be used.\n";
    for (const FireWireUnit& unit : report.units)
        text += fmt::format("  {}  {}  {}\n", unit.node, unit.guid, unit.name);
    return text + why(report) + ".\n" + kLogAFile + "\n";
}

nlohmann::ordered_json devicesJson(const DeviceReport& report) {
    nlohmann::ordered_json units = nlohmann::ordered_json::array();
    for (const FireWireUnit& unit : report.units)
        units.push_back(
            {{"node", unit.node}, {"name", unit.name}, {"guid", unit.guid}, {"readable", unit.isReadable}});
    nlohmann::ordered_json json;
    json["devices"] = nlohmann::ordered_json::array();
    json["firewire"] = {{"state", stateName(report.fireWire)}, {"why", why(report)}, {"units", units}};
    return json;
}

} // namespace merro::host
