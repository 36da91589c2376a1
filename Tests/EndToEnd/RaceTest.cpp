#include "Model/Apps/OZAppList.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/EndToEnd/Adversary.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using testing::IsEmpty;
using tests::Adversary;
using tests::TemporaryFolder;

namespace {

namespace fs = std::filesystem;

constexpr uid_t otherUser = 12345;

// The adversary's own folders: an operand, one on the way to an operand, the log's, a language's.
constexpr const char* attackedFolders[] = {
    "/private/var/tmp/busy",
    "/private/var/tmp/busy/sub",
    "/private/var/mobile/Library/Caches/ImageCache",
    "/private/var/mobile/Library/Caches/Snapshots",
    "/private/var/mobile/Library/Keyboard",
    "/private/var/mobile/Library/Logs/inner",
    "/private/var/MobileSoftwareUpdate/payload",
    "/private/var/mobile/Library/Ozvarine",
    "/private/var/mobile/Documents/App",
    "/private/var/mobile/Documents/App/fr.lproj",
    "/private/var/mobile/Documents/Mine",
};

// What belongs to others, in the tree and beside the attacked folders.
constexpr const char* canaryFolders[] = {"/private/var/root/keep", "/private/var/other/keep"};
constexpr const char* canaryFiles[] = {"/private/var/mobile/Library/Caches/keep",
                                       "/private/var/mobile/Library/keep",
                                       "/private/var/mobile/Documents/keep", "/private/var/root/beside"};

void writeFile(const std::string& path, std::string_view content, uid_t owner) {
    std::ofstream(path, std::ios::binary) << content;
    std::ignore = ::lchown(path.c_str(), owner, owner);
}

// Holds every name that the attacked folders have. What searches of the whole tree take by its name is there
// as another kind of item, which they pass by.
void makeCanary(const std::string& folder, uid_t owner) {
    for (const auto* below : {"", "/sub", "/App", "/Caches", "/busy/sub"}) {
        fs::create_directories(folder + below + "/a.log");
        for (const auto* name : {"/f0", "/f1", "/f2", "/junk.txt", "/a.log/f0", "/fr.lproj"}) {
            writeFile(folder + below + name, "precious", owner);
        }
    }
    std::ignore = ::chown(folder.c_str(), owner, owner);
}

class RaceGround {
  public:
    RaceGround() {
        // Open to the adversary.
        fs::permissions(_device.folder(), fs::perms(0755));
        fs::permissions(_outside.path(), fs::perms(0755));
        for (size_t index = 0; index < std::size(canaryFolders); ++index) {
            makeCanary(host(canaryFolders[index]), index == 0 ? 0 : otherUser);
        }
        makeCanary(_outside.path("keep"), 0);
        prepare();
        _targets = {_outside.path("keep"), "/private/var/root/keep", "/private/var/other/keep",
                    "../../../../../../../../../../../.." + _outside.path("keep"),
                    host("/private/var/root/keep")};
        for (const auto* path : canaryFiles) {
            writeFile(host(path), "precious", 0);
        }
        fs::create_symlink("private/var", host("/var"));
        _before = canaries();
        _manager = std::make_unique<OZLocalizationManager>(_device.device(),
                                                           _device.device().standardUserDefaults(), _bundle);
        _apps = std::make_unique<OZAppList>(_device.device());
        core = std::make_unique<OZCore>(_device.device(), *_apps, *_manager);
        core->setCleanupLogger(std::make_unique<OZCleanupLogger>(_device.device()));
        core->choices().setLanguagesToRemove({"French"});
        core->choices().setCustomFilesExcludingInvalid(
            {platform::Dictionary{{"filePath", "/var/mobile/Documents/Mine"},
                                  {"fileType", "NSFileTypeDirectory"},
                                  {"customFolderSetting", 2},
                                  {"recursive", true},
                                  {"startPattern", "f"}}});
    }

    /// The attacked folders as they were in the beginning.
    void prepare() {
        for (const auto* path : attackedFolders) {
            const std::string folder = host(path);
            std::error_code ignored;
            fs::create_directories(folder, ignored);
            for (const auto* below : {"", "/sub", "/Caches"}) {
                fs::create_directories(folder + below, ignored);
                for (const auto* name : {"/f0", "/f1", "/f2", "/a.log"}) {
                    writeFile(folder + below + name, "junk", tests::mobileUser);
                }
            }
            for (size_t target = 0; target < _targets.size(); ++target) {
                fs::remove_all(Adversary::linkName(folder, target), ignored);
                fs::create_symlink(_targets[target], Adversary::linkName(folder, target), ignored);
            }
        }
        writeFile(host(attackedFolders[0]) + ".own", "my own", tests::mobileUser);
        // All but what is root's by its place belongs to the adversary.
        for (const auto* path :
             {"/private/var/tmp", "/private/var/MobileSoftwareUpdate", "/private/var/mobile"}) {
            own(host(path));
            for (const auto& entry : fs::recursive_directory_iterator(host(path))) {
                if (entry.path().filename() != "keep") {
                    own(entry.path());
                }
            }
        }
    }
    /// To be called while the adversary rests.
    void clear() {
        for (const auto* path : attackedFolders) {
            const fs::path folder = host(path);
            std::error_code ignored;
            for (const auto& entry : fs::directory_iterator(folder.parent_path(), ignored)) {
                if (entry.path().filename().string().starts_with(folder.filename().string())) {
                    fs::remove_all(entry.path(), ignored);
                }
            }
        }
    }

    /// How many of the attacked folders are links at the moment.
    [[nodiscard]] size_t swappedFolders() const {
        return static_cast<size_t>(std::ranges::count_if(attackedFolders, [&](const char* path) {
            return fs::is_symlink(fs::symlink_status(host(path)));
        }));
    }
    [[nodiscard]] std::vector<std::string> folders() const {
        std::vector<std::string> paths;
        for (const auto* path : attackedFolders) {
            paths.push_back(host(path));
        }
        return paths;
    }
    [[nodiscard]] const std::vector<std::string>& targets() const { return _targets; }
    /// What became of other people's items; none if all is well.
    [[nodiscard]] std::vector<std::string> damage() const {
        std::vector<std::string> lines;
        std::ranges::set_symmetric_difference(_before, canaries(), std::back_inserter(lines));
        return lines;
    }

    void clean(const std::vector<std::string_view>& steps, bool testMode) {
        platform::Dictionary settings;
        for (const auto step : steps) {
            settings[std::string(step)] = true;
        }
        core->choices().setTestMode(testMode);
        core->clean(&settings, Analyze::no);
    }

    std::unique_ptr<OZCore> core;

  private:
    [[nodiscard]] std::string host(std::string_view path) const { return _device.hostPath(path).string(); }
    static void own(const fs::path& path) {
        std::ignore = ::lchown(path.c_str(), tests::mobileUser, tests::mobileUser);
    }

    // With the dates of folders, which tell of items that came and went.
    [[nodiscard]] std::set<std::string> canaries() const {
        std::set<std::string> lines;
        const auto add = [&](const std::string& folder) {
            for (const auto& [path, state] : tests::snapshotOf(folder)) {
                lines.insert(tests::describe(folder + "/" + path, state));
            }
        };
        add(_outside.path());
        for (const auto* path : canaryFolders) {
            add(fs::path(host(path)).parent_path());
        }
        for (const auto* path : canaryFiles) {
            const fs::path file = host(path);
            const auto around = tests::snapshotOf(file.parent_path());
            const auto found = around.find(file.filename());
            lines.insert(found == around.end() ? "no " + file.string()
                                               : tests::describe(file, found->second));
        }
        return lines;
    }

    TemporaryFolder _outside{tests::memoryFolder()};
    TemporaryDevice _device{
        platform::DeviceFacts{.foundationVersion = 1445.32, .applications = platform::Array{}}};
    platform::Bundle _bundle;
    std::vector<std::string> _targets;
    std::set<std::string> _before;
    std::unique_ptr<OZLocalizationManager> _manager;
    std::unique_ptr<OZAppList> _apps;
};

const std::vector<std::string_view> quickSteps = {"SAFARI", "OTAUPDATES", "LOGFILES", "CACHEFILES",
                                                  "TEMPFILES"};
const std::vector<std::string_view> searchingSteps = {"FILETYPECLEANUP", "CUSTOMFILES", "TEMPFILES"};

void runOnce(RaceGround& ground, size_t number) {
    switch (number % 6) {
    case 0:
    case 1:
        return ground.clean(quickSteps, false);
    case 2:
        return ground.clean(searchingSteps, false);
    case 3:
        return ground.clean(quickSteps, true);
    case 4:
        return ground.core->backup(BackupAction::restore);
    default:
        return ground.core->remove(OZAction::removeLanguages, Analyze::no);
    }
}

} // namespace

TEST(Race, NobodyLeadsARunToOtherPeoplesFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root for an adversary of another user";
    }
    ::setenv("TMPDIR", tests::memoryFolder().c_str(), 1);
    const char* wanted = std::getenv("OZ_RACE_RUNS");
    // At least so many runs and so long.
    const size_t fewestRuns = wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : 1;
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + std::chrono::seconds(wanted != nullptr ? 60 : 8);

    RaceGround ground;
    const Adversary adversary(ground.folders(), ground.targets());
    size_t runs = 0;
    uint64_t items = 0;
    size_t swapped = 0;
    for (; (runs < fewestRuns || std::chrono::steady_clock::now() < end) && !HasFailure(); ++runs) {
        adversary.pause();
        if (runs % 6 != 4) {
            ground.clear();
            ground.prepare();
        }
        adversary.resume();
        runOnce(ground, runs);
        adversary.pause();
        items += ground.core->fileCount();
        swapped += ground.swappedFolders();
        EXPECT_THAT(ground.damage(), IsEmpty()) << "canaries after run " << runs;
        adversary.resume();
    }
    EXPECT_GT(items, 0);
    EXPECT_GT(swapped, 0);
    const auto taken =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    std::cout << "figures: " << runs << " runs against an adversary, " << items << " items, " << swapped
              << " folders seen swapped, " << taken.count() << " seconds\n";
}
