// The file manager's greater operations with one call to the system failing: they tell it, and nothing gets
// lost.
#include "Platform/Device/UserDefaults.h"
#include "Tests/Faults/EveryFault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using testing::IsEmpty;
using tests::everyFault;
using tests::missingFrom;
using tests::treeOf;
using tests::Trial;

namespace {

class FileManagerFaults : public testing::Test {
  protected:
    void makeDevice() {
        device = std::make_unique<TemporaryDevice>();
        for (const char* path : {"/from/tree/a", "/from/tree/sub/b", "/from/tree/sub/deep/c", "/to/kept"}) {
            device->addFile(path, path);
        }
        device->addLink("/from/tree/link", "../../to");
        std::ignore = ::setxattr(device->hostPath("/from/tree/a").c_str(), "user.note", "x", 1, 0);
        before = treeOf(*device);
        fileManager.emplace(device->device().fileManager());
        done = platform::failure(ECANCELED);
    }
    void release() {
        fileManager.reset();
        device.reset();
    }
    /// The entries below a folder, by the path behind it.
    [[nodiscard]] tests::Tree below(const tests::Tree& tree, const std::string& folder) const {
        tests::Tree result;
        for (const auto& [path, content] : tree) {
            if (path.starts_with(folder)) {
                result.emplace(path.substr(folder.size()), content);
            }
        }
        return result;
    }
    /// However the move has ended, one of its ends holds everything; after a success it is the new one alone.
    void judgeMove() {
        const auto after = treeOf(*device);
        const auto whole = below(before, "/from/tree/");
        const bool atOld = below(after, "/from/tree/") == whole;
        const bool atNew = below(after, "/to/tree/") == whole;
        EXPECT_TRUE(atOld || atNew);
        if (done->has_value()) {
            EXPECT_TRUE(atNew && below(after, "/from/tree/").empty());
        }
        EXPECT_EQ(after.at("/to/kept"), "/to/kept");
    }
    [[nodiscard]] struct stat statusOf(std::string_view path) const {
        struct stat status = {};
        EXPECT_EQ(::lstat(device->hostPath(path).c_str(), &status), 0);
        return status;
    }
    [[nodiscard]] Trial moving() {
        return {.prepare = [this] { makeDevice(); },
                .run = [this] { done = fileManager->moveItemAtPath("/from/tree", "/to/tree"); },
                .judge = [this] { judgeMove(); },
                .release = [this] { release(); },
                .judgeWithoutFault = [this] { EXPECT_TRUE(done->has_value()); }};
    }

    std::unique_ptr<TemporaryDevice> device;
    std::optional<platform::FileManager> fileManager;
    tests::Tree before;
    std::optional<platform::Result<void>> done;
};

} // namespace

TEST_F(FileManagerFaults, MoveKeepsTheTreeWhole) {
    everyFault("move", moving());
}

TEST_F(FileManagerFaults, MoveToAnotherFileSystemKeepsTheTreeWhole) {
    const tests::StandingFault otherFileSystem("renameat2 to another folder", EXDEV);
    everyFault("move to another file system", moving());
    tests::everyAllocation("move to another file system", moving());
}

TEST_F(FileManagerFaults, RemovalThatClaimsSuccessHasRemovedAll) {
    const auto judge = [&] {
        const auto after = treeOf(*device);
        EXPECT_EQ(after.at("/to/kept"), "/to/kept");
        EXPECT_TRUE(after.contains("/from/"));
        if (done && done->has_value()) {
            EXPECT_THAT(below(after, "/from/tree"), IsEmpty());
        }
    };
    const Trial removing{.prepare = [&] { makeDevice(); },
                         .run = [&] { done = fileManager->removeItemAtPath("/from/tree"); },
                         .judge = judge,
                         .release = [&] { release(); },
                         .judgeWithoutFault = [&] { EXPECT_TRUE(done->has_value()); }};
    everyFault("removal", removing);
    tests::everyAllocation("removal", removing);
}

TEST_F(FileManagerFaults, MoveReplacesNothingWhereTheSystemCannotPromiseIt) {
    const tests::StandingFault noPromise("renameat2 to another folder", EINVAL);
    everyFault("move onto an item",
               {.prepare = [&] { makeDevice(); },
                .run = [&] { done = fileManager->moveItemAtPath("/from/tree/a", "/to/kept"); },
                .judge =
                    [&] {
                        EXPECT_FALSE(done->has_value());
                        EXPECT_EQ(treeOf(*device), before);
                    },
                .release = [&] { release(); },
                .judgeWithoutFault = nullptr});
}

TEST_F(FileManagerFaults, FileOfAnotherUserIsWrittenByWhoMayNotGiveFilesAway) {
    const tests::StandingFault notGivenAway("fchown", EINVAL);
    makeDevice();
    ASSERT_EQ(::chmod(device->hostPath("/to/kept").c_str(), 0640), 0);
    tests::countCalls([&] { done = fileManager->writeContents("/to/kept", "new"); });
    EXPECT_TRUE(done->has_value());
    EXPECT_EQ(device->contents("/to/kept"), "new");
    EXPECT_EQ(statusOf("/to/kept").st_mode & 07777U, 0640U);
}

TEST_F(FileManagerFaults, WrittenFileIsTheOldOneOrTheNew) {
    everyFault("write", {.prepare =
                             [&] {
                                 makeDevice();
                                 const auto path = device->hostPath("/to/kept");
                                 ASSERT_EQ(::chown(path.c_str(), 501, 20), 0);
                                 ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
                             },
                         .run = [&] { done = fileManager->writeContents("/to/kept", "new"); },
                         .judge =
                             [&] {
                                 auto after = treeOf(*device);
                                 const std::string content = std::exchange(after["/to/kept"], "/to/kept");
                                 EXPECT_EQ(content, done->has_value() ? "new" : "/to/kept");
                                 const auto status = statusOf("/to/kept");
                                 EXPECT_EQ(status.st_uid, 501U);
                                 EXPECT_EQ(status.st_gid, 20U);
                                 EXPECT_EQ(status.st_mode & 07777U, 0600U);
                                 // A file that could not even be unlinked may stay behind; it hides nothing.
                                 EXPECT_THAT(missingFrom(after, before), IsEmpty());
                             },
                         .release = [&] { release(); },
                         .judgeWithoutFault = [&] { EXPECT_TRUE(done->has_value()); }});
}

TEST_F(FileManagerFaults, StoredChoicesSurvive) {
    const std::string path = "/var/mobile/Library/Preferences/p.plist";
    platform::NotificationCenter center;
    const platform::Warnings warnings;
    std::unique_ptr<platform::UserDefaults> defaults;
    const platform::Dictionary old{{"other", "kept"}, {"mine", "old"}};
    const auto dictionaryAt = [&](const std::string& file) {
        const auto list = platform::parsePropertyList(device->contents(file));
        const auto* dictionary = list ? list->as<platform::Dictionary>() : nullptr;
        return dictionary != nullptr ? *dictionary : platform::Dictionary();
    };
    const auto prepare = [&] {
        makeDevice();
        device->addFile(path, platform::serializePropertyList(old, platform::PropertyListFormat::binary));
        fileManager.emplace(device->device().fileManager());
        defaults = std::make_unique<platform::UserDefaults>(*fileManager, center, warnings, path);
    };
    const auto run = [&] {
        // As an owner of choices does: it loads them, and writes them all back.
        const auto other = defaults->stringForKey("other").value_or("default");
        defaults->setObject("other", other);
        defaults->setObject("mine", "new");
        done = defaults->synchronize();
    };
    const auto judge = [&] {
        const platform::Dictionary changed{{"other", "kept"}, {"mine", "new"}};
        if (!done->has_value()) {
            EXPECT_TRUE(dictionaryAt(path) == old || dictionaryAt(path + ".damaged") == old);
        }
        EXPECT_TRUE(defaults->synchronize());
        // Settings that could not be read when they were to be changed are kept beside the new ones.
        EXPECT_TRUE(dictionaryAt(path) == changed || dictionaryAt(path + ".damaged") == old);
        EXPECT_EQ(defaults->stringForKey("mine"), "new");
    };
    everyFault("defaults", {.prepare = prepare,
                            .run = run,
                            .judge = judge,
                            .release =
                                [&] {
                                    defaults.reset();
                                    release();
                                },
                            .judgeWithoutFault = [&] { EXPECT_TRUE(done->has_value()); }});
}
