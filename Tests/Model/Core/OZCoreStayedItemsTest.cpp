// What a run tells of items that it could not remove, rename or restore.

#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"
#include "Tests/Support/Mounts.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using tests::EngineFixture;

namespace {

constexpr std::string_view heading = "\nItems that stayed\n#################\n\n";
constexpr auto archives = "/var/mobile/Media/ApplicationArchives";

struct Case {
    const char* name;
    OZCoreMode mode;
    // On the folder that nothing can be written to.
    const char* readOnly;
    void (*run)(EngineFixture&, OZCoreMode);
    // The line that is told, without its ending, and the paths of the log's last section, sorted.
    const char* told;
    std::vector<std::string> stayed;
    uint64_t fileCount;
};

void cleanTemporaryFiles(EngineFixture& engine, OZCoreMode mode) {
    engine.clean({cleanupstep::tempFiles}, mode);
}

void cleanFileTypes(EngineFixture& engine, OZCoreMode mode) {
    engine.clean({cleanupstep::fileTypeCleanup}, mode);
}

void restore(EngineFixture& engine, OZCoreMode /*mode*/) {
    engine.core->backup(BackupAction::restore);
}

void purge(EngineFixture& engine, OZCoreMode /*mode*/) {
    engine.core->backup(BackupAction::remove);
}

void cleanRelativeFolder(EngineFixture& engine, OZCoreMode mode) {
    engine.clean({cleanupstep::cacheFiles}, mode);
}

const Case cases[] = {
    {"a folder stays for what stays in it",
     OZCoreMode::clean,
     "/var/mobile/Media/ApplicationArchives/app/ro",
     cleanTemporaryFiles,
     "4 of 7 items stayed: Read-only file system.",
     {"/app", "/app/ro", "/app/ro/1", "/app/ro/2"},
     7},
    {"a folder that cannot be renamed stays with all in it",
     OZCoreMode::test,
     archives,
     cleanTemporaryFiles,
     "7 of 7 items stayed: Read-only file system.",
     {"/app", "/app/gone", "/app/ro", "/app/ro/1", "/app/ro/2", "/ok", "/ok/file"},
     7},
    {"an analysis tries nothing", OZCoreMode::analyze, archives, cleanTemporaryFiles, "", {}, 7},
    {"files that are counted when they are gone",
     OZCoreMode::clean,
     "/d",
     cleanFileTypes,
     "2 of 3 items stayed: Read-only file system.",
     {"/d/a.log", "/d/b.log"},
     1},
    {"the same, with their backups",
     OZCoreMode::test,
     "/d",
     cleanFileTypes,
     "2 of 3 items stayed: Read-only file system.",
     {"/d/a.log", "/d/b.log"},
     1},
    {"a restore",
     OZCoreMode::clean,
     "/d",
     restore,
     "1 of 2 items stayed: Read-only file system.",
     {"/d/x.OzvarineBackup"},
     1},
    {"a folder that counts as one item",
     OZCoreMode::clean,
     "/e/y.OzvarineBackup/ro",
     purge,
     "1 of 2 items stayed: Read-only file system.",
     {"/e/y.OzvarineBackup", "/e/y.OzvarineBackup/ro", "/e/y.OzvarineBackup/ro/f"},
     1},
    {"what gives way to a backup and cannot go",
     OZCoreMode::clean,
     "/e/y/mount",
     restore,
     "1 of 2 items stayed: Read-only file system.",
     {"/e/y.OzvarineBackup"},
     1},
    {"a path relative to a directory",
     OZCoreMode::clean,
     "/var/mobile/Library/Caches/Snapshots",
     cleanRelativeFolder,
     "1 of 1 items stayed: Read-only file system.",
     {"/var/mobile/Library/Caches/Snapshots/s"},
     1},
};

// The paths without the folder that most of the cases are about, sorted, one a line.
std::string pathsOf(const std::string& section) {
    std::vector<std::string> paths;
    constexpr std::string_view reason = "Read-only file system: ";
    for (size_t at = section.find(reason); at != std::string::npos; at = section.find(reason, at + 1)) {
        const size_t start = at + reason.size();
        std::string path = section.substr(start, section.find("\n\n", start) - start);
        paths.push_back(path.starts_with(archives) ? path.substr(std::strlen(archives)) : path);
    }
    std::ranges::sort(paths);
    std::string text;
    for (const auto& path : paths) {
        text += path + "\n";
    }
    return text;
}

} // namespace

TEST(StayedItems, AreToldInOneLineAndListedBelowTheLog) {
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const auto outcome = tests::inMountNamespace([&row] {
            EngineFixture engine;
            const std::string base = archives;
            engine.addFiles({base + "/ok/file", base + "/app/ro/1", base + "/app/ro/2", base + "/app/gone",
                             "/d/a.log", "/d/b.log", "/c.log", "/d/x.OzvarineBackup",
                             "/e/y.OzvarineBackup/ro/f", "/e/y/mount/g",
                             "/var/mobile/Library/Caches/Snapshots/s"});
            tests::makeReadOnly(engine.device.hostPath(row.readOnly));
            std::string told;
            engine.device.device().warnings().setReceiver([&](const auto& line) { told += line + "\n"; });
            row.run(engine, row.mode);
            const std::string log = engine.log();
            const size_t section = std::min(log.find(heading), log.size());
            const auto before = tests::pathsNamedBy(log.substr(0, section));
            return told + "counted " + std::to_string(engine.core->fileCount()) + ", logged " +
                   std::to_string(before.size()) + "\n" + pathsOf(log.substr(section));
        });
        if (!outcome) {
            GTEST_SKIP() << "needs a namespace to mount in";
        }
        std::string expected = *row.told == '\0' ? "" : std::string(row.told) + "\n";
        expected +=
            "counted " + std::to_string(row.fileCount) + ", logged " + std::to_string(row.fileCount) + "\n";
        for (const auto& path : row.stayed) {
            expected += path + "\n";
        }
        EXPECT_EQ(*outcome, expected);
    }
}

TEST(StayedItems, WhatIsGoneHasNotStayed) {
    for (const auto mode : tests::allModes) {
        EngineFixture engine;
        engine.addFiles({"/file"});
        engine.device.addLink("/link", "link");
        engine.enter(mode);
        const CleanupRun::Paths paths = {"/missing", "/missing/x", "/file/x", "/link/x"};
        engine.run().quickDel(paths);
        engine.run().quickDelLang(paths);
        engine.run().quickDel(
            engine.run().tree().directEntries("/")->withNames({"missing/x", "file/x", "link/x"}));
        EXPECT_TRUE(engine.core->stayedItems().empty());
    }
}

TEST(StayedItems, AreListedOnceAndWithinBounds) {
    const auto because = [](int reason) { return std::error_code(reason, std::system_category()); };
    StayedItems items;
    EXPECT_EQ(items.sentence(5), std::nullopt);
    EXPECT_EQ(items.section(), "");
    items.add("/a", because(EACCES), StayedItem::counted);
    items.add("/a", because(EACCES), StayedItem::uncounted);
    items.add("/b/c", because(EROFS), StayedItem::part);
    items.add("/b", because(EROFS), StayedItem::uncounted);
    items.add("/gone", because(ENOENT), StayedItem::counted);
    EXPECT_EQ(items.sentence(5), "2 of 6 items stayed, most often for this reason: Permission denied.");
    EXPECT_EQ(items.section(), std::string(heading) +
                                   "Permission denied: /a\n\nRead-only file system: /b/c\n\n"
                                   "Read-only file system: /b\n\n");
    for (size_t number = 0; number < StayedItems::mostPaths; ++number) {
        items.add("/" + std::to_string(number), because(EROFS), StayedItem::counted);
    }
    EXPECT_THAT(items.section(), testing::EndsWith("\n\n... and 3 more\n\n"));
    items.clear();
    items.add("/" + std::string(StayedItems::mostPathBytes, 'x'), because(EROFS), StayedItem::counted);
    EXPECT_EQ(items.section(), std::string(heading) + "... and 1 more\n\n");
    EXPECT_EQ(items.sentence(1), "1 of 1 items stayed: Read-only file system.");
}
