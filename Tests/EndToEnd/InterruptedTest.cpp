// Work that is killed at random moments leaves a device that the next one puts right.
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Packages/OZPackageList.h"
#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Engine.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryFolder.h"

#include <sys/prctl.h>

using scenarios::effectsOn;
using scenarios::World;
using testing::IsEmpty;
using tests::Engine;
using tests::TreeSnapshot;
using tests::withoutBackupNames;

namespace {

using Clock = std::chrono::steady_clock;
using Work = void (*)(platform::Device&);

// What is done.

template <bool isTest>
void cleanUp(platform::Device& device) {
    Engine(device).clean({"LOGFILES", "CACHEFILES", "TEMPFILES", "FILETYPECLEANUP"},
                         isTest ? OZCoreMode::test : OZCoreMode::clean);
}

/// Until a call finds nothing.
void restoreAll(platform::Device& device) {
    Engine engine(device);
    do {
        engine.core.backup(BackupAction::restore);
    } while (engine.core.fileCount() > 0);
}

/// Saves again and again; every saved state holds one number in several places.
void saveSettings(platform::Device& device) {
    auto& defaults = device.standardUserDefaults();
    for (int number = 1; number < 60; ++number) {
        defaults.setObject("first", number);
        defaults.setObject("second", number);
        defaults.setObject("filling", std::string(static_cast<size_t>(number) * 500, 'x'));
        std::ignore = defaults.synchronize();
    }
}

/// Switches the add-on again and again; in the end it is off.
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

void moveFonts(platform::Device& device) {
    std::optional<OZFontsFolderError> error;
    std::ignore = OZFontsFolderMover(device).moveFolder(&error);
}

struct Ending {
    Clock::duration after;
    bool wasKilled;
};

/// Runs the work in a process of its own and kills it after a while, or lets it end where no time is given.
Ending runInProcess(World& world, Work work, std::optional<Clock::duration> killAfter = std::nullopt) {
    const auto start = Clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0);
        ::dup2(::open("/dev/null", O_RDWR | O_CLOEXEC), STDOUT_FILENO);
        work(world.device());
        ::_exit(0);
    }
    ::setpgid(child, child);
    if (killAfter) {
        ::usleep(static_cast<useconds_t>(*killAfter / std::chrono::microseconds(1)));
        ::kill(-child, SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    // The tools that it left behind.
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    return {Clock::now() - start, WIFSIGNALED(status)};
}

// What has to hold afterwards.

struct Aftermath {
    World& world;
    /// The tree before all work, and after work that nobody killed.
    TreeSnapshot before;
    TreeSnapshot whole;
    Work work;
};

std::vector<std::string> pathsOf(const TreeSnapshot& tree) {
    const auto paths = std::views::keys(tree);
    return {paths.begin(), paths.end()};
}

void takesNothingElseAndIsCompletedByTheNext(Aftermath& aftermath) {
    auto& [world, before, whole, work] = aftermath;
    ASSERT_LT(whole.size(), before.size());
    const auto left = pathsOf(world.tree());
    EXPECT_TRUE(std::ranges::includes(left, pathsOf(whole))) << "kept by a whole run";
    EXPECT_TRUE(std::ranges::includes(pathsOf(before), left)) << "new";
    runInProcess(world, work);
    EXPECT_EQ(pathsOf(world.tree()), pathsOf(whole));
}

void losesNothingAndIsRestored(Aftermath& aftermath) {
    auto& [world, before, whole, work] = aftermath;
    EXPECT_THAT(effectsOn(before, withoutBackupNames(world.tree())), IsEmpty());
    static bool repeats = false;
    repeats = !repeats;
    if (repeats) {
        runInProcess(world, work);
    }
    runInProcess(world, restoreAll);
    EXPECT_THAT(effectsOn(before, world.tree()), IsEmpty());
}

/// Those of the numbers that are saved, one in three places.
void settingsAreOfOneState(Aftermath& aftermath) {
    const auto numbers = [&] {
        const auto bytes =
            aftermath.world.folder.contents("/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist");
        const auto list = platform::parsePropertyList(bytes);
        const auto* saved = list ? list->as<platform::Dictionary>() : nullptr;
        EXPECT_TRUE(saved != nullptr || bytes.empty());
        return saved == nullptr
                   ? std::vector<uint64_t>()
                   : std::vector<uint64_t>{saved->at("first").unsignedValue().value_or(0),
                                           saved->at("second").unsignedValue().value_or(0),
                                           platform::valueAt<std::string>(*saved, "filling")->size() / 500};
    };
    const auto left = numbers();
    EXPECT_TRUE(left.empty() || left == std::vector(3, left[0]));
    runInProcess(aftermath.world, aftermath.work);
    EXPECT_EQ(numbers(), std::vector<uint64_t>(3, 59));
}

void addonIsOneFileInAWholeList(Aftermath& aftermath) {
    const std::string folder = "Library/MobileSubstrate/DynamicLibraries";
    const std::string whenOn = fmt::format("/.\n/Library\n/{}/Addon.dylib\n", folder);
    const std::string whenOff = fmt::format("{}/{}/Addon.disabled\n", whenOn, folder);
    for (const bool isSure : {false, true}) {
        const auto branch = scenarios::branchOf(aftermath.world.tree(), folder);
        const auto list = aftermath.world.folder.contents("/var/lib/dpkg/info/org.example.addon.list");
        ASSERT_EQ(branch.size(), 2U);
        const auto& [name, state] = *branch.rbegin();
        EXPECT_TRUE(name == "/Addon.disabled" || (name == "/Addon.dylib" && !isSure)) << name;
        EXPECT_EQ(state, aftermath.before.at(folder + "/Addon.dylib"));
        EXPECT_TRUE(list == whenOff || (list == whenOn && !isSure)) << list;
        runInProcess(aftermath.world, aftermath.work);
    }
}

void fontsAreWholeInOnePlace(Aftermath& aftermath) {
    const auto fonts = scenarios::branchOf(aftermath.before, "System/Library/Fonts");
    for (int repeats = 0; repeats < 2; ++repeats) {
        const auto tree = aftermath.world.tree();
        const std::vector places = {scenarios::branchOf(tree, "System/Library/Fonts"),
                                    scenarios::branchOf(tree, "var/Fonts")};
        // Or nothing, or a link.
        EXPECT_THAT(places, testing::Each(testing::AnyOf(fonts, testing::SizeIs(testing::Lt(2)))));
        EXPECT_THAT(places, testing::Contains(fonts));
        runInProcess(aftermath.world, aftermath.work);
    }
}

// Devices.

const std::string junk =
    R"(each N in 0.log 1 2 3 4.log 5 6 7 8.log 9 10 11 12.log 13 14 15 16.log 17 18 19 20.log
file /var/tmp/log-folder/item$N /var/tmp/staging/deep/er/item$N /var/mobile/Library/Caches/ImageCache/a/item$N
file /var/mobile/Library/Logs/inner/item$N /var/mobile/Documents/Mine/item$N /var/root/Library/Caches/item$N
file /var/mobile/Library/Preferences/)";

const std::string addon = R"(file /Library/MobileSubstrate/DynamicLibraries/Addon.dylib: addon
file /var/lib/dpkg/info/org.example.addon.list: /.\n/Library\n/Library/MobileSubstrate/DynamicLibraries/Addon.dylib\n
file /var/lib/dpkg/status: Package: org.example.addon\nStatus: install ok installed\nMaintainer: E <e@example.org>\nVersion: 1\nArchitecture: iphoneos-arm\nDescription: An add-on\n)";

// The data partition is a file system of its own where the system lets tests have one.
const std::string fonts = R"(foundation 793
file /System/Library/Fonts/Core/ /System/Library/Fonts/Cache/
host cd Root/System/Library/Fonts && for F in Core Cache; do head -c 600000 /dev/urandom | split -b 20000 - $F/font; done
memory /var 16777216)";

struct Trial {
    std::string name;
    std::string device;
    Work before;
    Work work;
    void (*expect)(Aftermath&);
    /// How often it is killed where nobody wishes for more.
    size_t kills = 7;

    friend void PrintTo(const Trial& trial, std::ostream* stream) { *stream << trial.name; }
};

const Trial trials[] = {
    {"Cleanup", junk, nullptr, cleanUp<false>, takesNothingElseAndIsCompletedByTheNext},
    {"TestRun", junk, nullptr, cleanUp<true>, losesNothingAndIsRestored},
    {"Restore", junk, cleanUp<true>, restoreAll, losesNothingAndIsRestored},
    {"SaveOfSettings", junk, nullptr, saveSettings, settingsAreOfOneState, 200},
    {"Toggle", addon, nullptr, toggleAddon, addonIsOneFileInAWholeList},
    {"MoveOfFonts", fonts, nullptr, moveFonts, fontsAreWholeInOnePlace},
};

class Interrupted : public testing::TestWithParam<Trial> {
  protected:
    /// Works on a new device and has the outcome judged.
    Ending attempt(std::optional<Clock::duration> killAfter) {
        const auto& [name, device, before, work, expect, kills] = GetParam();
        World world{{}};
        for (const auto& line : scenarios::linesOf(device)) {
            world.give(line);
        }
        Aftermath aftermath{.world = world, .before = world.tree(), .whole = whole, .work = work};
        if (before != nullptr) {
            runInProcess(world, before);
        }
        const auto ending = runInProcess(world, work, killAfter);
        if (!killAfter) {
            aftermath.whole = whole = world.tree();
        }
        expect(aftermath);
        return ending;
    }

    TreeSnapshot whole;
};

} // namespace

TEST_P(Interrupted, WorkIsPutRightByTheNext) {
    if (::geteuid() != 0 || !tests::hasOwnMounts()) {
        GTEST_SKIP() << "needs root, and mounts of its own";
    }
    ::setenv("TMPDIR", tests::memoryFolder().c_str(), 1);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const size_t all = std::size(trials);
    const size_t kills = tests::numberFrom("OZ_KILLS", all * GetParam().kills) / all;
    const auto time = attempt(std::nullopt).after;
    std::minstd_rand random{7};
    size_t cut = 0;
    for (size_t kill = 0; kill < kills && !HasFailure(); ++kill) {
        cut += attempt(time * static_cast<int64_t>(random() % 1000) / 1000).wasKilled ? 1 : 0;
    }
    fmt::print("figures: {} kills of a {}, {} of them before its end\n", kills, GetParam().name, cut);
}

INSTANTIATE_TEST_SUITE_P(, Interrupted, testing::ValuesIn(trials),
                         [](const auto& trial) { return trial.param.name; });
