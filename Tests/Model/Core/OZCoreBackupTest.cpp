// Backups of test runs: what a restore gives back, and what it does not.

#include "Tests/Model/Core/EngineTest.h"

#include <map>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/// All that a restore has to give back of one item.
using Item = std::tuple<mode_t, uid_t, gid_t, time_t, long, std::string>;

class Backups : public EngineTest {
  protected:
    [[nodiscard]] std::map<std::string, Item> items() const {
        std::map<std::string, Item> items;
        for (const auto& entry : fs::recursive_directory_iterator(temporary.hostPath("/d"))) {
            struct stat status {};
            EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
            const bool isFolder = entry.is_directory() && !entry.is_symlink();
            const std::string path =
                "/d/" + entry.path().lexically_relative(temporary.hostPath("/d")).string();
            std::string content;
            if (entry.is_symlink()) {
                content = fs::read_symlink(entry).string();
            } else if (!isFolder) {
                content = temporary.contents(path);
            }
            // A folder's own date tells of the renames in it.
            items[path] = {status.st_mode,
                           status.st_uid,
                           status.st_gid,
                           isFolder ? 0 : status.st_mtim.tv_sec,
                           isFolder ? 0 : status.st_mtim.tv_nsec,
                           content};
        }
        return items;
    }

    void addItems() {
        addFiles({"/d/file", "/d/folder/sub/\xff\n name", "/d/folder/x.OzvarineBackup.txt", "/d/kept"});
        addFiles({"/d/empty"}, "");
        temporary.addLink("/d/folder/link", "/d/kept");
        fs::create_directory(temporary.hostPath("/d/folder/empty folder"));
        for (const char* path : {"/d/file", "/d/folder", "/d/folder/sub/\xff\n name"}) {
            const auto hostPath = temporary.hostPath(path);
            ASSERT_EQ(::chown(hostPath.c_str(), 501, 20), 0);
            ASSERT_EQ(::chmod(hostPath.c_str(), 04751), 0);
            const timespec times[] = {{.tv_sec = 1, .tv_nsec = 2},
                                      {.tv_sec = 1000000000, .tv_nsec = 123456789}};
            ASSERT_EQ(::utimensat(AT_FDCWD, hostPath.c_str(), times, 0), 0);
        }
    }
};

} // namespace

TEST_F(Backups, RestoreGivesEveryItemBack) {
    addItems();
    const auto before = items();
    auto& core = engine(OZCoreMode::test);
    core.run().delr({"/d/file", "/d/folder", "/d/empty", "/d/missing"});
    EXPECT_NE(items(), before);

    core.backup(BackupAction::restore);
    EXPECT_EQ(items(), before);
    EXPECT_EQ(core.fileCount(), 3);
    EXPECT_FALSE(core.isRunning());
    EXPECT_FALSE(core.freedSpaceString());
    EXPECT_THAT(log(), StartsWith("##################\n# RESTORED FILES #\n##################\n\nDate: "));
    EXPECT_THAT(log(), Not(HasSubstr("size")));
    EXPECT_THAT(loggedPaths(), testing::UnorderedElementsAre("/d/file", "/d/folder", "/d/empty"));

    core.backup(BackupAction::restore);
    EXPECT_EQ(items(), before);
    EXPECT_EQ(core.fileCount(), 0);
}

TEST_F(Backups, WhatStandsInTheOldPlaceGivesWay) {
    addFiles({"/d/file.OzvarineBackup", "/d/folder.OzvarineBackup/old"}, "old");
    temporary.addLink("/d/link.OzvarineBackup", "kept");
    addFiles({"/d/file", "/d/folder/new", "/d/link/new", "/d/kept"}, "new");
    auto& core = engine();
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 3);
    EXPECT_EQ(tree(), (Tree{"/d/file", "/d/folder/old", "/d/link", "/d/kept"}));
    EXPECT_EQ(temporary.contents("/d/file"), "old");
    EXPECT_EQ(fs::read_symlink(temporary.hostPath("/d/link")), "kept");
    EXPECT_EQ(temporary.contents("/d/kept"), "new");
}

TEST_F(Backups, LinkInTheOldPlaceIsReplacedAndItsTargetStays) {
    addFiles({"/d/file.OzvarineBackup", "/outside/kept"});
    temporary.addLink("/d/file", "/outside");
    engine().backup(BackupAction::restore);
    EXPECT_EQ(tree(), (Tree{"/d/file", "/outside/kept"}));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(temporary.hostPath("/d/file"))));
}

TEST_F(Backups, BackupsInsideOfABackupComeBackWithTheSameCall) {
    addItems();
    addFiles({"/top"});
    const auto before = items();
    const Tree treeBefore = tree();
    auto& core = engine(OZCoreMode::test);
    core.run().del(CleanupRun::Paths{"/top", "/d/folder/sub/\xff\n name"});
    core.run().delr(CleanupRun::Paths{"/d/folder/sub", "/d/empty", "/d/folder", "/d"});
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 6);
    EXPECT_EQ(tree(), treeBefore);
    EXPECT_EQ(items(), before);
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 0);
}

TEST_F(Backups, WhatGivesWayTakesTheBackupsInsideOfItAlong) {
    addFiles({"/d/folder.OzvarineBackup/x.OzvarineBackup"}, "old");
    addFiles({"/d/folder/y.OzvarineBackup", "/d/folder/x"}, "new");
    auto& core = engine();
    core.backup(BackupAction::restore);
    EXPECT_EQ(tree(), (Tree{"/d/folder/x"}));
    EXPECT_EQ(temporary.contents("/d/folder/x"), "old");
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 0);
}

TEST_F(Backups, InterruptedRestoreEndsInTheSameTreeWhenItIsRunAgain) {
    const Paths backups = {"/d/a.OzvarineBackup", "/d/b.OzvarineBackup", "/d/c.OzvarineBackup/x"};
    addFiles(backups, "old");
    addFiles({"/d/a", "/d/b", "/d/c/new", "/d/c/other"}, "new");
    // As it is left by a restore that was killed between removing and moving, or while removing.
    fs::rename(temporary.hostPath("/d/a.OzvarineBackup"), temporary.hostPath("/d/a"));
    fs::remove(temporary.hostPath("/d/b"));
    fs::remove(temporary.hostPath("/d/c/new"));
    auto& core = engine();
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 2);
    EXPECT_EQ(tree(), (Tree{"/d/a", "/d/b", "/d/c/x"}));
}

TEST_F(Backups, NameThatIsTheExtensionAloneIsNobodysBackup) {
    addFiles({"/d/.OzvarineBackup", "/d/OzvarineBackup", "/d/x.OzvarineBackup.txt", "/d/x.ozvarinebackup"});
    const Tree before = tree();
    auto& core = engine();
    core.backup(BackupAction::restore);
    EXPECT_EQ(core.fileCount(), 0);
    EXPECT_EQ(tree(), before);
}

TEST_F(Backups, RemovalTakesEachBackupForGood) {
    addFiles({"/d/file.OzvarineBackup", "/d/folder.OzvarineBackup/inner.OzvarineBackup", "/d/kept",
              "/outside/kept"});
    temporary.addLink("/d/link.OzvarineBackup", "/outside");
    auto& core = engine(OZCoreMode::test);
    core.backup(BackupAction::remove);
    EXPECT_EQ(tree(), (Tree{"/d/kept", "/outside/kept"}));
    EXPECT_EQ(core.fileCount(), 3);
    EXPECT_TRUE(core.freedSpaceString());
    EXPECT_THAT(log(), StartsWith("#################\n# DELETED FILES #\n#################\n\nDate: "));
    EXPECT_THAT(log(), HasSubstr("Number of files: 3\nTotal size: "));
    core.backup(BackupAction::remove);
    EXPECT_EQ(core.fileCount(), 0);
}
