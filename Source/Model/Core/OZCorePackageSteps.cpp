#include "Model/Core/OZCore.h"
#include "Model/Tasks/OZTask.h"

#include <ranges>

// Packages that nothing needs any more, and what removed packages have left.

namespace {

constexpr std::string_view whitespace = " \t";

// None of what is no text: a name that is cut out of it could be another package's.
std::string outputOf(platform::Device& device, std::string_view tool, std::vector<std::string> arguments) {
    const auto task = OZTask::make(device, tool, std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::capture);
    task->launchSynchronously();
    return task->output().value_or("");
}

// The second word of a line of the package list: the name, with its architecture where that matters.
std::string_view packageName(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_of(whitespace), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(whitespace), line.size()));
    return line.substr(0, line.find_first_of(whitespace));
}

// Of the packages that are removed while their configuration is still there.
std::vector<std::string> namesOfRemovedPackages(std::string_view packageList) {
    std::vector<std::string> names;
    for (const auto part : std::views::split(packageList, '\n')) {
        const std::string_view line(part);
        const auto name = line.starts_with("rc") ? packageName(line) : std::string_view{};
        if (!name.empty()) {
            names.emplace_back(name);
        }
    }
    return names;
}

} // namespace

void OZCore::cleanDependencies(const Run& /*run*/) {
    const auto aptGet = OZTask::launchPathForExecutable(_device, "apt-get");
    // Anything short of a cleanup only shows the plan.
    const std::string consent = _mode == OZCoreMode::clean ? "-y" : "-s";
    if (aptGet) {
        printAndLog(outputOf(_device, *aptGet, {consent, "autoremove"}));
    }
    if (_mode != OZCoreMode::clean) {
        return;
    }
    if (aptGet) {
        printAndLog(outputOf(_device, *aptGet, {"-y", "clean"}));
    }
    printAndLog("\nPurging uninstalled packages ...\n\n");
    purgeRemovedPackages();
}

void OZCore::purgeRemovedPackages() {
    const auto dpkg = OZTask::launchPathForExecutable(_device, "dpkg");
    if (!dpkg) {
        return;
    }
    const auto run = [&](std::vector<std::string> arguments) {
        OZTask::launchSyncTask(_device, *dpkg, std::move(arguments), true);
    };
    for (const auto& name : namesOfRemovedPackages(outputOf(_device, *dpkg, {"-l"}))) {
        // The quotes belong to the argument.
        run({"-P", "'" + name + "'"});
    }
    run({"--clear-avail"});
    run({"--forget-old-unavail"});
}
