#include "Tests/Platform/FileManagerFixture.h"

#include <filesystem>
#include <functional>

#include <fcntl.h>

using namespace platform;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace tests {

class FileManagerTest : public FileManagerFixture {};
OZ_BOTH_RESOLUTIONS(FileManagerTest);

TEST_P(FileManagerTest, WriteContentsReplacesTheFileInOneStep) {
    make("old: before\nother == old\nfolder/\nlink -> old\nnothing -> missing");
    ASSERT_EQ(::chmod(host.path("root/old").c_str(), 0640), 0);
    const bool given = giveToUser("/old", 501);
    const Descriptor reader(::open(host.path("root/old").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(files->writeContents("/old", "after"));
    char seen[16] = {};
    EXPECT_EQ(::read(reader.get(), seen, sizeof seen), 6) << "who has the old file open sees it whole";
    EXPECT_EQ(content("/other"), "before");
    EXPECT_EQ(content("/old"), "after");
    EXPECT_EQ(files->attributesOfItemAtPath("/old")->permissions, 0640);
    EXPECT_EQ(files->attributesOfItemAtPath("/old")->owner, given ? 501 : ::geteuid());
    ASSERT_TRUE(files->writeContents("/new", ""));
    EXPECT_EQ(files->attributesOfItemAtPath("/new")->permissions, 0644);
    for (const char* path : {"/folder", "/link", "/nothing"}) {
        EXPECT_EQ(errorOf(files->writeContents(path, "x")), EEXIST) << path;
    }
    EXPECT_EQ(errorOf(files->writeContents("/missing/file", "x")), ENOENT);
    EXPECT_EQ(errorOf(files->writeContents("/" + std::string(256, 'n'), "x")), ENAMETOOLONG);
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"),
                UnorderedElementsAre("old", "other", "folder", "link", "nothing", "new"));
}

TEST_P(FileManagerTest, FailedWriteLeavesTheOldContentAndNothingElse) {
    make("old: before");
    const auto oldAction = ::signal(SIGXFSZ, SIG_IGN);
    {
        const LoweredLimit smallFiles(RLIMIT_FSIZE, 1000);
        EXPECT_EQ(errorOf(files->writeContents("/old", std::string(5000, 'x'))), EFBIG);
    }
    ::signal(SIGXFSZ, oldAction);
    EXPECT_EQ(content("/old"), "before");
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"), ElementsAre("old"));
}

TEST_P(FileManagerTest, TemporaryFilesOfCrashesBarNoWrite) {
    for (int number = 0; number < 200; ++number) {
        make(".file." + std::to_string(::getpid()) + "." + std::to_string(number) + ".tmp: left");
    }
    EXPECT_TRUE(files->writeContents("/file", "new"));
    EXPECT_EQ(content("/file"), "new");
    EXPECT_EQ(files->contentsOfDirectoryAtPath("/")->size(), 201);
}

TEST_P(FileManagerTest, CreatedFileTakesThePlaceOfTheNameOnly) {
    make("file: text\nother == file\nlink -> target\ntarget: text\nfolder/in: x");
    for (const char* path : {"/file", "/link"}) {
        auto file = files->createFileAtPath(path);
        ASSERT_TRUE(file) << path;
        ASSERT_TRUE(file->write("new"));
        EXPECT_EQ(content(path), "new");
    }
    EXPECT_EQ(content("/other"), "text");
    EXPECT_EQ(content("/target"), "text");
    EXPECT_EQ(errorOf(files->createFileAtPath("/folder")), EISDIR);
}

TEST_P(FileManagerTest, OpenForWritingTakesOnlyRegularFilesOfOneName) {
    make("file: text\nlink -> file\ntwo: text\nnames == two\npipe |\nfolder/");
    auto file = files->openForWriting("/file");
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->seekToEnd());
    ASSERT_TRUE(file->write(" more"));
    EXPECT_EQ(content("/file"), "text more");
    EXPECT_EQ(errorOf(files->openForWriting("/two")), EMLINK);
    EXPECT_EQ(errorOf(files->openForWriting("/folder")), EISDIR);
    EXPECT_EQ(errorOf(files->openForWriting("/missing")), ENOENT);
    for (const char* path : {"/link", "/pipe"}) {
        EXPECT_EQ(errorOf(files->openForWriting(path)), EINVAL) << path;
    }
}

TEST_P(FileManagerTest, ReadsRegularFilesUpToALimit) {
    make("file: 12345\nlink -> file\npipe |\nfolder/");
    EXPECT_EQ(*files->contentsAtPath("/link", 5), "12345");
    EXPECT_EQ(errorOf(files->contentsAtPath("/link", 4)), EFBIG);
    EXPECT_EQ(errorOf(files->contentsAtPath("/pipe")), EINVAL) << "and does not wait for a writer";
    EXPECT_EQ(errorOf(files->contentsAtPath("/folder")), EISDIR);
    const std::string large(1000000, 'x');
    ASSERT_TRUE(files->writeContents("/large", large));
    EXPECT_EQ(*files->contentsAtPath("/large"), large);
}

TEST_P(FileManagerTest, TellsWhetherAnItemExists) {
    make("file: x\nfolder/\ntoFile -> file\ntoFolder -> folder\nnothing -> missing\nloop -> loop");
    const struct {
        const char* path;
        bool exists;
        bool isDirectory;
    } rows[] = {{"/file", true, false},     {"/folder", true, true},    {"/toFile", true, false},
                {"/toFolder", true, true},  {"/nothing", false, false}, {"/loop", false, false},
                {"/missing", false, false}, {"/file/x", false, false},  {"/", true, true},
                {"folder/..", true, true},  {"", false, false}};
    for (const auto& row : rows) {
        bool isDirectory = !row.isDirectory;
        EXPECT_EQ(files->fileExistsAtPath(row.path, &isDirectory), row.exists) << row.path;
        EXPECT_EQ(isDirectory, row.isDirectory) << row.path;
    }
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/nothing"), "/missing");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/loop"), "/loop");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/missing/x"), "/missing/x");
    EXPECT_GT(files->attributesOfFileSystemForPath("/toFile")->size, 0);
    EXPECT_EQ(errorOf(files->attributesOfFileSystemForPath("/missing")), ENOENT);
}

TEST_P(FileManagerTest, AttributesAreSetOnTheItemItself) {
    make("file: x\nlink -> file\npipe |");
    ASSERT_EQ(::chmod(host.path("root/file").c_str(), 0), 0);
    const timespec time{.tv_sec = 1000000000, .tv_nsec = 42};
    EXPECT_EQ(errorOf(files->setPermissionsOfItemAtPath("/link", 0777)), EOPNOTSUPP);
    EXPECT_EQ(files->attributesOfItemAtPath("/file")->permissions, 0);
    ASSERT_TRUE(files->setModificationDateOfItemAtPath("/link", time));
    EXPECT_EQ(files->attributesOfItemAtPath("/link")->modified.tv_nsec, 42);
    EXPECT_NE(files->attributesOfItemAtPath("/file")->modified.tv_sec, time.tv_sec);
    if (giveToUser("/pipe", 0)) {
        ASSERT_TRUE(files->setOwnerOfItemAtPath("/link", 501, std::nullopt));
        EXPECT_EQ(files->attributesOfItemAtPath("/link")->owner, 501);
        EXPECT_EQ(files->attributesOfItemAtPath("/link")->group, ::getegid());
        EXPECT_EQ(files->attributesOfItemAtPath("/file")->owner, 0);
        // The owner of a file may always set its permissions, whatever they are.
        ASSERT_TRUE(giveToUser("/file", 501));
        EXPECT_TRUE(
            holdsForUser(501, [&] { return files->setPermissionsOfItemAtPath("/file", 0600).has_value(); }));
        EXPECT_EQ(files->attributesOfItemAtPath("/file")->permissions, 0600);
    }
    ASSERT_TRUE(files->setPermissionsOfItemAtPath("/pipe", 0620));
    EXPECT_EQ(files->attributesOfItemAtPath("/pipe")->permissions, 0620);
}

TEST_P(FileManagerTest, CreatesFoldersOnTheWay) {
    make("file: x\nlink -> real\nreal/\nnothing -> missing");
    for (const char* path :
         {"/a/b/c", "/a/b/c/", "/link/in/side", "/x/../y", "/p/q/..", "/u/./v", "relative/in"}) {
        EXPECT_TRUE(files->createDirectoryAtPath(path, IntermediateFolders::create)) << path;
        EXPECT_TRUE(files->createDirectoryAtPath(path, IntermediateFolders::create)) << path << " again";
        EXPECT_EQ(errorOf(files->createDirectoryAtPath(path, IntermediateFolders::refuse)), EEXIST) << path;
    }
    for (const char* path : {"/a/b/c", "/real/in/side", "/x", "/y", "/p/q", "/u/v", "/relative/in"}) {
        EXPECT_TRUE(exists(path)) << path;
    }
    EXPECT_EQ(errorOf(files->createDirectoryAtPath("/new/in", IntermediateFolders::refuse)), ENOENT);
    EXPECT_EQ(errorOf(files->createDirectoryAtPath("/file", IntermediateFolders::create)), EEXIST);
    EXPECT_EQ(errorOf(files->createDirectoryAtPath("/file/x/y", IntermediateFolders::create)), ENOTDIR);
    EXPECT_EQ(errorOf(files->createDirectoryAtPath("/nothing/x", IntermediateFolders::create)), EEXIST);
    EXPECT_EQ(errorOf(files->createDirectoryAtPath("", IntermediateFolders::create)), ENOENT);
    EXPECT_TRUE(files->createDirectoryAtPath("/", IntermediateFolders::create));
}

TEST_P(FileManagerTest, NothingChangesWhereOnlyLookingIsAllowed) {
    make("file: content\nfolder/inner/leaf: x");
    ASSERT_TRUE(files->changeCurrentDirectoryPath("/folder"));
    const auto before = host.listing();
    FileManager other = *files;
    ASSERT_TRUE(other.lookOnly());
    const auto item = [&] { return *files->itemAtPath("inner"); };
    const std::pair<const char*, std::function<int()>> changes[] = {
        {"remove", [&] { return errorOf(files->removeItemAtPath("/file")); }},
        {"remove the item", [&] { return errorOf(item().remove()); }},
        {"rename the item", [&] { return errorOf(item().rename("new")); }},
        {"replace by the item", [&] { return errorOf(item().renameReplacing("new")); }},
        {"move", [&] { return errorOf(files->moveItemAtPath("/file", "new")); }},
        {"copy", [&] { return errorOf(files->copyItemAtPath("/file", "new")); }},
        {"write", [&] { return errorOf(files->writeContents("/file", "new")); }},
        {"write with an owner", [&] { return errorOf(files->writeContents("/new", "new", {})); }},
        {"open", [&] { return errorOf(files->openForWriting("/file")); }},
        {"create", [&] { return errorOf(files->createFileAtPath("/file")); }},
        {"make a folder",
         [&] { return errorOf(files->createDirectoryAtPath("a/b", IntermediateFolders::create)); }},
        {"make a link", [&] { return errorOf(files->createSymbolicLinkAtPath("new", "/file")); }},
        {"give away", [&] { return errorOf(files->setOwnerOfItemAtPath("/file", 1, 1)); }},
        {"close", [&] { return errorOf(files->setPermissionsOfItemAtPath("/file", 0)); }},
        {"date", [&] { return errorOf(files->setModificationDateOfItemAtPath("/file", {})); }},
        {"remove what a walk finds",
         [&] {
             const auto walk = files->enumeratorAtPath("/folder");
             walk->nextObject();
             walk->nextObject();
             return errorOf(walk->item().remove());
         }},
        {"remove in a found folder",
         [&] { return errorOf(Item(*files->itemAtPath("/folder/inner")->openFolder(), "leaf").remove()); }},
    };
    for (const auto& [name, change] : changes) {
        EXPECT_EQ(change(), EROFS) << name;
    }
    EXPECT_EQ(host.listing(), before);
    EXPECT_FALSE(files->isWritableFileAtPath("/file"));
    EXPECT_TRUE(files->createDirectoryAtPath("/folder/inner", IntermediateFolders::create));
    EXPECT_EQ(*files->contentsAtPath("inner/leaf"), "x");
}

TEST_P(FileManagerTest, NoHandleKnowsFoldersThatWereReplaced) {
    make("folder/file: old\nother/file: other\nlink -> folder");
    FileManager second = *files;
    const auto seen = [&](const char* path) { return second.contentsAtPath(path).value_or("nothing"); };
    const auto look = [&](const char* path) { return second.itemAtPath(path)->attributes()->size; };

    EXPECT_EQ(look("/folder/file"), 3);
    ASSERT_TRUE(files->moveItemAtPath("/folder", "/moved"));
    ASSERT_TRUE(files->moveItemAtPath("/other", "/folder"));
    EXPECT_EQ(look("/folder/file"), 5) << "moved through another handle";

    const auto item = *second.itemAtPath("/folder");
    EXPECT_EQ(look("/folder/file"), 5);
    ASSERT_TRUE(item.rename("renamed"));
    ASSERT_TRUE(second.itemAtPath("/moved")->rename("folder"));
    second.forgetLastFolder();
    EXPECT_EQ(look("/folder/file"), 3) << "renamed as an item";

    EXPECT_EQ(look("/folder/file"), 3);
    std::filesystem::remove_all(host.path("root/folder"));
    make("folder/file: from elsewhere");
    EXPECT_EQ(look("/folder/file"), 14) << "removed and made anew by another program";

    EXPECT_EQ(look("/link/file"), 14);
    ASSERT_TRUE(second.createFileAtPath("/link"));
    EXPECT_FALSE(second.itemAtPath("/link/file"));
    EXPECT_EQ(seen("/folder/file"), "from elsewhere");
}

TEST_P(FileManagerTest, FolderThatIsGoneIsNotMistakenForTheNext) {
    make("a/sub/file: 1\nb/sub/file: 22");
    const auto top = *files->folderAtPath("/");
    for (int round = 0; round < 10; ++round) {
        for (const auto& [name, size] : {std::pair{"a", 1}, std::pair{"b", 2}}) {
            const auto folder = *Item(top, name).openFolder();
            EXPECT_EQ(files->itemBelow(folder, "sub/file")->attributes()->size, size);
        }
    }
}

TEST_P(FileManagerTest, RenamingReplacesOnlyWhenThereIsSomethingToPutInPlace) {
    make("file: new\nold/file: old\nlink -> /kept\nkept: kept");
    ASSERT_TRUE(files->itemAtPath("/file")->renameReplacing("old"));
    EXPECT_EQ(content("/old"), "new");
    ASSERT_TRUE(files->itemAtPath("/old")->renameReplacing("link"));
    EXPECT_EQ(content("/link"), "new");
    EXPECT_EQ(content("/kept"), "kept");
    EXPECT_EQ(errorOf(files->itemAtPath("/nothing")->renameReplacing("kept")), ENOENT);
    EXPECT_EQ(content("/kept"), "kept");
}

} // namespace tests
