#include "Model/Core/OZCore.h"

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/Removal/RemovalActions.h"
#include "Model/Core/Steps/StepContext.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device/Device.h"

#include <fmt/format.h>
#include <unistd.h>

using platform::FileWriting;

namespace {

/// What the banner of a log says of the paths below it.
namespace runtitle {

constexpr std::string_view deletedFiles = "DELETED FILES";
constexpr std::string_view processedFiles = "PROCESSED FILES";
constexpr std::string_view restoredFiles = "RESTORED FILES";

constexpr std::string_view forMode(OZCoreMode mode) {
    return mode == OZCoreMode::clean ? deletedFiles : processedFiles;
}

} // namespace runtitle

} // namespace

OZCore::OZCore(platform::Device& device, const OZAppList& appList,
               const OZLocalizationManager& localizationManager)
    : _device(device)
    , _appList(appList)
    , _localizationManager(localizationManager)
    , _choices(device, localizationManager)
    , _record(device)
    , _run(std::in_place, device, _record, OZCoreMode::clean) {}

void OZCore::clean(const platform::Dictionary* settings, Analyze analyze) {
    const bool outputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    const uint64_t freeAtStart = beginRun(modeFor(analyze));
    const StepContext stepContext{context(), settings != nullptr ? *settings : _choices.cleanupSettings(),
                                  outputIsTerminal};
    for (const auto& step : cleanupSteps) {
        if (stepContext.isOn(step.key)) {
            _record.print(fmt::format(fmt::runtime(step.consoleHeading), OZStdIO::yellow, OZStdIO::reset));
            _record.log(step.logHeading);
            step.clean(stepContext);
            ++_cleanupStepCount;
        }
    }
    endRun(freeAtStart);
}

void OZCore::remove(OZAction action, Analyze analyze) {
    const uint64_t freeAtStart = beginRun(modeFor(analyze));
    _record.log("\n");
    const RemovalAction* const removal = removalActionFor(action);
    if (removal == nullptr) {
        return;
    }
    if (removal->kind != RemovalKind::languages || knowsLanguageInUse()) {
        removal->remove(context());
    }
    endRun(freeAtStart);
}

// The tree is the only index of backups: whatever has the extension is one.
void OZCore::backup(BackupAction action) {
    const bool restores = action == BackupAction::restore;
    std::ignore = restores ? beginRun(OZCoreMode::clean, runtitle::restoredFiles, FileWriting::gathered)
                           : beginRun(OZCoreMode::clean, runtitle::deletedFiles, FileWriting::direct);
    _record.log("\n");
    const auto backups = _run->find({"/", "-name", std::string("*").append(CleanupRun::backupExtension)});
    if (restores) {
        _run->restore(backups);
        endRun(std::nullopt);
    } else {
        const uint64_t freeAtStart = _device.volumes().totalFreeSpace();
        _run->quickDel(backups);
        endRun(freeAtStart);
    }
}

void OZCore::resetState() {
    makeRun(OZCoreMode::clean);
    _cleanupStepCount = 0;
    _record.reset();
}

OZCoreMode OZCore::modeFor(Analyze analyze) const {
    if (analyze == Analyze::yes) {
        return OZCoreMode::analyze;
    }
    return _choices.testMode() ? OZCoreMode::test : OZCoreMode::clean;
}

void OZCore::makeRun(OZCoreMode mode) {
    auto files = _device.fileManager();
    std::ignore = files.changeCurrentDirectoryPath("/");
    files.forgetLastFolder();
    _run.emplace(_device, _record, mode);
}

// Where items go, the log tells what was touched even when the run is killed. What a test run moves and what
// a restore moves back can be seen in the tree itself.
uint64_t OZCore::beginRun(OZCoreMode mode) {
    return beginRun(mode, runtitle::forMode(mode),
                    mode == OZCoreMode::clean ? FileWriting::direct : FileWriting::gathered);
}

uint64_t OZCore::beginRun(OZCoreMode mode, std::string_view title, FileWriting logWriting) {
    _isRunning = true;
    makeRun(mode);
    _cleanupStepCount = 0;
    return _record.begin(mode, title, logWriting);
}

void OZCore::endRun(std::optional<uint64_t> freeAtStart) {
    _record.end(freeAtStart);
    _isRunning = false;
}

RunContext OZCore::context() {
    return {.run = *_run, .choices = _choices, .appList = _appList, .facts = _device.facts()};
}

// What the device speaks is spared only by those who know it.
bool OZCore::knowsLanguageInUse() const {
    if (_localizationManager.isSystemLanguageKnown()) {
        return true;
    }
    _device.warnings().tell(fmt::format("Nobody can tell the language in use, since {} cannot be read; no "
                                        "language was removed.",
                                        OZLocalizationManager::globalPreferencesPath));
    return false;
}
