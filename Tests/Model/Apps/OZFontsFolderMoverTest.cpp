#include "Model/Apps/OZFontsFolderMover.h"

#include "Tests/Support/Mounts.h"
#include "Tests/Support/TemporaryDevice.h"

#include <fstream>
#include <functional>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using testing::HasSubstr;
using tests::inMountNamespace;
using tests::makeReadOnly;

namespace {

// What is below the tree's top: the content of files, where links lead.
using Tree = std::map<std::string, std::string>;

constexpr double iOS6 = 793.0;

struct Fonts {
    Fonts()
        : device(platform::DeviceFacts{.foundationVersion = iOS6}) {
        fs::create_directories(device.hostPath("/var"));
    }

    // An ordinary system folder of fonts.
    void addSystemFolder() {
        device.addFile("/System/Library/Fonts/Cache/Helvetica.ttc", std::string(40000, 'h'));
        device.addFile("/System/Library/Fonts/Core/Courier.ttf", "courier");
    }

    // Gives the error's text, empty for a move that went well.
    std::string move() {
        std::optional<OZFontsFolderError> error;
        const bool moved = OZFontsFolderMover(device.device()).moveFolder(&error);
        EXPECT_EQ(moved, !error.has_value());
        return error ? error->localizedDescription() : "";
    }

    [[nodiscard]] Tree tree() const {
        Tree entries;
        for (const auto& entry : fs::recursive_directory_iterator(device.folder() / "Root")) {
            const std::string path = entry.path().string().substr((device.folder() / "Root").string().size());
            if (entry.is_symlink()) {
                entries[path] = "-> " + fs::read_symlink(entry.path()).string();
            } else if (entry.is_regular_file()) {
                entries[path] = device.contents(path).substr(0, 10);
            }
        }
        return entries;
    }

    TemporaryDevice device;
};

const Tree inSystem = {{"/System/Library/Fonts/Cache/Helvetica.ttc", "hhhhhhhhhh"},
                       {"/System/Library/Fonts/Core/Courier.ttf", "courier"}};
const Tree inData = {{"/System/Library/Fonts", "-> /var/Fonts"},
                     {"/var/Fonts/Cache/Helvetica.ttc", "hhhhhhhhhh"},
                     {"/var/Fonts/Core/Courier.ttf", "courier"}};

void mountPages(const fs::path& folder) {
    tests::mountMemory(folder, 16384);
}

std::string described(const std::string& error, const Tree& tree) {
    std::string text = error + "\n";
    for (const auto& [path, what] : tree) {
        text += path + " " + what + "\n";
    }
    return text;
}

} // namespace

TEST(OZFontsFolderMover, MovesThereAndBack) {
    Fonts fonts;
    fonts.addSystemFolder();
    OZFontsFolderMover mover(fonts.device.device());
    EXPECT_EQ(mover.folderLocation(), OZFontsFolderLocation::system);
    EXPECT_GE(mover.folderSize(), 40007U);
    EXPECT_THAT(mover.humanReadableFolderSize(), testing::MatchesRegex("[0-9]+ KiB"));
    const auto sparse = fonts.device.hostPath("/System/Library/Fonts/Sparse.ttf");
    std::ofstream(sparse).close();
    fs::resize_file(sparse, uint64_t{2} << 40U);
    EXPECT_THAT(mover.humanReadableFolderSize(), testing::EndsWith(" GiB"));
    fs::remove(sparse);

    EXPECT_EQ(fonts.move(), "");
    EXPECT_EQ(fonts.tree(), inData);
    EXPECT_EQ(mover.folderLocation(), OZFontsFolderLocation::data);
    EXPECT_EQ(mover.currentFolderPath(), "/var/Fonts");
    EXPECT_GE(mover.folderSize(), 40007U);

    EXPECT_EQ(fonts.move(), "");
    EXPECT_EQ(fonts.tree(), inSystem);
    EXPECT_EQ(mover.folderLocation(), OZFontsFolderLocation::system);
}

TEST(OZFontsFolderMover, TellsLocationsByTheirPath) {
    const auto location = OZFontsFolderMover::locationForFolder;
    EXPECT_EQ(location(std::nullopt), OZFontsFolderLocation::unknown);
    EXPECT_EQ(location("/var/Fonts"), OZFontsFolderLocation::data);
    EXPECT_EQ(location("/private/var/Fonts"), OZFontsFolderLocation::data);
    EXPECT_EQ(location("/System/Library/Fonts"), OZFontsFolderLocation::system);
    EXPECT_EQ(location("/variable/Fonts"), OZFontsFolderLocation::system);
}

TEST(OZFontsFolderMover, MakesTheLeftoversOfAnEarlierMovePartOfTheFolder) {
    Fonts fonts;
    fonts.device.addFile("/System/Library/Fonts/Core/Courier.ttf", "courier");
    fonts.device.addLink("/System/Library/Fonts/Cache", "/var/stash/Cache");
    fonts.device.addFile("/var/stash/Cache/Helvetica.ttc", "helvetica");
    fonts.device.addFile("/var/Fonts/Extra/Times.ttf", "times");
    fonts.device.addFile("/var/Fonts/Core/Courier.ttf", "half a copy");
    EXPECT_EQ(fonts.move(), "");
    EXPECT_EQ(fonts.tree(), (Tree{{"/System/Library/Fonts", "-> /var/Fonts"},
                                  {"/var/Fonts/Cache/Helvetica.ttc", "helvetica"},
                                  {"/var/Fonts/Core/Courier.ttf", "courier"},
                                  {"/var/Fonts/Extra/Times.ttf", "times"}}));
}

TEST(OZFontsFolderMover, PutsAsideWhatStandsAtTheNewPlace) {
    Fonts fonts;
    fonts.addSystemFolder();
    fonts.device.addFile("/var/Fonts", "a file");
    EXPECT_EQ(fonts.move(), "");
    Tree expected = inData;
    expected["/var/FontsOLD"] = "a file";
    EXPECT_EQ(fonts.tree(), expected);
}

TEST(OZFontsFolderMover, StopsAtTheStepThatFailsAndLosesNothing) {
    const struct {
        const char* says;
        std::function<void(Fonts&)> prepare;
        Tree left;
    } cases[] = {
        {"There is no fonts folder", [](Fonts&) {}, {}},
        {"There is no fonts folder",
         [](Fonts& fonts) { fonts.device.addLink("/System/Library/Fonts", "/var/Fonts"); },
         {{"/System/Library/Fonts", "-> /var/Fonts"}}},
        {"There is no fonts folder",
         [](Fonts& fonts) { fonts.device.addFile("/System/Library/Fonts", "file"); },
         {{"/System/Library/Fonts", "file"}}},
        {"Could not look at /System/Library/Fonts/Cache: No such file",
         [](Fonts& fonts) { fonts.device.addFile("/System/Library/Fonts/Courier.ttf", "courier"); },
         {{"/System/Library/Fonts/Courier.ttf", "courier"}}},
        {"Could not move /var/Fonts to /var/FontsOLD: File exists",
         [](Fonts& fonts) {
             fonts.addSystemFolder();
             fonts.device.addFile("/var/Fonts", "new");
             fonts.device.addFile("/var/FontsOLD", "old");
         },
         {{"/System/Library/Fonts/Cache/Helvetica.ttc", "hhhhhhhhhh"},
          {"/System/Library/Fonts/Core/Courier.ttf", "courier"},
          {"/var/Fonts", "new"},
          {"/var/FontsOLD", "old"}}},
        {"Could not move /System/Library/Fonts to /var/Fonts: No such file",
         [](Fonts& fonts) {
             fonts.addSystemFolder();
             fs::remove(fonts.device.hostPath("/var"));
         },
         inSystem},
        {"Could not link /System/Library/Fonts to /var/Fonts: File exists",
         [](Fonts& fonts) {
             fonts.device.addLink("/System/Library/Fonts", "/Library/Moved");
             fonts.device.addFile("/Library/Moved/Cache/Helvetica.ttc", "helvetica");
         },
         {{"/System/Library/Fonts", "-> /Library/Moved"}, {"/var/Fonts/Cache/Helvetica.ttc", "helvetica"}}},
    };
    for (const auto& [says, prepare, left] : cases) {
        Fonts fonts;
        prepare(fonts);
        EXPECT_THAT(fonts.move(), HasSubstr(says));
        EXPECT_EQ(fonts.tree(), left) << says;
    }
}

TEST(OZFontsFolderMover, NamesItsOwnErrorByDomainAndCode) {
    Fonts fonts;
    std::optional<OZFontsFolderError> error;
    EXPECT_FALSE(OZFontsFolderMover(fonts.device.device()).moveFolder(&error));
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->code.category().name(), "Ozvarine");
    EXPECT_EQ(error->code.value(), -1);
}

TEST(OZFontsFolderMover, KeepsTheFontsOnAFullOrReadOnlyPartition) {
    const auto device = [](Fonts& fonts, std::string_view path) { return fonts.device.hostPath(path); };
    const struct {
        const char* name;
        std::string says;
        bool isOnData;
        std::function<void(Fonts&)> prepare;
        std::function<Tree()> left;
    } cases[] = {
        {"full data partition",
         "Could not move /System/Library/Fonts to /var/Fonts: No space left on device.", false,
         [&](Fonts& fonts) { mountPages(device(fonts, "/var")); }, [] { return inSystem; }},
        {"read-only data partition",
         "Could not move /System/Library/Fonts to /var/Fonts: Read-only file system.", false,
         [&](Fonts& fonts) { makeReadOnly(device(fonts, "/var")); }, [] { return inSystem; }},
        // The copy is there as a whole; what is left of the original stays.
        {"read-only system partition",
         "Could not move /System/Library/Fonts to /var/Fonts: Read-only file system.", false,
         [&](Fonts& fonts) { makeReadOnly(device(fonts, "/System")); },
         [] {
             Tree both = inData;
             both.erase("/System/Library/Fonts");
             both.insert(inSystem.begin(), inSystem.end());
             return both;
         }},
        {"read-only system partition on the way back",
         "Could not remove the link /System/Library/Fonts: Read-only file system.", true,
         [&](Fonts& fonts) { makeReadOnly(device(fonts, "/System")); }, [] { return inData; }},
        {"full system partition on the way back",
         "Could not move /var/Fonts to /System/Library/Fonts: No space left on device.", true,
         [&](Fonts& fonts) {
             mountPages(device(fonts, "/System/Library"));
             fonts.device.addLink("/System/Library/Fonts", "/var/Fonts");
         },
         [] {
             Tree withoutLink = inData;
             withoutLink.erase("/System/Library/Fonts");
             return withoutLink;
         }},
    };
    for (const auto& item : cases) {
        Fonts fonts;
        fonts.addSystemFolder();
        if (item.isOnData) {
            ASSERT_EQ(fonts.move(), "");
        }
        const auto outcome = inMountNamespace([&] {
            item.prepare(fonts);
            // Opened again, since folders are held by their descriptors and these are below new mounts.
            const auto opened = platform::Device::open(fonts.device.folder().string());
            std::optional<OZFontsFolderError> error;
            OZFontsFolderMover(**opened).moveFolder(&error);
            return described(error ? error->localizedDescription() : "no error", fonts.tree());
        });
        if (!outcome) {
            GTEST_SKIP() << "needs the right to make a mount namespace";
        }
        EXPECT_EQ(*outcome, described(item.says, item.left())) << item.name;
    }
}
