// What the files and folders that a user has added to a cleanup take with them.

#include "Model/Core/CustomFileRecord.h"
#include "Model/Core/Removal/CustomFiles.h"
#include "Tests/Model/Core/EngineTest.h"

using testing::IsEmpty;

namespace {

using enum OZCustomFolderSetting;

CustomFileRecord folder(OZCustomFolderSetting setting, bool recursive = false) {
    return {.filePath = "/f/",
            .fileType = "NSFileTypeDirectory",
            .customFolderSetting = setting,
            .recursive = recursive};
}

CustomFileRecord filtered(CustomFileRecord record, std::optional<std::string> start,
                          std::optional<std::string> middle, std::optional<std::string> end) {
    record.startPattern = std::move(start);
    record.middlePattern = std::move(middle);
    record.endPattern = std::move(end);
    return record;
}

constexpr auto none = std::nullopt;

class CustomFiles : public EngineTest {
  protected:
    /// Makes the tree, runs one record over it, and tells which of its files and links are gone.
    Tree gone(const CustomFileRecord& record) {
        std::filesystem::remove_all(temporary.hostPath("/f"));
        addFiles({"/f/log-a.txt", "/f/LOG-b.txt", "/f/a*b.txt", "/f/aXb.txt", "/f/sub/log-c.txt",
                  "/f/sub/other", "/f/logs.d/inner.txt", "/f/logs.d/log-deep.txt", "/outside/log-kept.txt"});
        temporary.addLink("/f/log-link.txt", "/outside/log-kept.txt");
        temporary.addLink("/f/sub/log-folder", "/outside");
        const Tree before = tree();
        cleanCustomFile(engine().run(), record);
        return difference(before, tree());
    }
};

struct Case {
    const char* what;
    CustomFileRecord record;
    std::set<std::string> gone;
};

const std::set<std::string> insideSub = {"/f/sub/log-c.txt", "/f/sub/other", "/f/sub/log-folder"};
const std::set<std::string> insideLogs = {"/f/logs.d/inner.txt", "/f/logs.d/log-deep.txt"};
const std::set<std::string> directFiles = {"/f/log-a.txt", "/f/LOG-b.txt", "/f/a*b.txt", "/f/aXb.txt"};

const std::vector<Case> cases = {
    {"the whole folder, whatever the filters", filtered(folder(whole), "log", none, none),
     united({directFiles, insideSub, insideLogs, {"/f/log-link.txt"}})},
    {"a file's record never takes a folder", {.filePath = "/f", .fileType = "NSFileTypeRegular"}, {}},
    {"one file", {.filePath = "/f/sub/other", .fileType = "anything"}, {"/f/sub/other"}},
    {"direct files", folder(onlyFiles), directFiles},
    {"files at any depth; links stay", folder(onlyFiles, true),
     united({directFiles, {"/f/sub/log-c.txt", "/f/sub/other"}, insideLogs})},
    {"the content", folder(filesAndSubfolders), united({directFiles, insideSub, insideLogs})},
    {"the content, which has all depths in it anyway", folder(filesAndSubfolders, true),
     united({directFiles, insideSub, insideLogs})},
    {"filters of no length are none", filtered(folder(onlyFiles), "", "", ""), directFiles},
    {"direct files by name", filtered(folder(onlyFiles), "log", none, none), {"/f/log-a.txt"}},
    {"direct entries by name", filtered(folder(filesAndSubfolders), "log", none, none),
     united({{"/f/log-a.txt"}, insideLogs})},
    {"filters may overlap", filtered(folder(onlyFiles), "log-a", "g-a.t", "a.txt"), {"/f/log-a.txt"}},
    {"a star is a star", filtered(folder(onlyFiles), "a*", none, none), {"/f/a*b.txt"}},
    {"a star is a star at any depth", filtered(folder(onlyFiles, true), "a*", none, none), {"/f/a*b.txt"}},
    {"files by name at any depth, but not below a folder of such a name",
     filtered(folder(onlyFiles, true), "log", none, none),
     {"/f/log-a.txt", "/f/sub/log-c.txt"}},
    {"entries by name at any depth", filtered(folder(filesAndSubfolders, true), "log", none, none),
     united({{"/f/log-a.txt", "/f/sub/log-c.txt"}, insideLogs})},
    {"all filters at any depth",
     filtered(folder(onlyFiles, true), "l", "-", ".txt"),
     {"/f/log-a.txt", "/f/sub/log-c.txt", "/f/logs.d/log-deep.txt"}},
    {"a filter of no length beside another",
     filtered(folder(onlyFiles, true), none, "", "b.txt"),
     {"/f/LOG-b.txt", "/f/a*b.txt", "/f/aXb.txt"}},
    {"a setting that nobody knows", folder(static_cast<OZCustomFolderSetting>(3), true), {}},
};

} // namespace

TEST_F(CustomFiles, RecordTakesWhatItNames) {
    for (const auto& [what, record, expected] : cases) {
        EXPECT_EQ(gone(record), expected) << what;
    }
}

TEST_F(CustomFiles, EmptiedFoldersStay) {
    gone(folder(onlyFiles, true));
    EXPECT_THAT(tree(), testing::Contains("/f/logs.d/"));
}

TEST_F(CustomFiles, RecordWithoutAFolderToSearchTakesNothing) {
    for (const char* path : {"", " \n\t", "/missing", "/f/log-a.txt"}) {
        for (const bool recursive : {false, true}) {
            auto record = filtered(folder(onlyFiles, recursive), "log", none, none);
            record.filePath = path;
            EXPECT_THAT(gone(record), IsEmpty()) << path;
        }
    }
}

TEST_F(CustomFiles, FolderWhoseNameIsAnOptionIsNotSearched) {
    addFiles({"/-delete/a", "/b"});
    const Tree before = tree();
    EXPECT_THAT(engine().run().find({"-delete"}).names, IsEmpty());
    EXPECT_EQ(tree(), before);
}

TEST_F(CustomFiles, OtherModesOnlyLookOrRename) {
    addFiles({"/f/log-a", "/f/sub/log-b", "/f/sub/c"});
    const Tree before = tree();
    const auto record = filtered(folder(onlyFiles, true), "log", none, none);
    auto& analysis = engine(OZCoreMode::analyze);
    cleanCustomFile(analysis.run(), record);
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(analysis.fileCount(), 2);
    EXPECT_EQ(analysis.freedSpace(), 10);

    cleanCustomFile(engine(OZCoreMode::test).run(), record);
    EXPECT_THAT(loggedPaths(), testing::UnorderedElementsAre("/f/log-a", "/f/sub/log-b"));
    EXPECT_EQ(tree(), (Tree{"/f/log-a.OzvarineBackup", "/f/sub/log-b.OzvarineBackup", "/f/sub/c"}));
}
