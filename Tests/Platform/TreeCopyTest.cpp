#include "Platform/Files/TreeCopy.h"

#include "Tests/Platform/FileManagerFixture.h"

#include <algorithm>
#include <csignal>

#include <fcntl.h>
#include <sys/xattr.h>

using namespace platform;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace tests {

namespace {

struct stat statusOf(const std::string& path) {
    struct stat status = {};
    ::lstat(path.c_str(), &status);
    return status;
}

// A folder for temporary ones on another file system than `path`; empty where the host has none.
std::string otherFileSystem(const std::string& path) {
    for (const char* folder : {"/dev/shm", "/run", "/var/tmp", "/tmp"}) {
        if (statusOf(folder).st_dev != statusOf(path).st_dev && ::access(folder, W_OK) == 0) {
            return folder;
        }
    }
    return {};
}

constexpr timespec oldTime{.tv_sec = 1234567890, .tv_nsec = 123456789};

} // namespace

class TreeCopyTest : public FileManagerFixture {
  protected:
    void setTimes(const std::string& path) const {
        const timespec times[] = {oldTime, oldTime};
        ASSERT_EQ(::utimensat(AT_FDCWD, host.path("root" + path).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    void makeTree() const {
        make(R"(tree/file: content
                tree/inner/set: x
                tree/inner/readOnly: x
                tree/link -> /nowhere
                tree/pipe |
                tree/hole: x)");
        const std::string tree = host.path("root/tree");
        ASSERT_EQ(::truncate((tree + "/hole").c_str(), off_t{1} << 40), 0);
        const Descriptor hole(::open((tree + "/hole").c_str(), O_WRONLY | O_CLOEXEC));
        ASSERT_EQ(::pwrite(hole.get(), "island", 6, off_t{1} << 30), 6);
        if (::geteuid() == 0) {
            for (const char* name : {"/file", "/inner", "/link", "/pipe"}) {
                ASSERT_EQ(::lchown((tree + name).c_str(), 501, 20), 0);
            }
        }
        hasAttributes = ::setxattr((tree + "/file").c_str(), "user.note", "kept\0too", 8, 0) == 0 &&
                        ::setxattr((tree + "/inner/readOnly").c_str(), "user.note", "", 0, 0) == 0;
        ASSERT_EQ(::chmod((tree + "/inner/set").c_str(), 06751), 0);
        ASSERT_EQ(::chmod((tree + "/inner/readOnly").c_str(), 0444), 0);
        ASSERT_EQ(::chmod((tree + "/pipe").c_str(), 0666), 0);
        ASSERT_EQ(::chmod((tree + "/inner").c_str(), 01555), 0);
        for (const char* path :
             {"/tree/file", "/tree/inner/set", "/tree/link", "/tree/pipe", "/tree/inner", "/tree"}) {
            setTimes(path);
        }
    }

    void expectWholeTree(const std::string& tree, const std::vector<std::string>& listing) const {
        for (const char* name : {"", "/file", "/inner/set", "/link", "/pipe", "/inner"}) {
            const auto status = statusOf(tree + name);
            EXPECT_EQ(status.st_mtim.tv_sec, oldTime.tv_sec) << name;
            EXPECT_EQ(status.st_mtim.tv_nsec, oldTime.tv_nsec) << name;
        }
        EXPECT_LT(statusOf(tree + "/hole").st_blocks, 1000) << "the hole was filled";
        EXPECT_EQ(statusOf(tree + "/hole").st_size, off_t{1} << 40);
        char island[6] = {};
        const Descriptor hole(::open((tree + "/hole").c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(::pread(hole.get(), island, 6, off_t{1} << 30), 6);
        EXPECT_EQ(std::string(island, 6), "island");
        if (hasAttributes) {
            char note[16] = {};
            EXPECT_EQ(::getxattr((tree + "/file").c_str(), "user.note", note, sizeof note), 8);
            EXPECT_EQ(std::string(note, 8), std::string("kept\0too", 8));
            EXPECT_EQ(::getxattr((tree + "/inner/readOnly").c_str(), "user.note", note, sizeof note), 0);
        }
        EXPECT_FALSE(listing.empty());
    }

    // Each item of the tree in short, without what only a sparse file's terabyte of reading could tell.
    static std::vector<std::string> summary(const std::string& tree) {
        std::vector<std::string> items;
        for (const char* name :
             {"", "/file", "/inner", "/inner/set", "/inner/readOnly", "/link", "/pipe", "/hole"}) {
            const auto status = statusOf(tree + name);
            items.push_back(std::string(name) + " " + std::to_string(status.st_mode) + " " +
                            std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid) + " " +
                            (S_ISDIR(status.st_mode) ? "" : std::to_string(status.st_size)));
        }
        return items;
    }

    mutable bool hasAttributes = false;
};
OZ_BOTH_RESOLUTIONS(TreeCopyTest);

TEST_P(TreeCopyTest, CopyKeepsEverything) {
    makeTree();
    const auto before = summary(host.path("root/tree"));
    const mode_t oldMask = ::umask(0077);
    const auto copied = files->copyItemAtPath("/tree", "/copy");
    ::umask(oldMask);
    ASSERT_EQ(errorOf(copied), 0);
    EXPECT_EQ(summary(host.path("root/copy")), before);
    expectWholeTree(host.path("root/copy"), before);
    EXPECT_EQ(summary(host.path("root/tree")), before);
    EXPECT_EQ(content("/copy/file"), "content");
}

TEST_P(TreeCopyTest, MoveAcrossFileSystemsKeepsEverything) {
    const std::string other = otherFileSystem(host.path());
    if (other.empty()) {
        GTEST_SKIP() << "the host has one file system only";
    }
    const TemporaryFolder second(other);
    auto secondFiles = *FileManager::atRoot(second.path(), GetParam());
    makeTree();
    const auto before = summary(host.path("root/tree"));
    const auto source = *files->itemAtPath("/tree");
    const auto target = *secondFiles.itemAtPath("/moved");
    const auto moved = source.moveTo(target);
    if (errorOf(moved) == ENOTSUP) {
        GTEST_SKIP() << "the other file system has no extended attributes";
    }
    ASSERT_EQ(errorOf(moved), 0);
    EXPECT_FALSE(exists("/tree"));
    EXPECT_EQ(summary(second.path("moved")), before);
    expectWholeTree(second.path("moved"), before);
    EXPECT_EQ(second.content("moved/file"), "content");

    make("tree/");
    EXPECT_EQ(errorOf(target.moveTo(*files->itemAtPath("/tree"))), EEXIST);
    EXPECT_EQ(summary(second.path("moved")), before);
}

TEST_P(TreeCopyTest, FailedCopyLeavesNothingAndTheSourceWhole) {
    make("tree/a/small: x\ntree/b/large: " + std::string(100000, 'x') + "\ntree/z/small: x");
    const auto before = host.listing();
    const std::string other = otherFileSystem(host.path());
    const TemporaryFolder second(other.empty() ? "/tmp" : other);
    auto secondFiles = *FileManager::atRoot(second.path(), GetParam());
    const auto oldAction = ::signal(SIGXFSZ, SIG_IGN);
    {
        const LoweredLimit smallFiles(RLIMIT_FSIZE, 5000);
        EXPECT_EQ(errorOf(files->copyItemAtPath("/tree", "/copy")), EFBIG);
        EXPECT_EQ(errorOf(files->copyItemAtPath("/tree/b/large", "/copy")), EFBIG);
        if (!other.empty()) {
            EXPECT_EQ(errorOf(files->itemAtPath("/tree")->moveTo(*secondFiles.itemAtPath("/moved"))), EFBIG);
        }
    }
    ::signal(SIGXFSZ, oldAction);
    EXPECT_EQ(host.listing(), before);
    EXPECT_THAT(second.listing(), ElementsAre());
    EXPECT_EQ(errorOf(files->copyItemAtPath("/missing", "/copy")), ENOENT);
    EXPECT_EQ(errorOf(files->copyItemAtPath("/tree", "/missing/copy")), ENOENT);
}

TEST_P(TreeCopyTest, ExistingTargetIsRefused) {
    make("from/file: new\nfile: old\nfolder/\nlink -> missing\nsame == file");
    const auto before = host.listing();
    for (const char* target : {"/file", "/folder", "/folder/", "/link", "/from", "/from/file"}) {
        EXPECT_EQ(errorOf(files->moveItemAtPath("/from/file", target)), EEXIST) << target;
        EXPECT_EQ(errorOf(files->copyItemAtPath("/from/file", target)), EEXIST) << target;
    }
    EXPECT_EQ(errorOf(files->itemAtPath("/file")->rename("same")), EEXIST);
    EXPECT_EQ(errorOf(files->itemAtPath("/file")->rename("link")), EEXIST);
    EXPECT_EQ(host.listing(), before);
}

TEST_P(TreeCopyTest, FolderGoesNotIntoItself) {
    make("tree/file: x\ntree/in/file: x");
    const auto before = host.listing();
    for (const char* target : {"/tree/copy", "/tree/in/copy"}) {
        EXPECT_EQ(errorOf(files->moveItemAtPath("/tree", target)), EINVAL) << target;
        EXPECT_EQ(errorOf(files->copyItemAtPath("/tree", target)), EINVAL) << target;
    }
    EXPECT_EQ(host.listing(), before);
}

TEST_P(TreeCopyTest, DeepTreesNeedFewDescriptors) {
    makeDeepFolders(files->rootDescriptor(), 3000);
    const LoweredLimit fewDescriptors(RLIMIT_NOFILE, 128);
    ASSERT_EQ(errorOf(files->copyItemAtPath("/d", "/copy")), 0);
    size_t count = 0;
    const auto walk = files->enumeratorAtPath("/copy");
    while (walk->nextObject()) {
        ++count;
    }
    EXPECT_EQ(count, 2999);
}

TEST_P(TreeCopyTest, MoveTakesLinksAsTheyAre) {
    make("link -> /keep\nkeep/file: x\nto/");
    ASSERT_TRUE(files->moveItemAtPath("/link", "/to/link"));
    ASSERT_TRUE(files->copyItemAtPath("/to/link", "/copy"));
    EXPECT_EQ(*files->destinationOfSymbolicLinkAtPath("/to/link"), "/keep");
    EXPECT_EQ(*files->destinationOfSymbolicLinkAtPath("/copy"), "/keep");
    EXPECT_FALSE(exists("/link"));
}

} // namespace tests
