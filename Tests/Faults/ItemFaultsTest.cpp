// Switching items off and on with one call to the system failing: their files and those beside them stay.
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Items/Togglable/OZTogglableFile.h"
#include "Tests/Faults/EveryFault.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using tests::everyFault;
using tests::treeOf;

namespace {

class ItemFaults : public testing::Test {
  protected:
    /// The names and contents of all files, wherever they are, sorted.
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> files;
        for (const auto& [path, content] : treeOf(*device)) {
            if (!path.ends_with('/') && !content.starts_with("-> ")) {
                files.push_back(path.substr(path.rfind('/') + 1) + ": " + content);
            }
        }
        std::ranges::sort(files);
        return files;
    }

    std::unique_ptr<TemporaryDevice> device;
    std::vector<std::string> before;
};

} // namespace

TEST_F(ItemFaults, SwitchedItemsAndTheirNeighboursStay) {
    for (const bool enabled : {true, false}) {
        std::shared_ptr<OZTogglableFile> item;
        everyFault(enabled ? "switching off" : "switching on",
                   {.prepare =
                        [&] {
                            device = std::make_unique<TemporaryDevice>();
                            for (const char* path : {enabled ? "/on/item.plist" : "/off/item.plist",
                                                     "/on/other", "/off/another"}) {
                                device->addFile(path, path);
                            }
                            before = files();
                            item = OZTogglableFile::make(device->device(), "id", "/on/item.plist",
                                                         "/off/item.plist");
                            item->setEnabledState(!enabled);
                        },
                    .run = [&] { std::ignore = item->applyChanges(); },
                    .judge = [&] { EXPECT_EQ(files(), before); },
                    .release =
                        [&] {
                            item.reset();
                            device.reset();
                        },
                    .judgeWithoutFault = [&] { EXPECT_EQ(item->currentEnabledState(), !enabled); }});
    }
}

TEST_F(ItemFaults, FontsThatCannotBeListedAreNotRemoved) {
    const auto prepare = [&] {
        device = std::make_unique<TemporaryDevice>();
        device->addFile("/System/Library/Fonts/Cache/fonts", "fonts");
        device->addFile("/var/Fonts/mine.ttf", "mine");
        before = files();
    };
    const auto move = [&] { std::ignore = OZFontsFolderMover(device->device()).moveFolder(nullptr); };
    prepare();
    const auto reads = tests::countCalls(move)["getdents64"];
    ASSERT_GT(reads, 0U);
    for (size_t number = 1; number <= reads; ++number) {
        prepare();
        tests::runWithFault({.call = "getdents64", .number = number, .error = EIO}, move);
        EXPECT_EQ(files(), before) << "read " << number;
    }
}
