#include "Controller/CommandLine/OZCLIController.h"

#include "Controller/CommandLine/MenuText.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

#include <mutex>

using namespace menutext;

namespace {

constexpr size_t titleWidth = 30;
// Of the width that the title's box leaves for it.
constexpr std::string_view packagePage = "http://example.org/cydia";
static_assert(packagePage.size() == 24);

constexpr unsigned dotsALine = 4;
constexpr double secondsADot = 0.5;

// One for all waits of the process.
std::mutex finishedMutex;

} // namespace

OZCLIController::OZCLIController(OZModelBuilder& modelBuilder)
    : _modelBuilder(modelBuilder)
    , _warnings(modelBuilder.device().warnings()) {}

void OZCLIController::startCLI() {
    core().setCommandLineOutputEnabled(true);
    for (;;) {
        printTitle();
        OZStdIO::printf(
            fmt::format("{}{}\n\n{} Analyze the device\n{} Clean up the device\n\n{} More ...\n\n{} "
                        "Settings\n\n{} Exit\n\nChoice = ",
                        warnings(), yellow(question), number(1), number(2), number(3), number(9), number(0)));
        const int64_t choice = readChoice();
        OZStdIO::clear();
        if (choice == 0) {
            break;
        }
        if (choice == 1 || choice == 2) {
            runCleanup(choice == 1);
        } else if (choice == 3) {
            showMoreMenu();
        } else if (choice == 9) {
            showSettingsMenu();
        }
    }
    OZStdIO::clear();
}

void OZCLIController::runCleanup(bool analyze) {
    core().clean(nullptr, analyze ? Analyze::yes : Analyze::no);
    printResults(core().fileCount(), core().freedSpaceString());
    OZStdIO::pause();
}

void OZCLIController::printTitle() {
    const auto& bundle = _modelBuilder.bundle();
    const std::string name = bundle.infoString("CFBundleDisplayName").value_or("");
    const std::string version = bundle.infoString("CFBundleShortVersionString").value_or("");
    const size_t taken = name.size() + version.size() + 2;
    const size_t margin = taken < titleWidth ? (titleWidth - taken) / 2 : 0;
    const std::string title = fmt::format("{:{}}{} v{}", "", margin, name, version);
    OZStdIO::clear();
    OZStdIO::printf(fmt::format("{0}_{2:->30}_\n_{1}{3:<{5}.{5}}{0}_\n_{1}   {4}   {0}_\n {2:->30}{1}\n\n",
                                OZStdIO::yellow, OZStdIO::reset, "", title, packagePage, titleWidth));
}

void OZCLIController::printResults(uint64_t fileCount, const std::optional<std::string>& freedSpaceString) {
    OZStdIO::clear();
    OZStdIO::printf(fmt::format("{}\n\n{}Processed files: {}\n", green("Operation completed!"), warnings(),
                                yellow(fmt::to_string(fileCount))));
    if (freedSpaceString) {
        OZStdIO::printf(fmt::format("Total size: {}\n", yellow(*freedSpaceString)));
    }
}

void OZCLIController::executeBlockInBackground(const std::function<void()>& block,
                                               std::string_view waitMessage) {
    platform::Device& device = _modelBuilder.device();
    bool done = false;
    device.highPriorityQueue().async([&] {
        block();
        const std::scoped_lock lock(finishedMutex);
        done = true;
    });
    const auto isDone = [&] {
        const std::scoped_lock lock(finishedMutex);
        return done;
    };
    for (unsigned ticks = 0; !isDone(); ++ticks) {
        if (ticks % dotsALine == 0) {
            OZStdIO::clear();
            OZStdIO::printf(waitMessage);
        } else {
            OZStdIO::printf(" .");
        }
        device.sleep(secondsADot);
    }
}

int64_t OZCLIController::readChoice() {
    return OZStdIO::getInteger().value_or(0);
}

void OZCLIController::synchronize() {
    if (!_modelBuilder.device().standardUserDefaults().synchronize()) {
        _modelBuilder.reloadDefaults();
    }
}

OZCore& OZCLIController::core() {
    return _modelBuilder.core();
}
