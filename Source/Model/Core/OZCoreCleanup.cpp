#include "Model/Core/OZCore.h"

#include "Model/Core/CleanupSteps.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device.h"

#include <algorithm>
#include <array>

#include <unistd.h>

#include <fmt/format.h>

/// What the sections of one run share.
struct OZCore::Run {
    /// The steps to enter, by key.
    const platform::Dictionary& settings;
    /// Whether a terminal watches: the run then leaves other programs alone.
    bool outputIsTerminal;
};

namespace {

constexpr std::string_view deletedFilesBanner = "#################\n# DELETED FILES #\n#################\n";
constexpr std::string_view processedFilesBanner = "###################\n# PROCESSED FILES #\n###################\n";
// Right behind the banner's three lines.
constexpr unsigned long summaryLine = 4;

OZCoreMode modeFor(Analyze analyze, bool testMode) {
    if (analyze == Analyze::yes) {
        return OZCoreMode::analyze;
    }
    return testMode ? OZCoreMode::test : OZCoreMode::clean;
}

bool isOn(const platform::Dictionary& settings, std::string_view key) {
    const auto found = settings.find(key);
    if (found == settings.end()) {
        return false;
    }
    return key == cleanupstep::attachments ? found->second.unsignedValue().value_or(0) != 0
                                           : found->second.boolValue().value_or(false);
}

std::optional<std::string_view> firstOf(std::span<const std::string_view> patterns) {
    return patterns.empty() ? std::nullopt : std::optional(patterns.front());
}

} // namespace

void OZCore::clean(const platform::Dictionary* settings, Analyze analyze) {
    _isRunning = true;
    resetState();
    _mode = modeFor(analyze, _testMode);
    const Run run{.settings = settings != nullptr ? *settings : _cleanupSettings,
                  .outputIsTerminal = ::isatty(STDOUT_FILENO) == 1};
    if (_cleanupLogger) {
        _cleanupLogger->deleteLogFile();
        _cleanupLogger->openLogFileForWriting();
    }
    uint64_t freeAtStart = 0;
    if (_mode == OZCoreMode::clean) {
        freeAtStart = _device.volumes().totalFreeSpace();
        log(deletedFilesBanner);
    } else {
        log(processedFilesBanner);
    }
    for (const auto& step : cleanupSteps) {
        if (isOn(run.settings, step.key)) {
            runStep(step, run);
        }
    }
    if (_cleanupLogger) {
        _cleanupLogger->closeLogFile();
    }
    if (_mode == OZCoreMode::clean) {
        const uint64_t freeAtEnd = _device.volumes().totalFreeSpace();
        _freedSpace = freeAtEnd > freeAtStart ? freeAtEnd - freeAtStart : 0;
    }
    const std::string summary = processFreedSpaceAndReturnResultsString(true);
    if (_cleanupLogger) {
        _cleanupLogger->logAtLine(summary, summaryLine);
    }
    _isRunning = false;
}

void OZCore::runStep(const CleanupStepDescription& step, const Run& /*run*/) {
    using Section = void (OZCore::*)();
    static constexpr std::array<std::pair<std::string_view, Section>, 2> sections{{
        {cleanupstep::otaUpdates, &OZCore::cleanOTAUpdates},
        {cleanupstep::tempFiles, &OZCore::cleanTempFiles},
    }};
    print(fmt::format(fmt::runtime(step.consoleHeading), OZStdIO::yellow, OZStdIO::reset));
    log(step.logHeading);
    const auto* section = std::ranges::find(sections, step.key, &std::pair<std::string_view, Section>::first);
    if (section != sections.end()) {
        (this->*section->second)();
    }
    ++_cleanupStepCount;
}

void OZCore::print(std::string_view text) const {
    if (_commandLineOutputEnabled) {
        OZStdIO::printf(text);
    }
}

void OZCore::log(std::string_view text) {
    if (_cleanupLogger) {
        _cleanupLogger->log(text);
    }
}

void OZCore::perform(std::span<const CleanupAction> actions) {
    for (const auto& action : actions) {
        if (_device.facts().foundationVersion >= action.belowFoundationVersion) {
            continue;
        }
        switch (action.primitive) {
        case CleanupPrimitive::del:
            del(Paths{std::string(action.path)});
            break;
        case CleanupPrimitive::delr:
            delr(Paths{std::string(action.path)});
            break;
        case CleanupPrimitive::delFolderContents:
            delFolderContents(action.path, action.onlyFiles);
            break;
        case CleanupPrimitive::delFilesInFolderRecursive:
            delFilesInFolderRecursive(action.path);
            break;
        case CleanupPrimitive::delFilesExcludingPatternsRecursive:
            delFilesExcludingPatternsRecursive(action.path, action.patterns);
            break;
        case CleanupPrimitive::delWithPattern:
            delWithPattern(action.path, firstOf(action.patterns.startPatterns),
                           firstOf(action.patterns.middlePatterns), firstOf(action.patterns.endPatterns),
                           action.onlyFiles);
            break;
        case CleanupPrimitive::delWithPatterns:
            delWithPatterns(action.path, action.patterns, action.onlyFiles);
            break;
        }
    }
}

void OZCore::performInDirectory(const CleanupGroup& group) {
    if (changeDir(group.directory)) {
        perform(group.actions);
    }
}
