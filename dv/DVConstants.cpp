#include "dv/DVConstants.h"

#include <cstddef>

namespace merro {
namespace {

std::size_t rowForCode(int code) {
    return code >= -1 && code <= 3 ? static_cast<std::size_t>(code + 1) : 0;
}

} // namespace

std::string_view DVAspectRatioNameForRatio(int code) {
    return DVAspectRatioName[rowForCode(code)];
}

float DVAspectRatioValueForRatio(int code) {
    return DVAspectRatioValues[rowForCode(code)];
}

} // namespace merro
