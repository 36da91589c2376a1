#include "Model/Core/OZCoreRun.h"

#include "Platform/Device.h"

#include <fmt/format.h>

using platform::FileWriting;

namespace {

// Right behind the banner's three lines.
constexpr unsigned long summaryLine = 4;

std::string bannerFor(std::string_view title) {
    const std::string line(title.size() + 4, '#');
    return fmt::format("{}\n# {} #\n{}\n", line, title, line);
}

} // namespace

uint64_t OZCore::Run::number(std::string_view key) const {
    const auto found = settings.find(key);
    return found == settings.end() ? 0 : found->second.unsignedValue().value_or(0);
}

bool OZCore::Run::isOn(std::string_view key) const {
    const auto found = settings.find(key);
    if (found == settings.end()) {
        return false;
    }
    return key == cleanupstep::attachments ? number(key) != 0 : found->second.boolValue().value_or(false);
}

OZCoreMode OZCore::modeFor(Analyze analyze) const {
    if (analyze == Analyze::yes) {
        return OZCoreMode::analyze;
    }
    return _choices.testMode() ? OZCoreMode::test : OZCoreMode::clean;
}

// Where items go, the log tells what was touched even when the run is killed. What a test run moves and what
// a restore moves back can be seen in the tree itself.
uint64_t OZCore::beginRun(OZCoreMode mode) {
    return beginRun(mode, runtitle::forMode(mode),
                    mode == OZCoreMode::clean ? FileWriting::direct : FileWriting::gathered);
}

uint64_t OZCore::beginRun(OZCoreMode mode, std::string_view title, FileWriting logWriting) {
    _isRunning = true;
    resetState();
    _mode = mode;
    if (_cleanupLogger) {
        _cleanupLogger->deleteLogFile();
        _cleanupLogger->openLogFileForWriting(logWriting);
    }
    const uint64_t freeAtStart = _mode == OZCoreMode::clean ? _device.volumes().totalFreeSpace() : 0;
    log(bannerFor(title));
    return freeAtStart;
}

void OZCore::endRun(std::optional<uint64_t> freeAtStart) {
    if (freeAtStart && _mode == OZCoreMode::clean) {
        const uint64_t freeAtEnd = _device.volumes().totalFreeSpace();
        _freedSpace = freeAtEnd > *freeAtStart ? freeAtEnd - *freeAtStart : 0;
    }
    const std::string summary = processFreedSpaceAndReturnResultsString(freeAtStart.has_value());
    tellWhatStayed();
    if (_cleanupLogger) {
        _cleanupLogger->closeLogFile();
        _cleanupLogger->logAtLine(summary, summaryLine);
        _cleanupLogger->endLog();
    }
    _isRunning = false;
}
