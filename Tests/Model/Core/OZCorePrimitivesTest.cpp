#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using tests::EngineFixture;

namespace {

constexpr std::string_view backup = CleanupRun::backupExtension;

// What one call of a primitive leaves of "/f" (3 bytes), "/d" with two files of 2 bytes and a link, and "/l".
struct Case {
    const char* name;
    OZCoreMode mode;
    void (*call)(CleanupRun&);
    uint64_t fileCount;
    // Bytes of the files; a folder's own size depends on the file system and is left out by comparing ">=".
    uint64_t atLeastFreed;
    bool fileStays;
    bool folderStays;
};

void PrintTo(const Case& row, std::ostream* out) {
    *out << row.name;
}

const CleanupRun::Paths everything = {"/f", "/d", "/l", "/missing"};

// The sizes of a folder's entries at any depth, or of the file itself.
uint64_t sizesBelow(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) {
        return std::filesystem::file_size(path);
    }
    uint64_t sum = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
        struct stat status {};
        EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
        sum += static_cast<uint64_t>(status.st_size);
    }
    return sum;
}

class PrimitiveCounting : public testing::TestWithParam<Case> {};

} // namespace

TEST_P(PrimitiveCounting, DependsOnModeAndType) {
    const Case& row = GetParam();
    EngineFixture engine;
    engine.device.addFile("/f", "abc");
    engine.device.addFile("/d/one", "12");
    engine.device.addFile("/d/sub/two", "34");
    engine.device.addLink("/d/link", "/f");
    engine.device.addLink("/l", "/f");
    engine.enter(row.mode);
    row.call(engine.run());
    EXPECT_EQ(engine.core->fileCount(), row.fileCount);
    EXPECT_GE(engine.core->freedSpace(), row.atLeastFreed);
    EXPECT_EQ(engine.exists("/f"), row.fileStays);
    EXPECT_EQ(engine.exists("/d/sub/two"), row.folderStays);
    EXPECT_EQ(engine.loggedPaths().size(), row.fileCount);
    if (row.mode == OZCoreMode::test) {
        EXPECT_EQ(engine.exists(std::string("/f").append(backup)), !row.fileStays);
        EXPECT_EQ(engine.exists(std::string("/d").append(backup) + "/sub/two"), !row.folderStays);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, PrimitiveCounting,
    testing::Values(
        Case{"del cleans", OZCoreMode::clean, [](CleanupRun& run) { run.del(everything); }, 1, 0, false,
             true},
        Case{"del analyzes", OZCoreMode::analyze, [](CleanupRun& run) { run.del(everything); }, 1, 3, true,
             true},
        Case{"del tests", OZCoreMode::test, [](CleanupRun& run) { run.del(everything); }, 1, 3, false, true},
        // The folder, its sub-folder, two files and a link, beside the file; a named link is left alone.
        Case{"delr cleans", OZCoreMode::clean, [](CleanupRun& run) { run.delr(everything); }, 6, 0, false,
             false},
        Case{"delr analyzes", OZCoreMode::analyze, [](CleanupRun& run) { run.delr(everything); }, 6, 7, true,
             true},
        Case{"delr tests", OZCoreMode::test, [](CleanupRun& run) { run.delr(everything); }, 6, 7, false,
             false},
        // No type is asked: the link goes, too, and a folder is one item.
        Case{"quickDel cleans", OZCoreMode::clean, [](CleanupRun& run) { run.quickDel(everything); }, 3, 0,
             false, false},
        Case{"quickDel analyzes", OZCoreMode::analyze, [](CleanupRun& run) { run.quickDel(everything); }, 3,
             3, true, true},
        Case{"quickDel tests", OZCoreMode::test, [](CleanupRun& run) { run.quickDel(everything); }, 3, 3,
             false, false},
        // In an analysis alone, what is missing counts.
        Case{"quickDelLang cleans", OZCoreMode::clean,
             [](CleanupRun& run) {
                 run.quickDelLang(CleanupRun::Paths{"/d", "/missing", "/no/parent"});
             },
             1, 0, true, false},
        Case{"quickDelLang analyzes", OZCoreMode::analyze,
             [](CleanupRun& run) {
                 run.quickDelLang(CleanupRun::Paths{"/d", "/missing", "/no/parent"});
             },
             3, 4, true, true},
        Case{"quickDelLang tests", OZCoreMode::test,
             [](CleanupRun& run) {
                 run.quickDelLang(CleanupRun::Paths{"/d", "/missing", "/no/parent"});
             },
             1, 4, true, false}),
    [](const auto& row) {
        std::string name = row.param.name;
        std::ranges::replace(name, ' ', '_');
        return name;
    });

TEST(OZCorePrimitives, ATestRunSumsWhatAFormerBackupHeldBeforeItGivesWay) {
    // A folder's own order decides which of two names comes first.
    for (int number = 0; number < 20; ++number) {
        EngineFixture engine;
        const std::string folder = "/" + std::to_string(number);
        engine.addFiles({folder + "/a/1", folder + "/a/2", folder + "/a.OzvarineBackup/1",
                         folder + "/a.OzvarineBackup/sub/2"});
        const uint64_t expected = sizesBelow(engine.device.hostPath(folder + "/a")) +
                                  sizesBelow(engine.device.hostPath(folder + "/a.OzvarineBackup"));
        engine.enter(OZCoreMode::test);
        engine.run().delFolderContents(folder, OnlyFiles::no);
        const bool wasFirst = engine.loggedPaths().front().contains("Backup");
        EXPECT_EQ(engine.core->fileCount(), wasFirst ? 7 : 6);
        if (wasFirst) {
            EXPECT_EQ(engine.core->freedSpace(), expected);
        }
    }
}

TEST(OZCorePrimitives, ATestRunSumsEachEntryThoughItGetsAnotherNameLater) {
    const std::vector<CleanupRun::Paths> lists = {
        {"/d/a.OzvarineBackup", "/d/a.OzvarineBackup/sub"},
        {"/d/a.OzvarineBackup", "/d/b", "/d/a.OzvarineBackup/sub/er"},
        {"/d/b", "/d/b.OzvarineBackup/sub"},
        {"/d/b", "/d/b.OzvarineBackup", "/d/b.OzvarineBackup/sub/1"},
    };
    for (const auto& list : lists) {
        EngineFixture engine;
        engine.addFiles({"/d/a.OzvarineBackup/sub/1", "/d/a.OzvarineBackup/sub/er/2", "/d/b/sub/1"});
        for (int number = 0; number < 200; ++number) {
            engine.addFiles({"/d/b/sub/many" + std::to_string(number)});
        }
        uint64_t expected = 0;
        for (const auto& path : list) {
            // By the name that it has before the run.
            const bool isNew = path.starts_with("/d/b.");
            expected += sizesBelow(engine.device.hostPath(isNew ? "/d/b" + path.substr(19) : path));
        }
        engine.enter(OZCoreMode::test);
        engine.run().delr(list);
        EXPECT_EQ(engine.core->freedSpace(), expected) << testing::PrintToString(list);
    }
}

TEST(OZCorePrimitives, TestModeReplacesAnOldBackupAndLeavesBackupsWhereTheyAre) {
    using Primitive = void (*)(CleanupRun&, const CleanupRun::Paths&);
    const Primitive primitives[] = {[](CleanupRun& run, auto& paths) { run.del(paths); },
                                    [](CleanupRun& run, auto& paths) { run.delr(paths); },
                                    [](CleanupRun& run, auto& paths) { run.quickDel(paths); },
                                    [](CleanupRun& run, auto& paths) { run.quickDelLang(paths); }};
    for (const auto primitive : primitives) {
        EngineFixture engine;
        engine.device.addFile("/f", "new");
        engine.device.addFile("/f.OzvarineBackup", "old");
        engine.enter(OZCoreMode::test);
        primitive(engine.run(), {"/f.OzvarineBackup"});
        EXPECT_EQ(engine.tree(), (std::set<std::string>{"/f", "/f.OzvarineBackup"}));
        EXPECT_EQ(engine.core->fileCount(), 1U);
        primitive(engine.run(), {"/f"});
        EXPECT_EQ(engine.tree(), (std::set<std::string>{"/f.OzvarineBackup"}));
        EXPECT_EQ(engine.device.contents("/f.OzvarineBackup"), "new");
        EXPECT_EQ(engine.core->fileCount(), 2U);
    }
}

TEST(OZCorePrimitives, ALaterStepSeesAnItemAgainInAnalysisAlone) {
    for (const auto& [mode, count] : {std::pair{OZCoreMode::analyze, 2U}, {OZCoreMode::test, 1U}}) {
        EngineFixture engine;
        engine.device.addFile("/f");
        engine.enter(mode);
        engine.run().del(CleanupRun::Paths{"/f"});
        engine.run().del(CleanupRun::Paths{"/f"});
        EXPECT_EQ(engine.core->fileCount(), count);
    }
}

TEST(OZCorePrimitives, PatternsAskTheEntrysName) {
    EngineFixture engine;
    for (const char* path :
         {"/p/logs.txt", "/p/catalog", "/p/log/deep", "/p/http_x", "/p/a.google.b", "/p/.flurry"}) {
        engine.device.addFile(path);
    }
    engine.enter(OZCoreMode::analyze);
    engine.run().delWithPattern("/p", "log", std::nullopt, ".txt", OnlyFiles::no);
    EXPECT_THAT(engine.loggedPaths(), ElementsAre("/p/logs.txt"));

    engine.enter(OZCoreMode::analyze);
    engine.run().delWithPattern("/p", "log", std::nullopt, std::nullopt, OnlyFiles::yes);
    EXPECT_THAT(engine.loggedPaths(), ElementsAre("/p/logs.txt"));

    engine.enter(OZCoreMode::analyze);
    constexpr std::string_view starts[] = {"http_"};
    constexpr std::string_view middles[] = {"google"};
    // Tried at the beginning of a name: ".txt" takes nothing, ".flu" the hidden file.
    constexpr std::string_view ends[] = {".txt", ".flu"};
    engine.run().delWithPatterns(
        "/p", {.startPatterns = starts, .middlePatterns = middles, .endPatterns = ends}, OnlyFiles::no);
    EXPECT_THAT(engine.loggedPaths(), UnorderedElementsAre("/p/http_x", "/p/a.google.b", "/p/.flurry"));
}

TEST(OZCorePrimitives, RecursiveDeletionSparesNamesAndFolders) {
    EngineFixture engine;
    for (const char* path : {"/t/sock", "/t/a/sock", "/t/a/my.blued.tmp", "/t/blued/x", "/t/y"}) {
        engine.device.addFile(path);
    }
    engine.device.addLink("/t/link", "/t/y");
    engine.enter(OZCoreMode::clean);
    constexpr std::string_view exact[] = {"sock"};
    constexpr std::string_view middle[] = {"blued"};
    engine.run().delFilesExcludingPatternsRecursive("/t", {.exactMatches = exact, .middlePatterns = middle});
    EXPECT_THAT(engine.loggedPaths(), UnorderedElementsAre("/t/blued/x", "/t/y"));
    EXPECT_TRUE(engine.exists("/t/a/sock") && engine.exists("/t/a/my.blued.tmp") &&
                engine.exists("/t/blued"));
    EXPECT_TRUE(engine.exists("/t/link"));
}

TEST(OZCorePrimitives, RelativePathsBelongToTheDirectoryThatWasFound) {
    EngineFixture engine;
    engine.device.addFile("/w/x/one");
    engine.device.addFile("/w/x/keep/two");
    engine.enter(OZCoreMode::clean);
    EXPECT_FALSE(engine.run().changeDir("/missing"));
    EXPECT_EQ(engine.log(), "");
    ASSERT_TRUE(engine.run().changeDir("/w"));
    engine.run().delFolderContents("./x", OnlyFiles::yes);
    EXPECT_EQ(engine.log(), "\n##\nIn dir: /w\n##\n\n./x/one\n\n");
    EXPECT_TRUE(engine.exists("/w/x/keep/two"));
}

TEST(OZCorePrimitives, EmptyFoldersAreThoseWithoutAFileAtAnyDepth) {
    EngineFixture engine;
    for (const char* folder : {"/e/empty", "/e/nest/inner", "/e/full"}) {
        std::filesystem::create_directories(engine.device.hostPath(folder));
    }
    engine.device.addFile("/e/full/deep/file");
    engine.device.addLink("/e/linked/link", "/e");
    engine.enter(OZCoreMode::clean);
    engine.run().delEmptyDirs("/e");
    EXPECT_FALSE(engine.exists("/e/empty") || engine.exists("/e/nest"));
    EXPECT_TRUE(engine.exists("/e/full/deep/file") && engine.exists("/e/linked/link"));
    // "inner" went with "nest" and is not counted for itself.
    EXPECT_EQ(engine.core->fileCount(), 3);
}

TEST(OZCorePrimitives, EveryByteOfANameComesThroughSearchLogAndDeletion) {
    EngineFixture engine;
    std::vector<std::string> lines;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            lines.push_back(std::string("/n/name ") + static_cast<char>(byte) + ".log");
            engine.device.addFile(lines.back());
        }
    }
    engine.enter(OZCoreMode::clean);
    engine.run().quickDel(engine.run().find({"/n", "-type", "f", "-print"}));
    EXPECT_TRUE(std::filesystem::is_empty(engine.device.hostPath("/n")));
    std::string log = engine.log();
    for (const auto& line : lines) {
        const size_t found = log.find(line + "\n\n");
        ASSERT_NE(found, std::string::npos) << line;
        log.erase(found, line.size() + 2);
    }
    EXPECT_EQ(log, "");
}

TEST(OZCorePrimitives, FindGivesNamesOfAnyBytes) {
    EngineFixture engine;
    const std::vector<std::string> names = {"plain.log", "white space.log", "line\nbreak.log",
                                            "\xff\xfe.log"};
    for (const auto& name : names) {
        engine.device.addFile("/n/" + name);
    }
    engine.device.addFile("/break.log");
    engine.enter(OZCoreMode::clean);
    const auto found = engine.run().find(
        {"/n", "-regextype", "posix-extended", "-regex", "^.*\\.(log)$", "-type", "f", "-print"});
    EXPECT_THAT(found.names, testing::UnorderedElementsAreArray(names));
    engine.run().quickDel(found);
    EXPECT_EQ(engine.core->fileCount(), names.size());
    EXPECT_TRUE(std::filesystem::is_empty(engine.device.hostPath("/n")));
    EXPECT_TRUE(engine.exists("/break.log"));
    EXPECT_THAT(engine.run().find({"/missing"}).names, IsEmpty());
}
