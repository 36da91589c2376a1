#include "Tests/Platform/FileManagerFixture.h"

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace tests {

class PathResolutionTest : public FileManagerFixture {};
OZ_BOTH_RESOLUTIONS(PathResolutionTest);

TEST_P(PathResolutionTest, LinksAndParentsNeverLeadAboveTheRoot) {
    const std::string outside = host.path("outside");
    make("a/b/absolute -> " + outside + "\n" + R"(
        a/b/relative -> ../../../outside
        a/b/high -> ../../../../../../../../../../..)" +
         outside + "\n" + R"(
        a/b/top -> /
        a/b/self -> self
        a/b/ping -> pong
        a/b/pong -> ping
        outsider -> ../outside
        up -> ..)");
    for (const char* path :
         {"/a/b/absolute/canary", "/a/b/relative/canary", "/a/b/high/canary", "/outsider/canary",
          "/../outside/canary", "/a/b/../../../outside/canary", "/up/outside/canary"}) {
        EXPECT_FALSE(files->fileExistsAtPath(path)) << path;
        EXPECT_FALSE(files->contentsAtPath(path)) << path;
        EXPECT_EQ(errorOf(files->itemAtPath(path)), ENOENT) << path;
        EXPECT_EQ(errorOf(files->removeItemAtPath(path)), ENOENT) << path;
        EXPECT_EQ(errorOf(files->createFileAtPath(path)), ENOENT) << path;
    }
    EXPECT_EQ(errorOf(files->folderAtPath("/a/b/self")), ELOOP);
    EXPECT_EQ(errorOf(files->folderAtPath("/a/b/ping/x")), ELOOP);
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/a/b/top"), UnorderedElementsAre("a", "outsider", "up"));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/up"), UnorderedElementsAre("a", "outsider", "up"));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/../.."), UnorderedElementsAre("a", "outsider", "up"));
}

TEST_P(PathResolutionTest, LinksWithinTheRootAreFollowed) {
    make(R"(var -> private/var
            private/var/mobile/file: text
            private/etc/hosts: hosts
            etc -> /private/etc
            private/var/mobile/up -> ../../etc
            tofile -> /var/mobile/file)");
    EXPECT_EQ(*files->contentsAtPath("/var/mobile/file"), "text");
    EXPECT_EQ(*files->contentsAtPath("/etc/hosts"), "hosts");
    EXPECT_EQ(*files->contentsAtPath("/var/mobile/up/hosts"), "hosts");
    EXPECT_EQ(*files->contentsAtPath("/var/../etc/hosts"), "hosts") << "the folder above the link's target";
    EXPECT_EQ(*files->contentsAtPath("/tofile"), "text");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/var/mobile/up/hosts"), "/private/etc/hosts");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/tofile"), "/private/var/mobile/file");
    EXPECT_EQ(files->attributesOfItemAtPath("/tofile")->type, FileType::symbolicLink);
    EXPECT_EQ(files->attributesOfItemAtPath("/var/")->type, FileType::symbolicLink);
    EXPECT_EQ(files->attributesOfTargetAtPath("/var")->type, FileType::directory);
    EXPECT_EQ(errorOf(files->folderAtPath("/tofile")), ENOTDIR);
    EXPECT_EQ(errorOf(files->contentsAtPath("/tofile/x")), ENOTDIR);
}

TEST_P(PathResolutionTest, TopFoldersWhoseLinksAreMissingAreThoseBelowPrivate) {
    make(R"(private/var/mobile/file: text
            private/var/tmp/file: text
            private/etc/file: text
            Library/toMobile -> /var/mobile
            Library/toMobileRelative -> ../var/mobile)");
    for (const char* path :
         {"/var/mobile/file", "//var/./mobile/file", "/Library/../var/mobile/file", "var/mobile/file",
          "/Library/toMobile/file", "/Library/toMobileRelative/file", "/etc/file", "/tmp/file"}) {
        EXPECT_EQ(files->contentsAtPath(path).value_or("nothing"), "text") << path;
        EXPECT_TRUE(files->itemAtPath(path)->attributes()) << path;
        EXPECT_EQ(files->pathForTools(path), files->stringByResolvingSymlinksInPath(path));
    }
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/tmp"), "/private/var/tmp");
    EXPECT_EQ(errorOf(files->contentsAtPath("/var/none")), ENOENT);
    ASSERT_TRUE(files->changeCurrentDirectoryPath("/var/mobile"));
    EXPECT_EQ(files->currentDirectoryPath(), "/private/var/mobile");
    EXPECT_TRUE(files->createDirectoryAtPath("../../../var/new/folder", IntermediateFolders::create));
    EXPECT_TRUE(files->createDirectoryAtPath("/etc/new/folder", IntermediateFolders::create));
    EXPECT_TRUE(files->createDirectoryAtPath("/Library/toMobile/new", IntermediateFolders::refuse));
    EXPECT_TRUE(files->writeContents("/tmp/new", "x"));
    EXPECT_TRUE(exists("/private/var/new/folder") && exists("/private/etc/new/folder") &&
                exists("/private/var/mobile/new") && exists("/private/var/tmp/new"));
    ASSERT_TRUE(files->changeCurrentDirectoryPath("/"));
    for (const char* path : {"/var", "/tmp/", "etc"}) {
        EXPECT_TRUE(files->createDirectoryAtPath(path, IntermediateFolders::create)) << path;
        EXPECT_EQ(errorOf(files->createDirectoryAtPath(path, IntermediateFolders::refuse)), EEXIST) << path;
        EXPECT_EQ(errorOf(files->createFileAtPath(path)), EEXIST) << path;
        EXPECT_EQ(errorOf(files->writeContents(path, "x")), EEXIST) << path;
        EXPECT_EQ(errorOf(files->moveItemAtPath("/private/etc", path)), EEXIST) << path;
        EXPECT_EQ(errorOf(files->copyItemAtPath("/private/etc", path)), EEXIST) << path;
        EXPECT_EQ(errorOf(files->createSymbolicLinkAtPath(path, "/Library")), EEXIST) << path;
        EXPECT_EQ(errorOf(files->removeItemAtPath(path)), ENOENT) << path;
    }
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"), UnorderedElementsAre("Library", "private"));
}

TEST_P(PathResolutionTest, TopFoldersThatAreThereMeanThemselves) {
    make(R"(private/var/file: private
            private/etc -> /private/none
            private/tmp/
            var/file: own
            tmp -> /none)");
    EXPECT_EQ(*files->contentsAtPath("/var/file"), "own");
    EXPECT_EQ(files->pathForTools("/var/file"), "/var/file");
    EXPECT_EQ(errorOf(files->folderAtPath("/tmp")), ENOENT);
    EXPECT_EQ(errorOf(files->folderAtPath("/etc")), ENOENT);
    EXPECT_TRUE(files->createDirectoryAtPath("/etc/new", IntermediateFolders::create));
    EXPECT_TRUE(exists("/etc/new")) << "no folder stands for it";
}

TEST_P(PathResolutionTest, CurrentDirectoryIsSharedAndItsParentIsFoundFromTheRoot) {
    make("link -> /a/b\na/b/c/file: text\na/beside: other\n");
    FileManager other = *files;
    ASSERT_TRUE(files->changeCurrentDirectoryPath("/link/c"));
    EXPECT_EQ(other.currentDirectoryPath(), "/a/b/c");
    EXPECT_EQ(*other.contentsAtPath("file"), "text");
    EXPECT_EQ(*other.contentsAtPath("../../beside"), "other");
    EXPECT_EQ(errorOf(other.contentsAtPath("../../../../../outside/canary")), ENOENT);
    EXPECT_EQ(errorOf(files->changeCurrentDirectoryPath("file")), ENOTDIR);
    ASSERT_TRUE(files->changeCurrentDirectoryPath("../.."));
    EXPECT_EQ(other.currentDirectoryPath(), "/a");
    EXPECT_EQ(*other.contentsAtPath("beside"), "other")
        << "what was found from the old directory is forgotten";
    // Even a current directory that was moved out of the tree leads nobody out of it.
    ASSERT_EQ(::rename(host.path("root/a").c_str(), host.path("moved").c_str()), 0);
    EXPECT_FALSE(files->fileExistsAtPath("../outside/canary"));
    EXPECT_FALSE(files->fileExistsAtPath("b/../../outside/canary"));
}

TEST_P(PathResolutionTest, RootReachedThroughLinkAndRootThatMoves) {
    make("file: text");
    ASSERT_EQ(::symlink("root", host.path("alias").c_str()), 0);
    auto aliased = FileManager::atRoot(host.path("alias"), GetParam());
    ASSERT_TRUE(aliased);
    EXPECT_EQ(*aliased->contentsAtPath("/../file"), "text");
    ASSERT_EQ(::rename(host.path("root").c_str(), host.path("outside/root").c_str()), 0);
    EXPECT_EQ(*aliased->contentsAtPath("/file"), "text");
    EXPECT_FALSE(aliased->fileExistsAtPath("/../canary"));
    EXPECT_EQ(errorOf(FileManager::atRoot(host.path("nothing"), GetParam())), ENOENT);
}

TEST_P(PathResolutionTest, NamesAreAnyBytes) {
    const std::string longName(255, 'n');
    const std::vector<std::string> names = {longName, "\xff\xfe\x80", "new\nline", " ", "...", "-rf",
                                            "*",      "\\",           "\x01"};
    for (const auto& name : names) {
        ASSERT_TRUE(files->createDirectoryAtPath("/in/" + name + "/x", IntermediateFolders::create)) << name;
        ASSERT_TRUE(files->writeContents("/in/" + name + "/" + name, name)) << name;
        EXPECT_EQ(host.content("root/in/" + name + "/" + name), name);
    }
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/in"), testing::UnorderedElementsAreArray(names));
    for (const auto& name : names) {
        EXPECT_TRUE(files->removeItemAtPath("/in/" + name));
    }
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/in"), ElementsAre());
    EXPECT_EQ(errorOf(files->attributesOfItemAtPath("/" + std::string(256, 'n'))), ENAMETOOLONG);
}

TEST_P(PathResolutionTest, PathCutShortByByteZeroMeansNothing) {
    using namespace std::string_view_literals;
    make("keep/file: text");
    for (const auto path : {"/keep\0x"sv, "/keep\0/file"sv, "/keep/\0"sv, "\0"sv, ""sv}) {
        EXPECT_FALSE(files->removeItemAtPath(path));
        EXPECT_FALSE(files->fileExistsAtPath(path));
        EXPECT_FALSE(files->folderAtPath(path));
        EXPECT_FALSE(files->createDirectoryAtPath(path, IntermediateFolders::create));
        EXPECT_FALSE(files->changeCurrentDirectoryPath(path));
        EXPECT_EQ(files->enumeratorAtPath(path), nullptr);
    }
    EXPECT_FALSE(files->createSymbolicLinkAtPath("/link", "/keep\0x"sv));
    EXPECT_FALSE(files->itemBelow(*files->folderAtPath("/"), "keep\0x/file"sv));
    EXPECT_FALSE(files->itemBelow(*files->folderAtPath("/"), "keep\0x"sv)->remove());
    EXPECT_EQ(content("/keep/file"), "text");
}

TEST_P(PathResolutionTest, PathsMayBeLongerThanTheSystemTakes) {
    std::string path;
    for (int level = 0; level < 3000; ++level) {
        path += "/d";
    }
    ASSERT_GT(path.size(), size_t{PATH_MAX});
    makeDeepFolders(files->rootDescriptor(), 3000);
    ASSERT_TRUE(files->writeContents(path + "/file", "deep"));
    EXPECT_EQ(*files->contentsAtPath(path + "/file"), "deep");
    EXPECT_EQ(files->stringByResolvingSymlinksInPath(path), path);
    const auto item = files->itemBelow(*files->folderAtPath("/d"), path.substr(3) + "/file");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->attributes()->size, 4);
    std::string back = path;
    for (int level = 0; level < 2999; ++level) {
        back += "/..";
    }
    ASSERT_TRUE(files->createDirectoryAtPath(path + "/new/folder", IntermediateFolders::create));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath(back), ElementsAre("d"));
    ASSERT_TRUE(files->changeCurrentDirectoryPath(path));
    EXPECT_EQ(*files->contentsAtPath("file"), "deep");
    EXPECT_TRUE(files->removeItemAtPath("/d"));
    EXPECT_THAT(*files->contentsOfDirectoryAtPath("/"), ElementsAre());
}

TEST_P(PathResolutionTest, FolderSeenFromInsideCannotBeChanged) {
    make("keep/inner/file: text\nother/\n");
    ASSERT_TRUE(files->changeCurrentDirectoryPath("/keep/inner"));
    for (const char* path :
         {"/", "//", "/.", "/..", "/keep/.", "/keep/inner/..", "/keep/./.", ".", "..", "../.."}) {
        EXPECT_FALSE(files->removeItemAtPath(path)) << path;
        EXPECT_FALSE(files->moveItemAtPath(path, "/other/moved")) << path;
        EXPECT_FALSE(files->createFileAtPath(path)) << path;
        EXPECT_FALSE(files->writeContents(path, "x")) << path;
        EXPECT_EQ(files->attributesOfItemAtPath(path)->type, FileType::directory) << path;
    }
    const auto keep = *files->folderAtPath("/keep/inner");
    for (const char* name : {"..", ".", "", "../inner", "./file", "/keep"}) {
        EXPECT_FALSE(Item(keep, name).remove()) << name;
        EXPECT_FALSE(Item(keep, "file").rename(name)) << name;
        EXPECT_FALSE(Item(keep, name).moveTo(Item(keep, "new"))) << name;
    }
    for (const char* path : {"..", "../inner/file", "x/..", "./..", "x/../../file"}) {
        EXPECT_EQ(errorOf(files->itemBelow(keep, path)), EINVAL) << path;
    }
    EXPECT_EQ(content("/keep/inner/file"), "text");
    EXPECT_TRUE(files->removeItemAtPath("/keep/inner//"));
    EXPECT_FALSE(exists("/keep/inner"));
}

TEST_P(PathResolutionTest, ItemsBelowFolderAreReachedThroughNoLink) {
    make("top/real/file: text\ntop/link -> real\nother/file: other\ntop/away -> /other\n");
    const auto top = *files->folderAtPath("/top");
    EXPECT_EQ(files->itemBelow(top, "real/file")->attributes()->size, 4);
    EXPECT_EQ(files->itemBelow(top, "link")->attributes()->type, FileType::symbolicLink);
    EXPECT_FALSE(files->itemBelow(top, "link/file"));
    EXPECT_FALSE(files->itemBelow(top, "away/file"));
    EXPECT_EQ(errorOf(Item(top, "link").openFolder()), ENOTDIR);
    EXPECT_EQ(Item(top, "link").enumerate(), nullptr);
    EXPECT_NE(Item(top, "real").enumerate(), nullptr);
}

TEST_P(PathResolutionTest, LinksOfUsersLeadOnlyToTheirOwnFolders) {
    if (!giveToUser("", 0) || !giveToUser("/../outside/canary", 501)) {
        GTEST_SKIP() << "needs the right to give files away";
    }
    make(R"(etc/secret: roots
            mine/file: mine
            mine/sub/file: mine
            links/toEtc -> /etc
            links/toEtcInside -> /etc/.
            links/toTop -> /
            links/toTopRelative -> ..
            links/toSecret -> /etc/secret
            links/toMine -> /mine
            links/chain -> toRootsLink
            links/toRootsLink -> /etc
            links/toSubsParent -> /mine/sub/..
            rootsLink -> /mine
            etc/back -> /mine)");
    for (const char* path : {"/mine", "/mine/file", "/mine/sub", "/links/toEtc", "/links/toEtcInside",
                             "/links/toTop", "/links/toTopRelative", "/links/toSecret", "/links/toMine",
                             "/links/chain", "/links/toSubsParent"}) {
        ASSERT_TRUE(giveToUser(path, 501)) << path;
    }
    for (const std::string link : {"toEtc", "toEtcInside", "toTop", "toTopRelative", "chain"}) {
        EXPECT_EQ(errorOf(files->folderAtPath("/links/" + link)), EPERM) << link;
        EXPECT_FALSE(files->removeItemAtPath("/links/" + link + "/secret")) << link;
        EXPECT_FALSE(files->removeItemAtPath("/links/" + link + "/etc/secret")) << link;
        EXPECT_FALSE(files->createFileAtPath("/links/" + link + "/new")) << link;
        EXPECT_EQ(files->enumeratorAtPath("/links/" + link), nullptr) << link;
        EXPECT_EQ(files->stringByResolvingSymlinksInPath("/links/" + link), "/links/" + link);
        // On the way through it, another folder of the user does not make it better.
        EXPECT_FALSE(files->folderAtPath("/links/" + link + "/mine")) << link;
    }
    EXPECT_FALSE(files->contentsAtPath("/links/toSecret"));
    EXPECT_EQ(files->stringByResolvingSymlinksInPath("/links/toSecret"), "/links/toSecret");
    EXPECT_EQ(*files->contentsAtPath("/links/toMine/file"), "mine");
    EXPECT_EQ(*files->contentsAtPath("/links/toSubsParent/file"), "mine");
    EXPECT_EQ(*files->contentsAtPath("/rootsLink/file"), "mine");
    ASSERT_TRUE(giveToUser("/mine", 502));
    files->forgetLastFolder();
    EXPECT_EQ(errorOf(files->folderAtPath("/links/toMine")), EPERM) << "another user's folder";
    EXPECT_EQ(content("/etc/secret"), "roots");
}

} // namespace tests
