// Removals of trees full of traps, and of trees that somebody changes meanwhile.

#include "Tests/Platform/FileManagerFixture.h"

#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <sys/wait.h>

using namespace platform;
using namespace std::chrono_literals;

namespace tests {

namespace {

using Clock = std::chrono::steady_clock;

// Exchanges two entries as fast as it can until the end of its life, in a process of its own.
class Swapper {
  public:
    Swapper(const std::string& first, const std::string& second) {
        const pid_t parent = ::getpid();
        _child = ::fork();
        if (_child == 0) {
            // It must not outlive a test that is killed.
            while (::getppid() == parent) {
                ::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE);
            }
            ::_exit(0);
        }
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;
    ~Swapper() {
        ::kill(_child, SIGKILL);
        ::waitpid(_child, nullptr, 0);
    }

  private:
    pid_t _child = 0;
};

} // namespace

class TreeRemovalTest : public FileManagerFixture {
  protected:
    TreeRemovalTest() {
        root.make("keep/canary: alive\nkeep/deep/canary: alive\nbusy/target/canary: x\nbusy/decoy -> /keep");
        root.make("busy/out -> " + host.path("outside"));
    }

    // Runs `act` for a while; after each time the canaries must be whole.
    template <class Act>
    void repeatedly(Act act) {
        for (const auto end = Clock::now() + 450ms; Clock::now() < end;) {
            act();
            ASSERT_EQ(host.content("outside/canary"), "alive");
            ASSERT_EQ(root.content("keep/canary") + root.content("keep/deep/canary"), "alivealive");
        }
    }

    // What a swap kept alive goes the next time. Time, not a number of attempts: a quick adversary may keep a
    // folder alive for many of them.
    void removeForGood(const char* from) {
        ASSERT_TRUE(files->moveItemAtPath(from, "/target"));
        for (const auto end = Clock::now() + 10s; root.exists("target") && Clock::now() < end;) {
            std::ignore = files->removeItemAtPath("/target");
        }
        ASSERT_FALSE(root.exists("target"));
    }
};
OZ_BOTH_RESOLUTIONS(TreeRemovalTest);

TEST_P(TreeRemovalTest, TreeOfTrapsIsGoneAndNothingElse) {
    const auto before = host.listing();
    const std::string outside = host.path("outside");
    const std::string traps[] = {"absolute -> " + outside,
                                 "file -> " + outside + "/canary",
                                 "relative -> ../../../../../../../.." + outside,
                                 "beside -> /keep",
                                 "up -> ..",
                                 "self -> self",
                                 "nothing -> missing",
                                 "pipe |",
                                 "hard == keep/canary",
                                 "empty/",
                                 "locked/file: x",
                                 "\xff\xfe: x",
                                 std::string(255, 'n') + "/x: x"};
    for (std::string folder = "trap/"; folder.size() < 20; folder += "in/") {
        for (const auto& trap : traps) {
            root.make(folder + trap);
        }
        ASSERT_EQ(::mknod(root.path(folder + "socket").c_str(), S_IFSOCK | 0644, 0), 0);
        ASSERT_EQ(::chmod(root.path(folder + "empty").c_str(), 0), 0);
    }
    EXPECT_TRUE(files->removeItemAtPath("/trap"));
    EXPECT_EQ(host.listing(), before);
}

TEST_P(TreeRemovalTest, FoundPathsSurviveFoldersSwappedForLinks) {
    root.make("keep/foreign: x");
    const Descriptor target(::open(root.path("busy/target").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Swapper swapper(root.path("busy/target"), root.path("busy/decoy"));
    size_t removed = 0;
    repeatedly([&] {
        const Descriptor again(::openat(target.get(), "canary", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        const auto folder = *files->folderAtPath("/busy");
        std::vector<std::string> found;
        const auto walk = files->enumeratorAtPath("/busy");
        while (const auto entry = walk->nextObject()) {
            EXPECT_FALSE(entry->ends_with("/foreign")) << "walked through a link";
            if (entry->ends_with("/canary")) {
                found.emplace_back(*entry);
            }
        }
        found.insert(found.end(), {"target/deep/canary", "target/canary", "decoy/canary"});
        for (const auto& name : found) {
            const auto item = files->itemBelow(folder, name);
            removed += item && item->remove() ? 1 : 0;
            files->forgetLastFolder();
        }
    });
    EXPECT_GT(removed, 0);
}

TEST_P(TreeRemovalTest, PlainPathsSurviveFoldersSwappedForLinksOfUsers) {
    for (const char* name : {"busy/decoy", "busy/target"}) {
        if (::lchown(root.path(name).c_str(), 501, 501) != 0) {
            GTEST_SKIP() << "needs the right to give links away";
        }
    }
    const Descriptor target(::open(root.path("busy/target").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Swapper swapper(root.path("busy/target"), root.path("busy/decoy"));
    const Swapper outside(root.path("busy/target"), root.path("busy/out"));
    size_t removed = 0;
    repeatedly([&] {
        const Descriptor again(::openat(target.get(), "canary", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        for (const char* path : {"/busy/target/canary", "/busy/decoy/canary", "/busy/target/../target/canary",
                                 "/busy/target/deep/canary", "/busy/out/canary"}) {
            removed += files->removeItemAtPath(path) ? 1 : 0;
        }
    });
    EXPECT_GT(removed, 0);
}

TEST_P(TreeRemovalTest, RemovalSurvivesInnerFoldersSwappedForLinks) {
    const Swapper swapper(root.path("target/in"), root.path("target/decoy"));
    repeatedly([&] {
        root.make("staging/in/deep/canary: x\nstaging/in/canary: x\nstaging/decoy -> /keep");
        removeForGood("/staging");
    });
}

TEST_P(TreeRemovalTest, FolderMovedAwayLeadsNoRemovalToItsNewNeighbours) {
    host.make("outside/hole/d/");
    // Many, since some of them have to be left for the time after "d".
    const std::string siblings = "abcefghijklmnopqrstuvwxyz";
    for (const char name : siblings) {
        host.make(std::string("outside/hole/") + name + "/canary: alive");
    }
    const Swapper swapper(root.path("target/d"), host.path("outside/hole/d"));
    repeatedly([&] {
        for (const char name : siblings) {
            root.make(std::string("staging/") + name + "/canary: x");
        }
        makeDeepFolders((*files->folderAtPath("/staging"))->descriptor(), 60);
        removeForGood("/staging");
        for (const char name : siblings) {
            ASSERT_EQ(host.content(std::string("outside/hole/") + name + "/canary"), "alive");
        }
    });
}

} // namespace tests
