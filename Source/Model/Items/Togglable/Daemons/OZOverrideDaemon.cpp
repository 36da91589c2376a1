#include "Model/Items/Togglable/Daemons/OZOverrideDaemon.h"

#include "Categories/Text.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device/Device.h"

#include <algorithm>

#include <unicode/uniset.h>

namespace {

constexpr std::string_view serviceManagerTool = "launchctl";

icu::UnicodeSet quotesAndBlanks() {
    icu::UnicodeSet set(whitespaceAndNewlineCharacterSet());
    set.add('"');
    return set;
}

} // namespace

std::unique_ptr<OZOverrideDaemon> OZOverrideDaemon::make(platform::Device& device,
                                                         std::string_view identifier) {
    auto fileDaemon = OZFileDaemon::make(device, identifier);
    if (!fileDaemon) {
        return nullptr;
    }
    return std::unique_ptr<OZOverrideDaemon>(
        new OZOverrideDaemon(device, std::string(identifier), std::move(fileDaemon)));
}

OZOverrideDaemon::OZOverrideDaemon(platform::Device& device, std::string identifier,
                                   std::unique_ptr<OZFileDaemon> fileDaemon)
    : _device(device)
    , _fileDaemon(std::move(fileDaemon))
    , _identifier(std::move(identifier)) {
    _enabledState = isEnabledInDatabase();
}

StringDictionary OZOverrideDaemon::overridesDb() const {
    const auto path = OZTask::launchPathForExecutable(_device, serviceManagerTool);
    if (!path) {
        return {};
    }
    const auto task = OZTask::make(_device, *path, {"print-disabled"});
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::discard);
    if (!task->launchSynchronously()) {
        return {};
    }
    return overridesInListing(task->output().value_or(""));
}

StringDictionary OZOverrideDaemon::overridesInListing(std::string_view listing) {
    static const icu::UnicodeSet trimmed = quotesAndBlanks();
    return dictionaryWithString(listing, "=>", "", trimmed);
}

bool OZOverrideDaemon::isEnabledIn(const StringDictionary& overrides, std::string_view identifier) {
    const auto found = overrides.find(identifier);
    return found == overrides.end() || !platform::truthOfText(found->second);
}

bool OZOverrideDaemon::isEnabledInDatabase() const {
    return isEnabledIn(overridesDb(), _identifier);
}

bool OZOverrideDaemon::applyChanges() {
    _fileDaemon->setEnabledState(true);
    std::ignore = _fileDaemon->applyChanges();
    return currentEnabledState() != _enabledState && setDaemonEnabled(_enabledState);
}

bool OZOverrideDaemon::discardChanges() {
    const bool current = currentEnabledState();
    const bool changed = current != _enabledState;
    _enabledState = current;
    return changed;
}

bool OZOverrideDaemon::setDaemonEnabled(bool enabled) {
    const auto tool = OZTask::launchPathForExecutable(_device, serviceManagerTool);
    const auto paths = _fileDaemon->enabledPaths();
    if (!tool || paths.empty()) {
        return false;
    }
    const char* const subcommand = enabled ? "load" : "unload";
    return std::ranges::all_of(paths, [&](const std::string& path) {
        return OZTask::launchSyncTask(_device, *tool, {subcommand, "-w", path}, true);
    });
}
