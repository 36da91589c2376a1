// The file manager's greater operations with one call to the system failing: they tell it, and nothing gets
// lost.
#include "Platform/UserDefaults.h"
#include "Tests/Faults/EveryFault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

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

TEST_F(FileManagerFaults, WrittenFileIsTheOldOneOrTheNew) {
    everyFault("write", {.prepare = [&] { makeDevice(); },
                         .run = [&] { done = fileManager->writeContents("/to/kept", "new"); },
                         .judge =
                             [&] {
                                 auto after = treeOf(*device);
                                 const std::string content = std::exchange(after["/to/kept"], "/to/kept");
                                 EXPECT_EQ(content, done->has_value() ? "new" : "/to/kept");
                                 // A file that could not even be unlinked may stay behind; it hides nothing.
                                 EXPECT_THAT(missingFrom(after, before), IsEmpty());
                             },
                         .release = [&] { release(); },
                         .judgeWithoutFault = [&] { EXPECT_TRUE(done->has_value()); }});
}

TEST_F(FileManagerFaults, StoredChoicesSurvive) {
    const std::string path = "/var/mobile/Library/Preferences/p.plist";
    platform::NotificationCenter center;
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
        defaults = std::make_unique<platform::UserDefaults>(*fileManager, center, path);
    };
    const auto run = [&] {
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
