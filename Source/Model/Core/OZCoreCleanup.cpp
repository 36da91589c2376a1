#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCoreRun.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device.h"

#include <map>

#include <fmt/format.h>
#include <unistd.h>

namespace {

std::optional<std::string_view> firstOf(std::span<const std::string_view> patterns) {
    return patterns.empty() ? std::nullopt : std::optional(patterns.front());
}

} // namespace

void OZCore::clean(const platform::Dictionary* settings, Analyze analyze) {
    const Run run{.settings = settings != nullptr ? *settings : _choices.cleanupSettings(),
                  .outputIsTerminal = ::isatty(STDOUT_FILENO) == 1};
    const OZCoreMode mode = modeFor(analyze);
    const uint64_t freeAtStart = beginRun(mode);
    for (const auto& step : cleanupSteps) {
        if (run.isOn(step.key)) {
            runStep(step, run);
        }
    }
    endRun(freeAtStart);
}

void OZCore::runStep(const CleanupStepDescription& step, const Run& run) {
    using Section = void (OZCore::*)(const Run&);
    static const std::map<std::string_view, Section> sections{
        {cleanupstep::attachments, &OZCore::cleanAttachments},
        {cleanupstep::safari, &OZCore::cleanSafari},
        {cleanupstep::applications, &OZCore::cleanApplications},
        {cleanupstep::otaUpdates, &OZCore::cleanOTAUpdates},
        {cleanupstep::batteryData, &OZCore::cleanBatteryData},
        {cleanupstep::cydia, &OZCore::cleanCydia},
        {cleanupstep::cydiaSources, &OZCore::cleanCydiaSources},
        {cleanupstep::dependencies, &OZCore::cleanDependencies},
        {cleanupstep::logFiles, &OZCore::cleanLogFiles},
        {cleanupstep::cacheFiles, &OZCore::cleanCacheFiles},
        {cleanupstep::tempFiles, &OZCore::cleanTempFiles},
        {cleanupstep::fileTypeCleanup, &OZCore::cleanFileTypes},
        {cleanupstep::customFiles, &OZCore::cleanCustomFiles},
    };
    print(fmt::format(fmt::runtime(step.consoleHeading), OZStdIO::yellow, OZStdIO::reset));
    log(step.logHeading);
    (this->*sections.at(step.key))(run);
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

void OZCore::printAndLog(std::string_view text) {
    print(text);
    log(text);
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
