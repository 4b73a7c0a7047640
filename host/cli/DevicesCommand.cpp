// merro devices: what there is to log from.
#include "host/cli/Commands.h"
#include "host/shared/DeviceReport.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace merro::host {

ExitStatus runDevices(const DevicesArguments& arguments) {
    const DeviceReport report = reportDevices();
    if (arguments.json)
        fmt::print("{}\n",
                   devicesJson(report).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    else
        fmt::print(stderr, "{}", describeDevices(report));
    return ExitStatus::Done;
}

} // namespace merro::host
