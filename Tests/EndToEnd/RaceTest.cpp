// Runs as root against a process of an ordinary user that swaps its own folders, files and links for one
// another as fast as it can.
#include "Model/Core/OZAction.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Engine.h"
#include "Tests/Support/TemporaryFolder.h"

#include <grp.h>
#include <sys/prctl.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t mobileUser = 501;
constexpr uid_t otherUser = 12345;

/// The name beside a folder that holds a link to the target of that number.
std::string linkName(const std::string& folder, size_t target) {
    return fmt::format("{}.away{}", folder, target);
}

void swapNames(const std::string& one, const std::string& other) {
    ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
}

void writeFile(const std::string& path, std::string_view content, uid_t owner) {
    std::ofstream(path, std::ios::binary) << content;
    std::ignore = ::lchown(path.c_str(), owner, owner);
}

/// Swaps each folder for links to each target, for ever.
[[noreturn]] void attack(const std::vector<std::string>& folders, const std::vector<std::string>& targets) {
    std::minstd_rand random(1);
    for (;;) {
        const auto& folder = folders[random() % folders.size()];
        const size_t number = random() % targets.size();
        const auto& target = targets[number];
        const std::string backup = folder + ".OzvarineBackup";
        switch (random() % 12) {
        case 0: // a leaf for a link
            ::unlink((folder + "/f0").c_str());
            ::symlink((target + "/f0").c_str(), (folder + "/f0").c_str());
            break;
        case 1: // a leaf for a folder
            ::mkdir((folder + "/f1.folder").c_str(), 0755);
            swapNames(folder + "/f1", folder + "/f1.folder");
            break;
        case 2: // a leaf for another name of a file
            ::unlink((folder + "/f2").c_str());
            ::link((folders.front() + ".own").c_str(), (folder + "/f2").c_str());
            break;
        case 3: // a folder out of its place and back
            ::rename(folder.c_str(), (folder + ".moved").c_str());
            ::rename((folder + ".moved").c_str(), folder.c_str());
            break;
        case 4: // a false backup
            ::symlink(target.c_str(), backup.c_str());
            break;
        case 5:
            swapNames(backup, linkName(folder, number));
            break;
        case 6: // new leaves
            ::mkdir(folder.c_str(), 0755);
            ::mkdir((folder + "/sub").c_str(), 0755);
            for (const auto* name : {"/f0", "/f1", "/f2", "/sub/f0", "/junk.txt"}) {
                ::close(::open((folder + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                               0644));
            }
            break;
        case 7:
            swapNames(folder + "/sub", linkName(folder, number));
            break;
        default:
            swapNames(folder, linkName(folder, number));
        }
    }
}

class Adversary {
  public:
    Adversary(const std::vector<std::string>& folders, const std::vector<std::string>& targets)
        : _child(::fork()) {
        if (_child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::setgroups(0, nullptr) < 0 || ::setresgid(mobileUser, mobileUser, mobileUser) < 0 ||
                ::setresuid(mobileUser, mobileUser, mobileUser) < 0) {
                ::_exit(1);
            }
            attack(folders, targets);
        }
    }
    Adversary(const Adversary&) = delete;
    Adversary& operator=(const Adversary&) = delete;
    ~Adversary() {
        ::kill(_child, SIGKILL);
        ::waitpid(_child, nullptr, 0);
    }

    /// Returns once the process rests.
    void pause() const {
        ::kill(_child, SIGSTOP);
        ::waitpid(_child, nullptr, WUNTRACED);
    }
    void resume() const { ::kill(_child, SIGCONT); }

  private:
    pid_t _child;
};

/// The adversary's own folders: an operand, one on the way to an operand, the log's, a language's.
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

/// What belongs to others beside the attacked folders.
constexpr const char* canaryFiles[] = {"/private/var/mobile/Library/Caches/keep",
                                       "/private/var/mobile/Library/keep",
                                       "/private/var/mobile/Documents/keep", "/private/var/root/beside"};

class RaceGround {
  public:
    RaceGround() {
        // Open to the adversary.
        fs::permissions(_world.folder.folder(), fs::perms(0755));
        fs::permissions(_outside.path(), fs::perms(0755));
        fs::remove(_world.folder.folder() / "Tools/usr/bin/killall");
        std::ranges::transform(attackedFolders, std::back_inserter(folders),
                               [this](const char* path) { return host(path); });
        makeCanary(host("/private/var/root/keep"), 0);
        makeCanary(host("/private/var/other/keep"), otherUser);
        makeCanary(_outside.path("keep"), 0);
        prepare();
        targets = {_outside.path("keep"), "/private/var/root/keep", "/private/var/other/keep",
                   "../../../../../../../../../../../.." + _outside.path("keep"),
                   host("/private/var/root/keep")};
        for (const auto* path : canaryFiles) {
            writeFile(host(path), "precious", 0);
        }
        fs::create_symlink("private/var", host("/var"));
        _before = canaries();
        engine = std::make_unique<tests::Engine>(_world.device(), _resources);
        auto& choices = engine->core.choices();
        choices.setLanguagesToRemove({"French"});
        const platform::Dictionary ownFiles{{"filePath", "/var/mobile/Documents/Mine"},
                                            {"fileType", "NSFileTypeDirectory"},
                                            {"customFolderSetting", 2},
                                            {"recursive", true},
                                            {"startPattern", "f"}};
        choices.setCustomFilesExcludingInvalid({ownFiles});
    }

    /// The attacked folders as they were in the beginning.
    void prepare() {
        std::error_code ignored;
        for (const auto& folder : folders) {
            for (const auto* below : {"", "/sub", "/Caches"}) {
                fs::create_directories(folder + below, ignored);
                for (const auto* name : {"/f0", "/f1", "/f2", "/a.log"}) {
                    writeFile(folder + below + name, "junk", mobileUser);
                }
            }
            for (size_t target = 0; target < targets.size(); ++target) {
                fs::remove_all(linkName(folder, target), ignored);
                fs::create_symlink(targets[target], linkName(folder, target), ignored);
            }
        }
        writeFile(folders[0] + ".own", "my own", mobileUser);
        // All but what is root's by its place belongs to the adversary.
        for (const auto* path :
             {"/private/var/tmp", "/private/var/MobileSoftwareUpdate", "/private/var/mobile"}) {
            std::ignore = ::lchown(host(path).c_str(), mobileUser, mobileUser);
            for (const auto& entry : fs::recursive_directory_iterator(host(path))) {
                if (entry.path().filename() != "keep") {
                    std::ignore = ::lchown(entry.path().c_str(), mobileUser, mobileUser);
                }
            }
        }
    }
    /// To be called while the adversary rests.
    void clear() {
        std::error_code ignored;
        for (const fs::path folder : folders) {
            for (const auto& entry : fs::directory_iterator(folder.parent_path(), ignored)) {
                if (entry.path().filename().string().starts_with(folder.filename().string())) {
                    fs::remove_all(entry.path(), ignored);
                }
            }
        }
    }
    /// What became of other people's items; none if all is well.
    [[nodiscard]] std::vector<std::string> damage() const {
        std::vector<std::string> lines;
        std::ranges::set_symmetric_difference(_before, canaries(), std::back_inserter(lines));
        return lines;
    }

    std::vector<std::string> folders;
    std::vector<std::string> targets;
    std::unique_ptr<tests::Engine> engine;

  private:
    [[nodiscard]] std::string host(std::string_view path) const {
        return _world.folder.hostPath(path).string();
    }

    // Holds every name that the attacked folders have. What searches of the whole tree take by its name is
    // there as another kind of item, which they pass by.
    static void makeCanary(const std::string& folder, uid_t owner) {
        for (const auto* below : {"", "/sub", "/App", "/Caches", "/busy/sub"}) {
            fs::create_directories(folder + below + "/a.log");
            for (const auto* name : {"/f0", "/f1", "/f2", "/junk.txt", "/a.log/f0", "/fr.lproj"}) {
                writeFile(folder + below + name, "precious", owner);
            }
        }
        std::ignore = ::chown(folder.c_str(), owner, owner);
    }
    // With the dates of folders, which tell of items that came and went.
    [[nodiscard]] std::set<std::string> canaries() const {
        std::set<std::string> lines;
        for (const auto& folder : {_outside.path(), host("/private/var/root"), host("/private/var/other")}) {
            for (const auto& [path, state] : tests::snapshotOf(folder)) {
                lines.insert(tests::describe(folder + "/" + path, state));
            }
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

    tests::TemporaryFolder _outside{tests::memoryFolder()};
    scenarios::World _world{{}};
    platform::Bundle _resources;
    std::set<std::string> _before;
};

void runOnce(tests::Engine& engine, size_t number) {
    const std::vector<std::string_view> quick = {"SAFARI", "OTAUPDATES", "LOGFILES", "CACHEFILES",
                                                 "TEMPFILES"};
    switch (number % 6) {
    case 0:
    case 1:
        return engine.clean(quick);
    case 2:
        return engine.clean({"FILETYPECLEANUP", "CUSTOMFILES", "TEMPFILES"});
    case 3:
        return engine.clean(quick, OZCoreMode::test);
    case 4:
        return engine.core.backup(BackupAction::restore);
    default:
        return engine.core.remove(OZAction::removeLanguages, Analyze::no);
    }
}

} // namespace

TEST(Race, NobodyLeadsARunToOtherPeoplesFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root for an adversary of another user";
    }
    ::setenv("TMPDIR", tests::memoryFolder().c_str(), 1);
    // At least so many runs and so long.
    const size_t fewestRuns = tests::numberFrom("OZ_RACE_RUNS", 1);
    const std::chrono::seconds time(fewestRuns > 1 ? 60 : 8);
    const auto end = std::chrono::steady_clock::now() + time;

    RaceGround ground;
    const Adversary adversary(ground.folders, ground.targets);
    size_t runs = 0;
    uint64_t items = 0;
    std::ptrdiff_t swapped = 0;
    for (; (runs < fewestRuns || std::chrono::steady_clock::now() < end) && !HasFailure(); ++runs) {
        adversary.pause();
        if (runs % 6 != 4) {
            ground.clear();
            ground.prepare();
        }
        adversary.resume();
        runOnce(*ground.engine, runs);
        adversary.pause();
        items += ground.engine->core.fileCount();
        swapped +=
            std::ranges::count_if(ground.folders, [](const fs::path path) { return fs::is_symlink(path); });
        EXPECT_THAT(ground.damage(), testing::IsEmpty()) << "canaries after run " << runs;
        adversary.resume();
    }
    EXPECT_GT(items, 0);
    EXPECT_GT(swapped, 0);
    fmt::print("figures: {} runs against an adversary, {} items, {} folders seen swapped\n", runs, items,
               swapped);
}
