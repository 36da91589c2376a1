#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Core/OZCore.h"
#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Packages/OZPackageList.h"
#include "Platform/Device/UserDefaults.h"
#include "Tests/Support/EngineFixture.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <set>

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::IsEmpty;
using tests::TreeSnapshot;

namespace {

using Clock = std::chrono::steady_clock;
using Work = std::function<void(platform::Device&)>;

constexpr std::string_view backupExtension = CleanupRun::backupExtension;
constexpr std::string_view preferences = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";

std::unique_ptr<TemporaryDevice> newDevice() {
    auto device = std::make_unique<TemporaryDevice>(
        platform::DeviceFacts{.foundationVersion = 1445.32, .applications = platform::Array{}});
    for (const auto* folder :
         {"/var/tmp/log-folder", "/var/tmp/staging/deep/er", "/var/mobile/Library/Caches/ImageCache/a",
          "/var/mobile/Library/Logs/inner", "/var/mobile/Documents/Mine", "/var/root/Library/Caches"}) {
        for (int number = 0; number < 25; ++number) {
            device->addFile(fmt::format("{}/item{}{}", folder, number, number % 4 == 0 ? ".log" : ""),
                            fmt::format("{} {}", folder, number));
        }
    }
    return device;
}

TreeSnapshot treeOf(const TemporaryDevice& device) {
    auto tree = tests::snapshotOf((device.folder() / "Root").string());
    std::erase_if(tree,
                  [](const auto& item) { return item.first.starts_with("var/mobile/Library/Ozvarine"); });
    return tree;
}

void withEngine(platform::Device& device, const std::function<void(OZCore&)>& work) {
    OZAppList apps(device);
    const tests::NoLanguages languages(device);
    OZCore core(device, apps, languages.manager);
    core.setCleanupLogger(std::make_unique<OZCleanupLogger>(device));
    work(core);
}

Work cleanup(bool testMode) {
    return [testMode](platform::Device& device) {
        withEngine(device, [&](OZCore& core) {
            const platform::Dictionary settings{
                {"LOGFILES", true}, {"CACHEFILES", true}, {"TEMPFILES", true}, {"FILETYPECLEANUP", true}};
            core.choices().setTestMode(testMode);
            core.clean(&settings, Analyze::no);
        });
    };
}

// Until a call finds nothing.
void restoreAll(platform::Device& device) {
    withEngine(device, [](OZCore& core) {
        do {
            core.backup(BackupAction::restore);
        } while (core.fileCount() > 0);
    });
}

// Saves again and again; every saved state holds one number in several places.
void saveDefaults(platform::Device& device) {
    auto& defaults = device.standardUserDefaults();
    for (int number = 1; number < 60; ++number) {
        for (const auto* key : {"first", "second"}) {
            defaults.setObject(key, number);
        }
        defaults.setObject("filling", std::string(static_cast<size_t>(number) * 500, 'x'));
        std::ignore = defaults.synchronize();
    }
}

constexpr std::string_view addonPath = "/Library/MobileSubstrate/DynamicLibraries/Addon";
constexpr std::string_view addonList = "/var/lib/dpkg/info/org.example.addon.list";

std::unique_ptr<TemporaryDevice> newDeviceWithAddon() {
    auto device = newDevice();
    device->addFile("/var/lib/dpkg/status", "Package: org.example.addon\nStatus: install ok installed\n"
                                            "Maintainer: Example <addons@example.org>\nVersion: 1\n"
                                            "Architecture: iphoneos-arm\nDescription: An add-on\n");
    device->addFile(addonList, fmt::format("/.\n/Library\n{}.dylib\n", addonPath));
    device->addFile(fmt::format("{}.dylib", addonPath), "addon");
    return device;
}

// Switches the add-on again and again; in the end it is off.
void toggleAddon(platform::Device& device) {
    OZPackageList packages(device);
    OZCSAddonList addons(device);
    const auto addon = addons.addons().front();
    addon->setPackage(packages.packageWithIdentifier("org.example.addon"));
    for (int number = 0; number < 40; ++number) {
        addon->setEnabledState(number % 2 == 0);
        std::ignore = addon->applyChanges();
    }
}

// The content of each regular file below a folder; empty where there is none, or a link in its place.
std::map<std::string, std::string> filesBelow(const TemporaryDevice& device, std::string_view folder) {
    std::map<std::string, std::string> files;
    const auto top = device.hostPath(folder);
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(top))) {
        return files;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
        if (entry.is_regular_file()) {
            const auto path = entry.path().lexically_relative(top).string();
            files[path] = device.contents(fmt::format("{}/{}", folder, path));
        }
    }
    return files;
}

// The data partition is a file system of its own where the system lets tests have one.
std::unique_ptr<TemporaryDevice> newDeviceWithFonts() {
    constexpr double iOS6 = 793.0;
    auto device = std::make_unique<TemporaryDevice>(platform::DeviceFacts{.foundationVersion = iOS6});
    for (int number = 0; number < 60; ++number) {
        device->addFile(fmt::format("{}/{}/font{}.ttf", OZFontsFolderMover::systemPath,
                                    number % 2 == 0 ? "Core" : "Cache", number),
                        std::string(20000, static_cast<char>('0' + number)));
    }
    const std::string data = device->hostPath("/var");
    std::filesystem::create_directories(data);
    std::ignore = ::mount("fonts", data.c_str(), "tmpfs", 0, "size=16m");
    return device;
}

void moveFonts(platform::Device& device) {
    std::optional<OZFontsFolderError> error;
    std::ignore = OZFontsFolderMover(device).moveFolder(&error);
}

// Runs the work in a process of its own and kills it after a while, or lets it end where no time is given.
struct Ending {
    Clock::duration after;
    bool wasKilled;
};

Ending runInProcess(TemporaryDevice& device, const Work& work, std::optional<Clock::duration> killAfter) {
    const auto start = Clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0);
        ::dup2(::open("/dev/null", O_RDWR | O_CLOEXEC), STDOUT_FILENO);
        work(device.device());
        ::_exit(0);
    }
    ::setpgid(child, child);
    if (killAfter) {
        ::usleep(static_cast<useconds_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(*killAfter).count()));
        ::kill(-child, SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    // The tools that it left behind.
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    return {Clock::now() - start, WIFSIGNALED(status)};
}

std::set<std::string> pathsOf(const TreeSnapshot& tree) {
    std::set<std::string> paths;
    for (const auto& [path, state] : tree) {
        paths.insert(path);
    }
    return paths;
}

std::vector<std::string> missing(const std::set<std::string>& from, const std::set<std::string>& in) {
    std::vector<std::string> paths;
    std::ranges::set_difference(from, in, std::back_inserter(paths));
    return paths;
}

class Interrupted : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root for the tools of a run";
        }
        ::setenv("TMPDIR", tests::memoryFolder().c_str(), 1);
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        // What is mounted here is nobody else's.
        if (::unshare(CLONE_NEWNS) == 0) {
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
        }
    }

    // A sixth of all for each of the six tests.
    static size_t killCount() {
        const char* wanted = std::getenv("OZ_KILLS");
        return (wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : 42) / 6;
    }

    // Kills the work at random moments, each time on what `prepare` makes, and has the rest judged.
    void interrupt(const char* name, const std::function<std::unique_ptr<TemporaryDevice>()>& prepare,
                   const Work& work, const std::function<void(TemporaryDevice&)>& judge) {
        auto first = prepare();
        const auto whole = runInProcess(*first, work, std::nullopt).after;
        judge(*first);
        size_t cut = 0;
        for (size_t kill = 0; kill < killCount() && !HasFailure(); ++kill) {
            auto device = prepare();
            const auto moment = whole * static_cast<int64_t>(_random() % 1000) / 1000;
            cut += runInProcess(*device, work, moment).wasKilled ? 1 : 0;
            judge(*device);
        }
        std::cout << "figures: " << killCount() << " kills of a " << name << ", " << cut
                  << " of them before its end\n";
    }

    std::minstd_rand _random{7};
};

} // namespace

TEST_F(Interrupted, ACleanupTakesNothingElseAndTheNextOneCompletesIt) {
    auto whole = newDevice();
    const auto before = treeOf(*whole);
    runInProcess(*whole, cleanup(false), std::nullopt);
    const auto kept = pathsOf(treeOf(*whole));
    ASSERT_LT(kept.size(), before.size());
    interrupt("cleanup", newDevice, cleanup(false), [&](TemporaryDevice& device) {
        const auto left = treeOf(device);
        EXPECT_THAT(missing(kept, pathsOf(left)), IsEmpty()) << "kept by a whole run";
        for (const auto& [path, state] : left) {
            EXPECT_TRUE(before.contains(path)) << path;
        }
        runInProcess(device, cleanup(false), std::nullopt);
        EXPECT_EQ(pathsOf(treeOf(device)), kept);
    });
}

TEST_F(Interrupted, ATestRunLosesNothingAndCanBeRepeatedAndRestored) {
    TreeSnapshot before;
    bool repeats = false;
    const auto prepare = [&] {
        auto device = newDevice();
        before = treeOf(*device);
        return device;
    };
    interrupt("test run", prepare, cleanup(true), [&](TemporaryDevice& device) {
        EXPECT_THAT(tests::differences(before, tests::withoutBackupNames(treeOf(device))), IsEmpty());
        repeats = !repeats;
        if (repeats) {
            runInProcess(device, cleanup(true), std::nullopt);
        }
        runInProcess(device, restoreAll, std::nullopt);
        EXPECT_THAT(tests::differences(before, treeOf(device)), IsEmpty());
    });
}

TEST_F(Interrupted, ARestoreLosesNothingAndTheNextOneCompletesIt) {
    TreeSnapshot before;
    const auto prepare = [&] {
        auto device = newDevice();
        before = treeOf(*device);
        runInProcess(*device, cleanup(true), std::nullopt);
        return device;
    };
    interrupt("restore", prepare, restoreAll, [&](TemporaryDevice& device) {
        EXPECT_THAT(tests::differences(before, tests::withoutBackupNames(treeOf(device))), IsEmpty());
        runInProcess(device, restoreAll, std::nullopt);
        EXPECT_THAT(tests::differences(before, treeOf(device)), IsEmpty());
    });
}

TEST_F(Interrupted, ASaveOfChoicesLeavesTheOldOnesOrTheNew) {
    const auto prepare = [] {
        auto device = newDevice();
        std::filesystem::create_directories(device->hostPath(preferences).parent_path());
        return device;
    };
    interrupt("save", prepare, saveDefaults, [](TemporaryDevice& device) {
        if (!std::filesystem::exists(device.hostPath(preferences))) {
            return;
        }
        const auto value = platform::parsePropertyList(device.contents(preferences));
        ASSERT_TRUE(value.has_value());
        const auto& saved = *value->as<platform::Dictionary>();
        const auto number = saved.at("first").unsignedValue();
        EXPECT_EQ(saved.at("second").unsignedValue(), number);
        EXPECT_EQ(platform::valueAt<std::string>(saved, "filling")->size(), *number * 500);
        runInProcess(device, saveDefaults, std::nullopt);
        const auto whole = platform::parsePropertyList(device.contents(preferences));
        EXPECT_EQ(whole->as<platform::Dictionary>()->at("second").unsignedValue(), 59);
    });
}

TEST_F(Interrupted, AToggleLeavesOneFileAndAWholeListAndTheNextOneCompletesIt) {
    interrupt("toggle", newDeviceWithAddon, toggleAddon, [](TemporaryDevice& device) {
        const std::string whenOn = fmt::format("/.\n/Library\n{}.dylib\n", addonPath);
        const std::string whenOff = fmt::format("{}{}.disabled\n", whenOn, addonPath);
        const auto folder = std::string(addonPath.substr(0, addonPath.rfind('/')));
        const auto files = filesBelow(device, folder);
        ASSERT_EQ(files.size(), 1U);
        EXPECT_TRUE(files.begin()->first == "Addon.dylib" || files.begin()->first == "Addon.disabled");
        EXPECT_EQ(files.begin()->second, "addon");
        EXPECT_THAT(device.contents(addonList), testing::AnyOf(whenOn, whenOff));
        runInProcess(device, toggleAddon, std::nullopt);
        EXPECT_EQ(filesBelow(device, folder).begin()->first, "Addon.disabled");
        EXPECT_EQ(device.contents(addonList), whenOff);
    });
}

TEST_F(Interrupted, AFontsMoveLeavesTheWholeFolderInOneOfItsPlaces) {
    std::map<std::string, std::string> fonts;
    const auto prepare = [&] {
        auto device = newDeviceWithFonts();
        fonts = filesBelow(*device, OZFontsFolderMover::systemPath);
        return device;
    };
    interrupt("fonts move", prepare, moveFonts, [&](TemporaryDevice& device) {
        for (int repeats = 0; repeats < 2; ++repeats) {
            const auto onSystem = filesBelow(device, OZFontsFolderMover::systemPath);
            const auto onData = filesBelow(device, OZFontsFolderMover::dataPath);
            EXPECT_TRUE(onSystem == fonts || onSystem.empty());
            EXPECT_TRUE(onData == fonts || onData.empty());
            EXPECT_FALSE(onSystem.empty() && onData.empty());
            runInProcess(device, moveFonts, std::nullopt);
        }
        ::umount2(device.hostPath("/var").c_str(), MNT_DETACH);
    });
}
