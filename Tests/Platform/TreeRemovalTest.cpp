#include "Tests/Platform/FileManagerFixture.h"

#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace platform;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace tests {

namespace {

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

void makeSocket(const std::string& path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

// Time, not a number of attempts: a quick adversary may keep a folder alive for many of them.
class Patience {
  public:
    [[nodiscard]] bool isLeft() const { return std::chrono::steady_clock::now() < _end; }

  private:
    std::chrono::steady_clock::time_point _end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
};

} // namespace

class TreeRemovalTest : public FileManagerFixture {
  protected:
    // Runs `act` for a while; after each time the canaries must be whole.
    template <class Act>
    void repeatedly(Act act) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(450);
        while (std::chrono::steady_clock::now() < end) {
            act();
            ASSERT_EQ(host.content("outside/canary"), "alive");
            ASSERT_EQ(content("/keep/canary"), "alive");
            ASSERT_EQ(content("/keep/deep/canary"), "alive");
        }
    }
};
OZ_BOTH_RESOLUTIONS(TreeRemovalTest);

TEST_P(TreeRemovalTest, TreeOfTrapsIsGoneAndNothingElse) {
    const std::string outside = host.path("outside");
    make("keep/canary: alive\nkeep/folder/canary: alive\n");
    const auto before = host.listing();
    std::string folder = "trap/";
    for (int level = 0; level < 5; ++level, folder += "in/") {
        make(folder + "absolute -> " + outside + "\n" + folder + "file -> " + outside + "/canary\n" + folder +
             "relative -> ../../../../../../../.." + outside + "\n" + folder + "beside -> /keep\n" + folder +
             "up -> ..\n" + folder + "self -> self\n" + folder + "nothing -> missing\n" + folder +
             "pipe |\n" + folder + "hard == keep/canary\n" + folder + "empty/\n" + folder +
             "locked/file: x\n" + folder + "\xff\xfe: x\n" + folder + std::string(255, 'n') + "/x: x\n");
        makeSocket(host.path("root/" + folder + "socket"));
        ASSERT_EQ(::chmod(host.path("root/" + folder + "empty").c_str(), 0), 0);
    }
    EXPECT_TRUE(files->removeItemAtPath("/trap"));
    EXPECT_EQ(host.listing(), before);
}

TEST_P(TreeRemovalTest, LinkAtTheNameIsRemovedItself) {
    make("keep/canary: alive\nlink -> keep\nvar -> keep\nnothing -> missing");
    for (const char* path : {"/link", "/var/", "/nothing"}) {
        EXPECT_TRUE(files->removeItemAtPath(path)) << path;
    }
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"), ElementsAre("keep"));
    EXPECT_EQ(content("/keep/canary"), "alive");
    EXPECT_EQ(errorOf(files->removeItemAtPath("/link")), ENOENT);
    EXPECT_EQ(errorOf(files->removeItemAtPath("/keep/canary/x")), ENOTDIR);
}

TEST_P(TreeRemovalTest, GoesOnPastWhatCannotBeRemoved) {
    make("tree/a/file: x\ntree/roots/file: stays\ntree/closed/\ntree/z/deep/file: x");
    ASSERT_EQ(::chmod(host.path("root/tree/closed").c_str(), 0), 0);
    for (const char* path : {"/tree", "/tree/a", "/tree/a/file", "/tree/closed", "/tree/z", "/tree/z/deep",
                             "/tree/z/deep/file"}) {
        if (!giveToUser(path, 501)) {
            GTEST_SKIP() << "needs real root to become another user";
        }
    }
    EXPECT_TRUE(holdsForUser(501, [&] {
        const auto tree = *files->itemAtPath("/tree")->openFolder();
        return errorOf(Item(tree, "roots").remove()) == EACCES && Item(tree, "closed").remove() &&
               errorOf(files->removeItemAtPath("/tree")) == EACCES;
    }));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/tree"), UnorderedElementsAre("a", "roots", "z"))
        << "the folder's own removal is refused before its content is touched";
    ASSERT_TRUE(giveToUser("", 501));
    EXPECT_TRUE(holdsForUser(501, [&] { return errorOf(files->removeItemAtPath("/tree")) == EACCES; }));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/tree"), ElementsAre("roots"));
    EXPECT_EQ(content("/tree/roots/file"), "stays");
}

TEST_P(TreeRemovalTest, FoundPathsSurviveFoldersSwappedForLinks) {
    make("keep/canary: alive\nkeep/deep/canary: alive\nkeep/foreign: x\nbusy/target/canary: x\nbusy/decoy -> "
         "/keep");
    const Descriptor target(
        ::open(host.path("root/busy/target").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Swapper swapper(host.path("root/busy/target"), host.path("root/busy/decoy"));
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
    make("keep/canary: alive\nkeep/deep/canary: alive\nbusy/target/canary: x\nbusy/decoy -> /keep\nbusy/out "
         "-> " +
         host.path("outside"));
    if (!giveToUser("/busy/decoy", 501) || !giveToUser("/busy/target", 501)) {
        GTEST_SKIP() << "needs the right to give links away";
    }
    const Descriptor target(
        ::open(host.path("root/busy/target").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Swapper swapper(host.path("root/busy/target"), host.path("root/busy/decoy"));
    const Swapper outside(host.path("root/busy/target"), host.path("root/busy/out"));
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
    make("keep/canary: alive\nkeep/deep/canary: alive\n");
    const Swapper swapper(host.path("root/target/in"), host.path("root/target/decoy"));
    repeatedly([&] {
        make("staging/in/deep/canary: x\nstaging/in/canary: x\nstaging/decoy -> /keep");
        ASSERT_TRUE(files->moveItemAtPath("/staging", "/target"));
        // What a swap kept alive goes the next time.
        for (const Patience patience; exists("/target") && patience.isLeft();) {
            std::ignore = files->removeItemAtPath("/target");
        }
        ASSERT_FALSE(exists("/target"));
    });
}

TEST_P(TreeRemovalTest, DeepTreesGoWithFewDescriptors) {
    make("deep/");
    makeDeepFolders((*files->folderAtPath("/deep"))->descriptor(), 20000);
    const LoweredLimit fewDescriptors(RLIMIT_NOFILE, 1024);
    EXPECT_TRUE(files->removeItemAtPath("/deep"));
    EXPECT_FALSE(exists("/deep"));
}

TEST_P(TreeRemovalTest, FolderMovedAwayLeadsNoRemovalToItsNewNeighbours) {
    make("keep/canary: alive\nkeep/deep/canary: alive");
    host.make("outside/hole/d/");
    // Many, since some of them have to be left for the time after "d".
    const std::string siblings = "abcefghijklmnopqrstuvwxyz";
    for (const char name : siblings) {
        host.make(std::string("outside/hole/") + name + "/canary: alive");
    }
    const Swapper swapper(host.path("root/target/d"), host.path("outside/hole/d"));
    repeatedly([&] {
        for (const char name : siblings) {
            make(std::string("staging/") + name + "/canary: x");
        }
        makeDeepFolders((*files->folderAtPath("/staging"))->descriptor(), 60);
        ASSERT_TRUE(files->moveItemAtPath("/staging", "/target"));
        for (const Patience patience; exists("/target") && patience.isLeft();) {
            std::ignore = files->removeItemAtPath("/target");
        }
        for (const char name : siblings) {
            ASSERT_EQ(host.content(std::string("outside/hole/") + name + "/canary"), "alive");
        }
    });
}

} // namespace tests
