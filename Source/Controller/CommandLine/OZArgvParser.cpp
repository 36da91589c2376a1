#include "Controller/CommandLine/OZArgvParser.h"

#include "Controller/CommandLine/ExitStatus.h"
#include "Controller/CommandLine/OZCLIController.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/RespringAfterCleanup.h"
#include "Model/Items/Togglable/Daemons/OZDaemon.h"
#include "Model/Items/Togglable/Restore/OZSystemRestore.h"
#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Services/OZStdIO.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace {

// Some switches stay out of it on purpose: they are for scripts, not for people.
constexpr const char* usageFormat =
    "{0}: illegal option {1}\n"
    "usage: {0} [-clean [-respring | -autorespring] | -cli | -respring | -restore-togglable-items]\n";

constexpr std::string_view helpText = "ozvarine --help lists options and switches\n";

constexpr std::string_view notInteractiveText =
    "The Ozvarine command line interface can only be invoked through an interactive terminal.\n";
// Nobody who asks for a dry run may end up in a cleanup.
constexpr std::string_view dryRunText =
    "ozvarine: --dry-run is for -clean alone; the menu of -cli has an analysis of its own\n";

// Older platforms read a line into a buffer of 256 bytes, the last of which ends the text.
constexpr double unlimitedLinesSince = ios::v5_0;
constexpr size_t oldestLineCapacity = 255;

constexpr std::array<std::pair<std::string_view, OZCleanAction>, 3> cleanActions{{
    {"-respring", OZCleanAction::respring},
    {"-autorespring", OZCleanAction::autoRespring},
    {"-printresults", OZCleanAction::printResults},
}};

OZCleanAction cleanActionFor(std::span<const std::string> vector) {
    if (vector.size() < 3) {
        return OZCleanAction::plain;
    }
    const auto* found =
        std::ranges::find(cleanActions, vector[2], &std::pair<std::string_view, OZCleanAction>::first);
    return found == cleanActions.end() ? OZCleanAction::plain : found->second;
}

int statusOf(bool done) {
    return done ? exitstatus::success : exitstatus::failure;
}

} // namespace

std::optional<int> OZArgvParser::parseArgumentVector(std::span<const std::string> vector) {
    if (vector.size() < 2) {
        return std::nullopt;
    }
    const std::string& option = vector[1];
    if (option == "-printsettings") {
        printSettings();
        return exitstatus::success;
    }
    if (option == "-clean") {
        return statusOf(cleanWithAction(cleanActionFor(vector)));
    }
    if (option == "-cli") {
        return statusOf(showMenu());
    }
    if (option == "-respring") {
        respring();
        return exitstatus::success;
    }
    if (option == "-restore-togglable-items") {
        restoreTogglableItems();
        return exitstatus::success;
    }
    OZStdIO::fprintf(stderr, fmt::format(fmt::runtime(usageFormat), vector[0], option));
    OZStdIO::fprintf(stderr, helpText);
    return exitstatus::failure;
}

bool OZArgvParser::isInputInteractive() {
    return ::isatty(STDIN_FILENO) == 1;
}

bool OZArgvParser::showMenu() {
    if (!isInputInteractive()) {
        OZStdIO::fprintf(stderr, notInteractiveText);
        return false;
    }
    if (_options.analyze == Analyze::yes) {
        OZStdIO::fprintf(stderr, dryRunText);
        return false;
    }
    if (_modelBuilder.device().facts().foundationVersion < unlimitedLinesSince) {
        OZStdIO::setLineCapacity(oldestLineCapacity);
    }
    OZCLIController(_modelBuilder).startCLI();
    return true;
}

bool OZArgvParser::cleanWithAction(OZCleanAction action) {
    OZCore& core = _modelBuilder.core();
    core.clean(nullptr, _options.analyze);
    switch (action) {
    case OZCleanAction::plain:
        break;
    case OZCleanAction::respring:
        respring();
        break;
    case OZCleanAction::printResults:
        OZStdIO::printf(fmt::format("success=true\nfreed={}\ndeleted={}\nshouldrespring={}\n",
                                    core.freedSpaceString().value_or(""), core.fileCount(),
                                    shouldRespring()));
        break;
    case OZCleanAction::autoRespring:
        if (shouldRespring()) {
            respring();
        }
        break;
    }
    const bool hasLog = core.cleanupLogger() == nullptr || !core.cleanupLogger()->hostOutputFailed();
    return hasLog && (!_options.strict || core.stayedItems().empty());
}

bool OZArgvParser::shouldRespring() const {
    return shouldRespringAfterCleanup(_modelBuilder.core().choices().cleanupSettings());
}

void OZArgvParser::respring() {
    if (_options.analyze == Analyze::yes) {
        return;
    }
    _modelBuilder.deviceActions().rebuildUICacheAndRespring();
    if (!_modelBuilder.deviceActions().canRestart()) {
        _modelBuilder.device().warnings().tell("Nothing was restarted: there was nothing to ask, since this "
                                               "device has no su, launchctl or killall.");
    }
}

void OZArgvParser::printSettings() {
    const auto plugins = _modelBuilder.pluginLoader().pluginIdentifiersToLoadIntoSpringBoard();
    OZStdIO::printf(fmt::format("language={}{}{}\n",
                                _modelBuilder.localizationManager().userLanguage().value_or(""),
                                plugins.empty() ? "" : "\nplugins=", fmt::join(plugins, ",")));
}

void OZArgvParser::restoreTogglableItems() {
    if (_options.analyze == Analyze::yes) {
        return;
    }
    _modelBuilder.systemRestore()->restore();
    auto& device = _modelBuilder.device();
    if (OZDaemon::usesLaunchCtl(device) && !OZTask::launchPathForExecutable(device, "launchctl")) {
        device.warnings().tell(
            "Launch daemons that launchctl has disabled were left alone: there was nothing to "
            "ask, since this device has no launchctl.");
    }
}
