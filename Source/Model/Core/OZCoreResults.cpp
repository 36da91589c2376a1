#include "Model/Core/OZCore.h"

#include "Categories/NSStringAdditions.h"
#include "Categories/NSStringByteFormatter.h"
#include "Platform/Device.h"

#include <fmt/format.h>

std::string OZCore::processFreedSpaceAndReturnResultsString(bool withSize) {
    const auto& zone = _device.facts().timeZone;
    const std::string counts = fmt::format("\nDate: {}\n\nNumber of files: {}", timestampString(zone), fileCount());
    if (!withSize) {
        return counts;
    }
    // A run that touched nothing freed nothing, whatever else happened on the disk meanwhile.
    if (_fileCount == 0) {
        _freedSpace = 0;
    }
    _freedSpaceString = humanReadableStringFromBytes(_freedSpace, {.unit = unitForAnySize(_freedSpace)});
    return fmt::format("{}\n{} size: {}", counts, _mode == OZCoreMode::clean ? "Total" : "Approximate",
                       *_freedSpaceString);
}
