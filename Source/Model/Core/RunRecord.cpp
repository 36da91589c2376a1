#include "Model/Core/RunRecord.h"

#include "Categories/ByteText.h"
#include "Categories/Text.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device/Device.h"

#include <fmt/format.h>

void RunRecord::reset() {
    _mode = OZCoreMode::clean;
    _fileCount = 0;
    _freedSpace = 0;
    _freedSpaceString.reset();
    _stayedItems.clear();
    if (_cleanupLogger) {
        _cleanupLogger->closeLogFile();
    }
}

uint64_t RunRecord::begin(OZCoreMode mode, std::string_view title, platform::FileWriting logWriting) {
    reset();
    _mode = mode;
    if (_cleanupLogger) {
        _cleanupLogger->deleteLogFile();
        _cleanupLogger->openLogFileForWriting(logWriting);
    }
    const uint64_t freeAtStart = _mode == OZCoreMode::clean ? _device.volumes().totalFreeSpace() : 0;
    log(OZCleanupLogger::banner(title));
    return freeAtStart;
}

void RunRecord::end(std::optional<uint64_t> freeAtStart) {
    if (freeAtStart && _mode == OZCoreMode::clean) {
        const uint64_t freeAtEnd = _device.volumes().totalFreeSpace();
        _freedSpace = freeAtEnd > *freeAtStart ? freeAtEnd - *freeAtStart : 0;
    }
    const std::string summary = processFreedSpaceAndReturnResultsString(freeAtStart.has_value());
    tellWhatStayed();
    if (_cleanupLogger) {
        _cleanupLogger->closeLogFile();
        _cleanupLogger->logAtLine(summary, OZCleanupLogger::lineBehindBanner);
        _cleanupLogger->endLog();
    }
}

std::string RunRecord::processFreedSpaceAndReturnResultsString(bool withSize) {
    const auto& zone = _device.facts().timeZone;
    const std::string counts =
        fmt::format("\nDate: {}\n\nNumber of files: {}", timestampString(zone), fileCount());
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

void RunRecord::log(std::string_view text) {
    if (_cleanupLogger) {
        _cleanupLogger->log(text);
    }
}

void RunRecord::print(std::string_view text) const {
    if (_commandLineOutputEnabled) {
        OZStdIO::printf(text);
    }
}

void RunRecord::tellWhatStayed() {
    log(_stayedItems.section());
    if (const auto sentence = _stayedItems.sentence(_fileCount)) {
        _device.warnings().tell(*sentence);
    }
    if (const auto& reason = _stayedItems.failedSearch()) {
        _device.warnings().tell(
            fmt::format("A search was not made in full ({}): what it would have found stayed.", *reason));
    }
}
