// Parts of the comparison that no switch of the program reaches, and the trees that it needs:
//   rows test-and-restore DEVICE   moves the temporary files to backup names and back again
//   rows graph DEVICE              asks for the packages and links them, and tells the seconds of that
//   rows files FOLDER FOLDERS FILES   makes that many folders with that many small files in each
#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Model/Packages/OZPackageList.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

#include <charconv>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace {

int fail(std::string_view message) {
    fmt::print(stderr, "rows: {}\n", message);
    return 1;
}

int testAndRestore(platform::Device& device) {
    const OZAppList apps(device);
    const platform::Bundle bundle;
    const OZLocalizationManager languages(device, device.standardUserDefaults(), bundle);
    OZCore core(device, apps, languages);
    core.setCleanupLogger(std::make_unique<OZCleanupLogger>(device));
    core.choices().setTestMode(true);
    const platform::Dictionary settings{{std::string(cleanupstep::tempFiles), true}};
    core.clean(&settings, Analyze::no);
    const uint64_t moved = core.fileCount();
    core.backup(BackupAction::restore);
    fmt::print("moved {} restored {}\n", moved, core.fileCount());
    // A moved folder comes back as one item, whatever is in it.
    return moved > 0 && core.fileCount() > 0 ? 0 : fail("nothing was moved, or nothing came back");
}

int readGraph(platform::Device& device) {
    OZPackageList packages(device);
    const auto start = std::chrono::steady_clock::now();
    packages.refreshPackages();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    fmt::print(stderr, "{:.6f}\n", taken.count());
    const size_t count = packages.allPackages().size();
    fmt::print("{} packages\n", count);
    return count > 0 ? 0 : fail("no packages");
}

size_t numberFrom(std::string_view text) {
    size_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

int makeFiles(const std::filesystem::path& top, size_t folders, size_t files) {
    for (size_t folder = 0; folder < folders; ++folder) {
        const auto path = top / fmt::format("{:06}", folder);
        std::filesystem::create_directories(path);
        for (size_t file = 0; file < files; ++file) {
            std::ofstream(path / fmt::format("snapshot-{:08}.ktx", file)) << "left behind\n";
        }
    }
    return 0;
}

} // namespace

int main(int count, char** vector) {
    const std::string_view command = count > 2 ? vector[1] : "";
    if (command == "files" && count == 5) {
        return makeFiles(vector[2], numberFrom(vector[3]), numberFrom(vector[4]));
    }
    if (command != "test-and-restore" && command != "graph") {
        return fail("usage: rows test-and-restore|graph DEVICE, or rows files FOLDER FOLDERS FILES");
    }
    const auto device = platform::Device::open(vector[2]);
    if (!device) {
        return fail(device.error());
    }
    return command == "graph" ? readGraph(**device) : testAndRestore(**device);
}
