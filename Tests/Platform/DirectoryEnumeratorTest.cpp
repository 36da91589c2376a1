#include "Tests/Platform/FileManagerFixture.h"

#include <filesystem>
#include <map>
#include <set>

using namespace platform;
using testing::UnorderedElementsAre;

namespace tests {

namespace {

std::vector<std::string> rest(DirectoryEnumerator& walk) {
    std::vector<std::string> paths;
    while (const auto path = walk.nextObject()) {
        paths.emplace_back(*path);
    }
    return paths;
}

} // namespace

class DirectoryEnumeratorTest : public FileManagerFixture {};
OZ_BOTH_RESOLUTIONS(DirectoryEnumeratorTest);

TEST_P(DirectoryEnumeratorTest, GivesFolderBeforeItsContentAndFollowsNoLink) {
    make(R"(top/a/one: 1
            top/a/two/three: 333
            top/b/
            top/link -> a
            top/out -> ../../outside
            top/pipe |
            through -> top)");
    const std::map<std::string, FileType> expected = {
        {"a", FileType::directory},         {"a/one", FileType::regular}, {"a/two", FileType::directory},
        {"a/two/three", FileType::regular}, {"b", FileType::directory},   {"link", FileType::symbolicLink},
        {"out", FileType::symbolicLink},    {"pipe", FileType::fifo}};
    for (const char* path : {"/top", "/top/", "/through"}) {
        std::map<std::string, FileType> found;
        const auto walk = files->enumeratorAtPath(path);
        while (const auto entry = walk->nextObject()) {
            const size_t slash = entry->rfind('/');
            EXPECT_TRUE(slash == std::string_view::npos ||
                        found.contains(std::string(entry->substr(0, slash))))
                << *entry;
            EXPECT_TRUE(found.emplace(*entry, walk->fileType()).second) << *entry << " twice";
            EXPECT_EQ(walk->fileAttributes()->type, walk->fileType()) << *entry;
        }
        EXPECT_EQ(found, expected) << path;
        EXPECT_EQ(errorOf(walk->fileAttributes()), ENOENT);
        EXPECT_EQ(walk->nextObject(), std::nullopt);
    }
    EXPECT_EQ(files->enumeratorAtPath("/top/a/one"), nullptr);
    EXPECT_EQ(files->enumeratorAtPath("/nothing"), nullptr);
}

TEST_P(DirectoryEnumeratorTest, SkipsWhatItIsToldToSkip) {
    make("a/in/deep: x\nb/in/deep: x\nfile: x");
    std::vector<std::string> found;
    const auto walk = files->enumeratorAtPath("/");
    while (const auto entry = walk->nextObject()) {
        found.emplace_back(*entry);
        if (*entry == "a" || *entry == "b/in" || *entry == "file") {
            walk->skipDescendants();
        }
    }
    EXPECT_THAT(found, UnorderedElementsAre("a", "b", "b/in", "file"));
}

TEST_P(DirectoryEnumeratorTest, TreeMayChangeUnderTheWalk) {
    make("gone/file: x\nswapped/file: x\nkept/file: x\nelsewhere/foreign: x");
    for (int number = 0; number < 3000; ++number) {
        make("many/" + std::to_string(number) + ": x");
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
    EXPECT_FALSE(found.contains("gone/file"));
    EXPECT_FALSE(found.contains("swapped/foreign"));
}

TEST_P(DirectoryEnumeratorTest, WalksDeepTreesWithFewDescriptors) {
    constexpr size_t depth = 20000;
    makeDeepFolders(files->rootDescriptor(), depth);
    const LoweredLimit fewDescriptors(RLIMIT_NOFILE, 128);
    size_t count = 0;
    const auto walk = files->enumeratorAtPath("/");
    while (const auto entry = walk->nextObject()) {
        ++count;
        ASSERT_EQ(entry->size(), 2 * count - 1);
    }
    EXPECT_EQ(count, depth);
    EXPECT_TRUE(files->removeItemAtPath("/d"));
    EXPECT_FALSE(exists("/d"));
}

TEST_P(DirectoryEnumeratorTest, GivesWhatIsLeftOfOuterLevelsOnTheWayBack) {
    std::string folder;
    std::vector<std::string> expected;
    for (int level = 0; level < 150; ++level) {
        for (const char* name : {"a", "z"}) {
            make(folder + name + "/in: x");
            expected.insert(expected.end(), {folder + name, folder + name + "/in"});
        }
        make(folder + "d/");
        expected.push_back(folder + "d");
        folder += "d/";
    }
    const auto walk = files->enumeratorAtPath("/");
    EXPECT_THAT(rest(*walk), testing::UnorderedElementsAreArray(expected));
}

TEST_P(DirectoryEnumeratorTest, FolderMovedAwayLeadsNobodyToItsNewNeighbours) {
    makeDeepFolders(files->rootDescriptor(), 150);
    std::string half = "/";
    for (int level = 0; level < 74; ++level) {
        half += "d/";
    }
    for (const char* name : {"a", "b", "c"}) {
        make(half + name + "/");
        host.make("outside/folder/" + std::string(name) + "/foreign: x");
    }
    // The walk has to go down in the entry listed first, so that the others are left when it comes back.
    if (const std::string first = files->contentsOfDirectoryAtPath(half)->front(); first != "d") {
        ASSERT_TRUE(files->removeItemAtPath(half + first));
        ASSERT_TRUE(files->moveItemAtPath(half + "d", half + first));
        half += first;
    } else {
        half += "d";
    }
    const auto walk = files->enumeratorAtPath("/");
    for (auto path = walk->nextObject(); path->size() < 299; path = walk->nextObject()) {
    }
    std::filesystem::rename(host.path("root" + half), host.path("outside/folder/d"));
    EXPECT_THAT(rest(*walk), testing::IsEmpty());
}

TEST_P(DirectoryEnumeratorTest, UnreadableFoldersAreGivenAndNotEntered) {
    make("closed/file: x\nunsearchable/file: x\nopen/file: x");
    ASSERT_EQ(::chmod(host.path("root/closed").c_str(), 0), 0);
    ASSERT_EQ(::chmod(host.path("root/unsearchable").c_str(), 0444), 0);
    if (!giveToUser("/closed", 501) || !giveToUser("/unsearchable", 501)) {
        GTEST_SKIP() << "needs real root to become another user";
    }
    const auto walk = files->enumeratorAtPath("/");
    EXPECT_EQ(rest(*walk).size(), 6) << "root reads everything";
    EXPECT_TRUE(holdsForUser(501, [&] {
        const auto found = rest(*files->enumeratorAtPath("/"));
        const std::set<std::string> paths(found.begin(), found.end());
        return paths ==
               std::set<std::string>{"closed", "unsearchable", "unsearchable/file", "open", "open/file"};
    }));
}

TEST_P(DirectoryEnumeratorTest, WideFolder) {
    constexpr size_t width = 20000;
    make("wide/");
    for (size_t number = 0; number < width; ++number) {
        ASSERT_TRUE(files->createFileAtPath("/wide/file with a longer name " + std::to_string(number)));
    }
    EXPECT_EQ(rest(*files->enumeratorAtPath("/wide")).size(), width);
    EXPECT_EQ(files->contentsOfDirectoryAtPath("/wide")->size(), width);
    EXPECT_TRUE(files->removeItemAtPath("/wide"));
    EXPECT_FALSE(exists("/wide"));
}

} // namespace tests
