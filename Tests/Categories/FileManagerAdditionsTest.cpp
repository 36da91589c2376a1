#include "Categories/Files.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

struct Tree {
    Tree() {
        folder.make(
            "full/one: 12345\nfull/sub/two: 123\nfull/link -> sub/two\ntofull -> full\ndangling -> /nothing\n"
            "etc/passwd: nobody:*:-2:-2::/:/bin/false");
    }
    tests::TemporaryFolder folder;
    platform::FileManager manager = *platform::FileManager::atRoot(folder.path());
};

} // namespace

TEST(FileManagerAdditions, SizesAddUpWithoutFollowingLinks) {
    Tree tree;
    const auto own = [&](const char* path) { return tree.manager.attributesOfItemAtPath(path)->size; };
    EXPECT_EQ(sizeOfItemAtPath(tree.manager, "/full/one"), 5);
    EXPECT_EQ(sizeOfItemAtPath(tree.manager, "/full"), 8 + own("/full/link") + own("/full/sub"));
    EXPECT_EQ(sizeOfItemAtPath(tree.manager, "/tofull"), own("/tofull"));
    EXPECT_EQ(sizeOfItemAtPath(tree.manager, "/missing"), 0);
}

TEST(FileManagerAdditions, ALinkExistsForItselfOrForItsTarget) {
    Tree tree;
    bool isDirectory = false;
    EXPECT_TRUE(fileExistsAtPath(tree.manager, "/tofull", &isDirectory, TraverseLinks::yes) && isDirectory);
    EXPECT_TRUE(fileExistsAtPath(tree.manager, "/tofull", &isDirectory, TraverseLinks::no) && !isDirectory);
    EXPECT_FALSE(fileExistsAtPath(tree.manager, "/dangling", nullptr, TraverseLinks::yes));
    EXPECT_TRUE(fileExistsAtPath(tree.manager, "/dangling", nullptr, TraverseLinks::no));
    isDirectory = true;
    EXPECT_FALSE(fileExistsAtPath(tree.manager, std::nullopt, &isDirectory, TraverseLinks::no));
    EXPECT_FALSE(isDirectory);
}

TEST(FileManagerAdditions, RemovalTakesTheTargetOnlyWhenToldTo) {
    Tree tree;
    EXPECT_FALSE(removeItemAtPath(tree.manager, "/dangling", TraverseLinks::yes));
    EXPECT_TRUE(fileExistsAtPath(tree.manager, "/dangling", nullptr, TraverseLinks::no))
        << "its target did not go";
    EXPECT_TRUE(removeItemAtPath(tree.manager, "/dangling", TraverseLinks::no));
    EXPECT_TRUE(removeItemAtPath(tree.manager, "/tofull", TraverseLinks::yes));
    EXPECT_FALSE(tree.folder.exists("full") || tree.folder.exists("tofull"));
}

TEST(FileManagerAdditions, OwnersAreTheDevicesOwnAccounts) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give files away";
    }
    Tree tree;
    tree.folder.make("etc/group: staff:*:20:root");
    ASSERT_TRUE(setOwnerOfItemAtPath(tree.manager, "/full/one", "mobile", "wheel"));
    EXPECT_EQ(tree.manager.attributesOfItemAtPath("/full/one")->owner, 501);
    EXPECT_EQ(tree.manager.attributesOfItemAtPath("/full/one")->group, 0);
    ASSERT_TRUE(setOwnerOfItemAtPath(tree.manager, "/full/one", std::nullopt, "staff"));
    EXPECT_EQ(tree.manager.attributesOfItemAtPath("/full/one")->owner, 501);
    EXPECT_EQ(tree.manager.attributesOfItemAtPath("/full/one")->group, 20);
    EXPECT_FALSE(setOwnerOfItemAtPath(tree.manager, "/full/one", "stranger", "wheel"));
    EXPECT_EQ(tree.manager.attributesOfItemAtPath("/full/one")->group, 20);
}
