#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

#include <algorithm>
#include <ranges>

// Packages that nothing needs any more, and what removed packages have left.

namespace {

constexpr std::string_view whitespace = " \t";

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

void printAndLogIfAny(CleanupRun& run, const std::optional<std::string>& output) {
    if (output) {
        run.printAndLog(*output);
    }
}

void purgeRemovedPackages(CleanupRun& run) {
    for (const auto& name : namesOfRemovedPackages(run.packageList())) {
        // The quotes belong to the argument.
        run.dpkg({"-P", "'" + name + "'"});
    }
    run.dpkg({"--clear-avail"});
    run.dpkg({"--forget-old-unavail"});
}

} // namespace

void cleanDependencies(const StepContext& context) {
    auto& run = context.run;
    printAndLogIfAny(run, run.aptGet("autoremove"));
    run.onlyWhenCleaning([&] {
        printAndLogIfAny(run, run.aptGet("clean"));
        run.printAndLog("\nPurging uninstalled packages ...\n\n");
        purgeRemovedPackages(run);
    });
}
