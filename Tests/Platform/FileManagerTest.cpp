// What takes deep, wide or changing trees, and time. Tests/Scenarios/Platform tells the rest.

#include "Platform/Files/FileManager.h"

#include "Tests/Platform/PropertyListTexts.h"
#include "Tests/Support/TemporaryFolder.h"

#include <climits>

#include <sys/prctl.h>
#include <sys/resource.h>

using namespace platform;
using namespace std::chrono_literals;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

namespace tests {

namespace {

std::vector<std::string> rest(DirectoryEnumerator& walk) {
    std::vector<std::string> paths;
    while (const auto path = walk.nextObject()) {
        paths.emplace_back(*path);
    }
    return paths;
}

/// Exchanges two entries as fast as it can until the end of its life, in a process of its own.
class Swapper {
  public:
    Swapper(const std::string& first, const std::string& second)
        : _child(::fork()) {
        if (_child != 0) {
            return;
        }
        for (::prctl(PR_SET_PDEATHSIG, SIGKILL);;) {
            ::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE);
        }
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;
    ~Swapper() {
        ::kill(_child, SIGKILL);
        ::waitpid(_child, nullptr, 0);
    }

  private:
    pid_t _child;
};

} // namespace

/// A device root in a folder of the host, beside it "outside", which nothing may ever change. Every test runs
/// with both ways of finding paths.
class FileManagerTest : public testing::TestWithParam<PathResolution> {
  protected:
    FileManagerTest() { host.make("outside/canary: alive\noutside/folder/canary: alive\n"); }
    void TearDown() override {
        EXPECT_EQ(host.content("outside/canary") + host.content("outside/folder/canary"), "alivealive");
    }
    /// A folder "d" in each of so many folders.
    void makeDeep(const char* path, size_t depth) {
        makeDeepFolders((*files->folderAtPath(path))->descriptor(), depth);
    }

    TemporaryFolder host{memoryFolder()};
    TemporaryFolder root{host.path()};
    Result<FileManager> files = FileManager::atRoot(root.path(), GetParam());
};

const auto bothWays = testing::Values(PathResolution::kernel, PathResolution::componentWise);
INSTANTIATE_TEST_SUITE_P(, FileManagerTest, bothWays);

TEST_P(FileManagerTest, PathsMayBeLongerThanTheSystemTakes) {
    const std::string path = repeated("/d", 3000);
    ASSERT_GT(path.size(), size_t{PATH_MAX});
    makeDeep("/", 3000);
    ASSERT_TRUE(files->writeContents(path + "/file", "deep"));
    EXPECT_EQ(*files->contentsAtPath(path + "/file"), "deep");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath(path), path);
    EXPECT_EQ(files->itemBelow(*files->folderAtPath("/d"), path.substr(3) + "/file")->attributes()->size, 4);
    ASSERT_TRUE(files->createDirectoryAtPath(path + "/new/folder", IntermediateFolders::create));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath(path + repeated("/..", 2999)), ElementsAre("d"));
    ASSERT_TRUE(files->changeCurrentDirectoryPath(path));
    EXPECT_EQ(*files->contentsAtPath("file"), "deep");
    EXPECT_TRUE(files->removeItemAtPath("/d"));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"), ElementsAre());
}

TEST_P(FileManagerTest, DeepTreesNeedFewDescriptors) {
    root.make("less/");
    makeDeep("/less", 3000);
    makeDeep("/", 20000);
    rlimit usual{};
    ::getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit fewDescriptors{.rlim_cur = 128, .rlim_max = usual.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &fewDescriptors);
    EXPECT_TRUE(files->copyItemAtPath("/less", "/copy"));
    for (const auto& [top, depth] : {std::pair("/d", 19999), std::pair("/copy", 3000)}) {
        int count = 0;
        const auto walk = files->enumeratorAtPath(top);
        while (const auto entry = walk->nextObject()) {
            ASSERT_EQ(entry->size(), 2 * count++ + 1);
        }
        EXPECT_EQ(count, depth);
        EXPECT_TRUE(files->removeItemAtPath(top));
        EXPECT_FALSE(root.exists(top));
    }
    ::setrlimit(RLIMIT_NOFILE, &usual);
}

TEST_P(FileManagerTest, WideFolder) {
    root.make("wide/");
    for (size_t number = 0; number < 20000; ++number) {
        ASSERT_TRUE(files->createFileAtPath(fmt::format("/wide/file with a longer name {}", number)));
    }
    EXPECT_EQ(rest(*files->enumeratorAtPath("/wide")).size(), 20000);
    EXPECT_EQ(files->contentsOfDirectoryAtPath("/wide")->size(), 20000);
    EXPECT_TRUE(files->removeItemAtPath("/wide"));
    EXPECT_FALSE(root.exists("wide"));
}

TEST_P(FileManagerTest, FolderThatIsGoneIsNotMistakenForTheNext) {
    root.make("a/sub/file: 1\nb/sub/file: 22");
    const auto top = *files->folderAtPath("/");
    for (int round = 0; round < 20; ++round) {
        const auto folder = *Item(top, round % 2 == 0 ? "a" : "b").openFolder();
        EXPECT_EQ(files->itemBelow(folder, "sub/file")->attributes()->size, 1 + round % 2);
    }
}

TEST_P(FileManagerTest, TreeMayChangeUnderTheWalk) {
    root.make("gone/file: x\nswapped/file: x\nkept/file: x\nelsewhere/foreign: x");
    for (int number = 0; number < 3000; ++number) {
        root.make(fmt::format("many/{}: x", number));
    }
    std::set<std::string> found;
    const auto walk = files->enumeratorAtPath("/");
    while (const auto entry = walk->nextObject()) {
        const std::string path(*entry);
        EXPECT_TRUE(found.insert(path).second) << path << " twice";
        if (path == "gone" || path == "swapped" || path.starts_with("many/")) {
            ASSERT_TRUE(files->removeItemAtPath("/" + path));
        }
        if (path == "swapped") {
            ASSERT_TRUE(files->createSymbolicLinkAtPath("/swapped", "elsewhere"));
        }
    }
    EXPECT_EQ(found.size(), 5 + 3000 + 2);
    EXPECT_FALSE(found.contains("gone/file") || found.contains("swapped/foreign"));
}

TEST_P(FileManagerTest, WalkGivesWhatIsLeftOfOuterLevelsOnTheWayBack) {
    std::vector<std::string> expected;
    for (std::string folder; folder.size() < 300; folder += "d/") {
        for (const char* name : {"a", "a/in", "z", "z/in", "d"}) {
            expected.push_back(folder + name);
        }
        root.make(folder + "a/in: x\n" + folder + "z/in: x\n" + folder + "d/");
    }
    EXPECT_THAT(rest(*files->enumeratorAtPath("/")), testing::UnorderedElementsAreArray(expected));
}

TEST_P(FileManagerTest, FolderMovedAwayLeadsNoWalkToItsNewNeighbours) {
    makeDeep("/", 150);
    std::string half = "/" + repeated("d/", 74);
    for (const char* name : {"a", "b", "c"}) {
        root.make(half + name + "/");
        host.make(fmt::format("outside/folder/{}/foreign: x", name));
    }
    // The walk has to go down in the entry listed first, so that the others are left when it comes back.
    const std::string first = files->contentsOfDirectoryAtPath(half)->front();
    if (first != "d") {
        ASSERT_TRUE(files->removeItemAtPath(half + first));
        ASSERT_TRUE(files->moveItemAtPath(half + "d", half + first));
    }
    const auto walk = files->enumeratorAtPath("/");
    for (auto path = walk->nextObject(); path->size() < 299; path = walk->nextObject()) {
    }
    std::filesystem::rename(root.path(half + first), host.path("outside/folder/d"));
    EXPECT_THAT(rest(*walk), testing::IsEmpty());
}

/// Removals of trees that somebody changes meanwhile.
class TreeRemovalTest : public FileManagerTest {
  protected:
    TreeRemovalTest() {
        root.make("keep/canary: alive\nkeep/deep/canary: alive\nkeep/foreign: x\nbusy/target/canary: x");
        root.make("busy/decoy -> /keep\nbusy/out -> " + host.path("outside"));
        target = Descriptor(::open(root.path("busy/target").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }

    /// Runs `act` for a while; after each time the canaries must be whole.
    template <class Act>
    void repeatedly(Act act) {
        for (const auto end = Clock::now() + 450ms; Clock::now() < end;) {
            const Descriptor again(::openat(target.get(), "canary", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
            act();
            ASSERT_EQ(host.content("outside/canary"), "alive");
            ASSERT_EQ(root.content("keep/canary") + root.content("keep/deep/canary"), "alivealive");
        }
    }
    /// What a swap kept alive goes the next time. Time, not a number of attempts: a quick adversary may keep
    /// a folder alive for many of them.
    void removeForGood(const char* from) {
        ASSERT_TRUE(files->moveItemAtPath(from, "/target"));
        for (const auto end = Clock::now() + 10s; root.exists("target") && Clock::now() < end;) {
            std::ignore = files->removeItemAtPath("/target");
        }
        ASSERT_FALSE(root.exists("target"));
    }

    Descriptor target;
    size_t removed = 0;
};

INSTANTIATE_TEST_SUITE_P(, TreeRemovalTest, bothWays);

TEST_P(TreeRemovalTest, FoundPathsSurviveFoldersSwappedForLinks) {
    const Swapper swapper(root.path("busy/target"), root.path("busy/decoy"));
    repeatedly([&] {
        const auto folder = *files->folderAtPath("/busy");
        auto found = rest(*files->enumeratorAtPath("/busy"));
        EXPECT_THAT(found, testing::Each(testing::Not(testing::EndsWith("/foreign"))));
        std::erase_if(found, [](const auto& path) { return !path.ends_with("/canary"); });
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
    const Swapper swapper(root.path("busy/target"), root.path("busy/decoy"));
    const Swapper outside(root.path("busy/target"), root.path("busy/out"));
    repeatedly([&] {
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
        makeDeep("/staging", 60);
        removeForGood("/staging");
        for (const char name : siblings) {
            ASSERT_EQ(host.content(std::string("outside/hole/") + name + "/canary"), "alive");
        }
    });
}

} // namespace tests
