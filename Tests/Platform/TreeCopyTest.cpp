// What a copy keeps, and a move to another file system, which is one.

#include "Tests/Platform/FileManagerFixture.h"
#include "Tests/Support/Program.h"

#include <csignal>

#include <sys/xattr.h>

using namespace platform;

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

std::string attributeOf(const std::string& path) {
    char note[16] = {};
    const ssize_t size = ::getxattr(path.c_str(), "user.note", note, sizeof note);
    return size < 0 ? "none" : std::string(note, static_cast<size_t>(size));
}

} // namespace

class TreeCopyTest : public FileManagerFixture {
  protected:
    void makeTree() const {
        const std::string tree = root.path("tree");
        const auto made = shell("mkdir " + tree + " && cd " + tree + R"( && mkdir inner && echo content >file
            echo x | tee inner/set inner/readOnly; ln -s /nowhere link; mkfifo pipe; truncate -s 1T hole
            printf island | dd of=hole bs=1M seek=1024 conv=notrunc; chown -h 501:20 file inner link pipe
            chmod 6751 inner/set; chmod 444 inner/readOnly; chmod 666 pipe; chmod 1555 inner
            touch -h -d '2009-02-13 23:31:30.123456789' file link pipe inner/set inner .)");
        ASSERT_EQ(made.status, 0) << made.output;
        ::setxattr((tree + "/file").c_str(), "user.note", "kept\0too", 8, 0);
        ::setxattr((tree + "/inner/readOnly").c_str(), "user.note", "", 0, 0);
    }

    /// All that a copy has to keep.
    static std::string traitsOf(const std::string& tree) {
        return shell("cd " + tree +
                     R"( && find . -printf '%p %M %U:%G %T@ %l\n' | sort; stat -c %s file hole inner/*
            test $(stat -c %b hole) -lt 1000 && echo sparse; cat file; tail -c +1073741825 hole | head -c 6)")
                   .output +
               attributeOf(tree + "/file") + attributeOf(tree + "/inner/readOnly");
    }

    const std::string other = otherFileSystem(host.path());
    TemporaryFolder second{other.empty() ? "/tmp" : other};
    FileManager secondFiles = *FileManager::atRoot(second.path(), GetParam());
};
OZ_BOTH_RESOLUTIONS(TreeCopyTest);

TEST_P(TreeCopyTest, CopyKeepsEverything) {
    makeTree();
    const std::string before = traitsOf(root.path("tree"));
    EXPECT_THAT(before, testing::HasSubstr("\nsparse\ncontent\nisland"));
    const mode_t oldMask = ::umask(0077);
    EXPECT_TRUE(files->copyItemAtPath("/tree", "/copy"));
    ::umask(oldMask);
    EXPECT_EQ(traitsOf(root.path("copy")), before);
    EXPECT_EQ(traitsOf(root.path("tree")), before);
}

TEST_P(TreeCopyTest, MoveAcrossFileSystemsKeepsEverything) {
    if (other.empty()) {
        GTEST_SKIP() << "the host has one file system only";
    }
    makeTree();
    const std::string before = traitsOf(root.path("tree"));
    const auto target = *secondFiles.itemAtPath("/moved");
    const auto moved = files->itemAtPath("/tree")->moveTo(target);
    if (!moved && moved.error() == std::errc::not_supported) {
        GTEST_SKIP() << "the other file system has no extended attributes";
    }
    EXPECT_TRUE(moved);
    EXPECT_FALSE(root.exists("tree"));
    EXPECT_EQ(traitsOf(second.path("moved")), before);
    root.make("tree/");
    EXPECT_EQ(target.moveTo(*files->itemAtPath("/tree")).error(), std::errc::file_exists);
    EXPECT_EQ(traitsOf(second.path("moved")), before);
}

TEST_P(TreeCopyTest, FailedMoveLeavesNothingAndTheSourceWhole) {
    if (other.empty()) {
        GTEST_SKIP() << "the host has one file system only";
    }
    root.make("tree/a/small: x\ntree/b/large: " + std::string(100000, 'x') + "\ntree/z/small: x");
    const auto before = host.listing();
    const auto oldAction = ::signal(SIGXFSZ, SIG_IGN);
    {
        const LoweredLimit smallFiles(RLIMIT_FSIZE, 5000);
        const auto moved = files->itemAtPath("/tree")->moveTo(*secondFiles.itemAtPath("/moved"));
        EXPECT_EQ(moved.error(), std::errc::file_too_large);
    }
    ::signal(SIGXFSZ, oldAction);
    EXPECT_EQ(host.listing(), before);
    EXPECT_THAT(second.listing(), testing::IsEmpty());
}

} // namespace tests
