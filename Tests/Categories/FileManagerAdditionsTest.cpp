#include "Categories/Files.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

class FileManagerAdditions : public testing::Test {
  protected:
    FileManagerAdditions() {
        folder.make(
            "full/one: 12345\nfull/sub/two: 123\nfull/link -> sub/two\ntofull -> full\n"
            "dangling -> /nothing\netc/passwd: nobody:*:-2:-2::/:/bin/false\netc/group: staff:*:20:root");
    }
    /// Whether an item is there, and "/" for a folder.
    std::string seen(std::optional<std::string_view> path, TraverseLinks traverse) {
        bool isFolder = !path;
        const bool isThere = fileExistsAtPath(files, path, &isFolder, traverse);
        return std::string(isThere ? "yes" : "no") + (isFolder ? "/" : "");
    }
    std::string ownerOfOne() {
        const auto attributes = files.attributesOfItemAtPath("/full/one");
        return std::to_string(attributes->owner) + ":" + std::to_string(attributes->group);
    }

    tests::TemporaryFolder folder;
    platform::FileManager files = *platform::FileManager::atRoot(folder.path());
};

TEST_F(FileManagerAdditions, sizesAddUpWithoutFollowingLinks) {
    const auto own = [&](const char* path) { return files.attributesOfItemAtPath(path)->size; };
    EXPECT_EQ(sizeOfItemAtPath(files, "/full/one"), 5);
    EXPECT_EQ(sizeOfItemAtPath(files, "/full"), 8 + own("/full/link") + own("/full/sub"));
    EXPECT_EQ(sizeOfItemAtPath(files, "/tofull"), own("/tofull"));
    EXPECT_EQ(sizeOfItemAtPath(files, "/missing"), 0);
}

TEST_F(FileManagerAdditions, aLinkIsThereForItselfOrForItsTargetAndSoItGoes) {
    using enum TraverseLinks;
    EXPECT_EQ(seen("/tofull", yes) + seen("/tofull", no), "yes/yes");
    EXPECT_EQ(seen("/dangling", yes) + seen("/dangling", no), "noyes");
    EXPECT_EQ(seen(std::nullopt, no), "no");
    EXPECT_FALSE(removeItemAtPath(files, "/dangling", yes));
    EXPECT_EQ(seen("/dangling", no), "yes") << "its target did not go";
    EXPECT_TRUE(removeItemAtPath(files, "/dangling", no));
    EXPECT_TRUE(removeItemAtPath(files, "/tofull", yes));
    EXPECT_FALSE(folder.exists("full") || folder.exists("tofull"));
}

TEST_F(FileManagerAdditions, ownersAreTheDevicesOwnAccounts) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give files away";
    }
    EXPECT_TRUE(setOwnerOfItemAtPath(files, "/full/one", "mobile", "wheel"));
    EXPECT_EQ(ownerOfOne(), "501:0");
    EXPECT_TRUE(setOwnerOfItemAtPath(files, "/full/one", std::nullopt, "staff"));
    EXPECT_EQ(ownerOfOne(), "501:20");
    EXPECT_FALSE(setOwnerOfItemAtPath(files, "/full/one", "stranger", "wheel"));
    EXPECT_EQ(ownerOfOne(), "501:20");
}
