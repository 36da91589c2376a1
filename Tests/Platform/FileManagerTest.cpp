// What takes deep, wide or changing trees. Tests/Scenarios/Platform tells the rest.

#include "Tests/Platform/FileManagerFixture.h"

#include <climits>
#include <filesystem>
#include <set>

#include <fmt/format.h>

using namespace platform;
using testing::ElementsAre;

namespace tests {

namespace {

std::vector<std::string> rest(DirectoryEnumerator& walk) {
    std::vector<std::string> paths;
    while (const auto path = walk.nextObject()) {
        paths.emplace_back(*path);
    }
    return paths;
}

std::string repeated(std::string_view part, size_t times) {
    std::string text;
    for (; times > 0; --times) {
        text += part;
    }
    return text;
}

} // namespace

class FileManagerTest : public FileManagerFixture {};
OZ_BOTH_RESOLUTIONS(FileManagerTest);

TEST_P(FileManagerTest, PathsMayBeLongerThanTheSystemTakes) {
    const std::string path = repeated("/d", 3000);
    ASSERT_GT(path.size(), size_t{PATH_MAX});
    makeDeepFolders(files->rootDescriptor(), 3000);
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
    makeDeepFolders((*files->folderAtPath("/less"))->descriptor(), 3000);
    makeDeepFolders(files->rootDescriptor(), 20000);
    const LoweredLimit fewDescriptors(RLIMIT_NOFILE, 128);
    ASSERT_TRUE(files->copyItemAtPath("/less", "/copy"));
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
    makeDeepFolders(files->rootDescriptor(), 150);
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

} // namespace tests
