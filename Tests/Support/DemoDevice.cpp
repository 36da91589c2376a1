#include "Tests/Support/DemoDevice.h"

#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <chrono>
#include <stdexcept>

#include <fmt/format.h>

namespace tests {

namespace fs = std::filesystem;

namespace {

void require(const std::string& commandLine) {
    if (const auto outcome = shell(commandLine); outcome.status != 0) {
        throw std::runtime_error(outcome.output);
    }
}

void make(const fs::path& made, const std::string& version) {
    const fs::path all = made.parent_path();
    fs::create_directories(all);
    for (const auto& entry : fs::directory_iterator(all)) {
        if (entry.path().filename().string().starts_with(version + " ")) {
            fs::remove_all(entry.path());
        }
    }
    const TemporaryFolder inMemory(memoryFolder());
    const TemporaryFolder beside(all);
    require(fmt::format("{0}/ozdevice create {1} --ios {2} --files 100 && cp -a {1} '{3}'",
                        OZ_BINARY_DIRECTORY, inMemory.path("device"), version, beside.path("device")));
    // Another process may have been quicker.
    std::error_code ignored;
    fs::rename(beside.path("device"), made, ignored);
}

} // namespace

void copyDemoDevice(const fs::path& folder, const std::string& version) {
    const fs::path bin = OZ_BINARY_DIRECTORY;
    // Its dates count back from the day it is made on.
    const auto day = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    const auto build = fs::last_write_time(bin / "ozdevice").time_since_epoch().count();
    const fs::path made =
        bin.parent_path() / "demo" / fmt::format("{} {} {}", version, build, day.time_since_epoch().count());
    if (!fs::exists(made)) {
        make(made, version);
    }
    require(fmt::format("cp -a '{}/.' '{}'", made.string(), folder.string()));
}

} // namespace tests
