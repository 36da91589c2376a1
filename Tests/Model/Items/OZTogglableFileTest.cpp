#include "Model/Items/Togglable/OZTogglableItemList.h"
#include "Model/Items/Togglable/OZTogglablePkgFile.h"
#include "Model/Packages/OZPackageList.h"
#include "Tests/Model/Packages/PackageDatabase.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;

constexpr const char* enabledPath = "/on/file.plist";
constexpr const char* disabledPath = "/off/below/file.plist";

class TogglableFile : public testing::Test {
  protected:
    [[nodiscard]] std::shared_ptr<OZTogglableFile> make() {
        return OZTogglableFile::make(device.device(), "id", enabledPath, disabledPath);
    }
    [[nodiscard]] fs::file_status status(std::string_view path) const {
        return fs::symlink_status(device.hostPath(path));
    }

    TemporaryDevice device;
};

TEST_F(TogglableFile, IsMadeInTheStateThatItIsFoundIn) {
    EXPECT_EQ(make(), nullptr);
    fs::create_directories(device.hostPath(enabledPath));
    EXPECT_EQ(make(), nullptr) << "a folder is no such file";
    device.addLink(disabledPath, "/nowhere");
    const auto disabled = make();
    ASSERT_NE(disabled, nullptr) << "a link to nothing is";
    EXPECT_FALSE(disabled->enabledState());
    EXPECT_EQ(disabled->currentPath(), disabledPath);

    fs::remove_all(device.hostPath(enabledPath));
    device.addFile(enabledPath);
    const auto enabled = make();
    EXPECT_TRUE(enabled->enabledState());
    EXPECT_EQ(enabled->currentPath(), enabledPath);
    EXPECT_THROW(OZTogglableFile::make(device.device(), "", enabledPath, disabledPath),
                 platform::AssertionFailure);
    EXPECT_EQ(OZTogglableFile::make(device.device(), "id", "file"), nullptr) << "it has no folders";
}

TEST_F(TogglableFile, MovesWhenChangesAreAppliedAndNotBefore) {
    device.addFile(enabledPath, "content");
    const auto file = make();
    EXPECT_FALSE(file->applyChanges());
    file->setEnabledState(false);
    EXPECT_TRUE(file->currentEnabledState());
    file->setEnabledState(true);
    EXPECT_FALSE(file->applyChanges());
    file->setEnabledState(false);
    EXPECT_TRUE(file->discardChanges());
    EXPECT_FALSE(file->discardChanges());
    EXPECT_TRUE(file->enabledState());

    file->setEnabledState(false);
    EXPECT_TRUE(file->applyChanges());
    EXPECT_FALSE(file->applyChanges());
    EXPECT_FALSE(fs::exists(status(enabledPath)));
    EXPECT_EQ(device.contents(disabledPath), "content");
    fs::remove(device.hostPath(disabledPath));
    file->setEnabledState(true);
    EXPECT_FALSE(file->applyChanges()) << "it is gone";
    EXPECT_TRUE(file->enabledState());
}

TEST_F(TogglableFile, ReplacesWhatStandsInItsWay) {
    device.addFile(enabledPath, "new");
    device.addFile(disabledPath, "old");
    auto file = make();
    EXPECT_TRUE(file->enabledState());
    file->setEnabledState(false);
    EXPECT_TRUE(file->applyChanges());
    EXPECT_EQ(device.contents(disabledPath), "new");

    fs::remove_all(device.hostPath("/on"));
    device.addFile("/on", "no folder");
    file->setEnabledState(true);
    EXPECT_TRUE(file->applyChanges());
    EXPECT_EQ(device.contents(enabledPath), "new");
}

TEST_F(TogglableFile, MovesThroughALinkToAFolderAndReplacesOneThatLeadsToNone) {
    struct {
        const char* destination;
        bool stays;
    } const rows[] = {{"/elsewhere", true},       {"../elsewhere", true}, {"/twice", true},
                      {"/elsewhere/file", false}, {"/nowhere", false},    {"../no/where", false}};
    for (const auto& [destination, stays] : rows) {
        TemporaryDevice tree;
        tree.addFile(enabledPath, "new");
        tree.addFile("/elsewhere/neighbour", "kept");
        tree.addFile("/elsewhere/file", "kept");
        tree.addLink("/twice", "/elsewhere/../elsewhere");
        tree.addLink("/off/below", destination);
        const auto file = OZTogglableFile::make(tree.device(), "id", enabledPath, disabledPath);
        file->setEnabledState(false);
        EXPECT_TRUE(file->applyChanges()) << destination;
        EXPECT_EQ(fs::is_symlink(tree.hostPath("/off/below")), stays) << destination;
        EXPECT_EQ(tree.contents(stays ? "/elsewhere/file.plist" : disabledPath), "new") << destination;
        EXPECT_EQ(tree.contents("/elsewhere/neighbour") + tree.contents("/elsewhere/file"), "keptkept");
        file->setEnabledState(true);
        EXPECT_TRUE(file->applyChanges());
        EXPECT_EQ(tree.contents(enabledPath), "new");
    }
}

class InOneFolder : public OZTogglablePkgFile {
  public:
    using OZTogglablePkgFile::OZTogglablePkgFile;
    static std::optional<std::string_view> enabledFolder() { return "/Library/Loaded/"; }
    static std::optional<std::string_view> disabledFolder() { return "/Library/Loaded"; }
    static std::optional<std::string_view> enabledExtension() { return "dylib"; }
    static std::optional<std::string_view> disabledExtension() { return "disabled"; }
};

TEST_F(TogglableFile, ALinkToTheFolderOfBothPathsStays) {
    device.addFile("/usr/lib/Loaded/a.dylib");
    device.addLink("/Library/Loaded", "/usr/lib/Loaded");
    const auto file = OZTogglableFile::make<InOneFolder>(device.device(), "id", "a");
    ASSERT_NE(file, nullptr);
    // As text they differ by a "/".
    EXPECT_EQ(file->enabledPath(), "/Library/Loaded/a.dylib");
    EXPECT_EQ(file->disabledPath(), "/Library/Loaded/a.disabled");
    file->setEnabledState(false);
    EXPECT_TRUE(file->applyChanges());
    EXPECT_TRUE(fs::exists(status("/usr/lib/Loaded/a.disabled")));
    EXPECT_TRUE(fs::is_symlink(status("/Library/Loaded")));
}

TEST(TogglablePkgFile, StaysItsPackagesOwnWhileDisabled) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, or a user namespace that maps it";
    }
    tests::PackageDatabase database;
    auto& device = database.device;
    database.install("com.tweak", "", {"/Library/Loaded/a.dylib", "/Library/Loaded/b.dylib"});
    OZPackageList packages(device.device());
    const auto a = OZTogglableFile::make<InOneFolder>(device.device(), "a", "a");
    const auto b = OZTogglableFile::make<InOneFolder>(device.device(), "b", "b");
    const std::string before = device.contents("/var/lib/dpkg/info/com.tweak.list");
    for (const auto& file : {a, b}) {
        file->setPackage(packages.packageWithIdentifier("com.tweak"));
        file->setEnabledState(false);
        EXPECT_TRUE(file->applyChanges());
        EXPECT_EQ(packages.packagesForFileAtPath(file->disabledPath()).value().size(), 1);
    }
    a->setEnabledState(true);
    EXPECT_TRUE(a->applyChanges());
    EXPECT_EQ(packages.packagesForFileAtPath(a->disabledPath()), std::nullopt);
    EXPECT_EQ(device.contents("/var/lib/dpkg/info/com.tweak.list"), before + b->disabledPath() + "\n");

    database.host("dpkg --root=Root --log=/dev/null -P com.tweak");
    EXPECT_FALSE(fs::exists(device.hostPath(b->disabledPath())));

    device.addFile("/Library/Loaded/b.disabled");
    b->setEnabledState(true);
    EXPECT_TRUE(b->applyChanges()) << "the move stands without a list";
    EXPECT_TRUE(b->currentEnabledState());
}

/// An item that is in no file.
class Wish : public OZTogglableItem {
  public:
    Wish(std::string identifier, std::string title, bool current)
        : _identifier(std::move(identifier))
        , _title(std::move(title))
        , _current(current)
        , _wanted(current) {}

    [[nodiscard]] std::string identifier() const override { return _identifier; }
    [[nodiscard]] std::string title() const override { return _title; }
    void setTitle(std::string title) override { _title = std::move(title); }
    bool applyChanges() override { return std::exchange(_current, _wanted) != _wanted; }
    bool discardChanges() override { return std::exchange(_wanted, _current) != _current; }
    [[nodiscard]] bool currentEnabledState() override { return _current; }
    [[nodiscard]] bool enabledState() override { return _wanted; }
    void setEnabledState(bool enabled) override { _wanted = enabled; }

  private:
    std::string _identifier;
    std::string _title;
    bool _current;
    bool _wanted;
};

class WishList : public OZTogglableItemList {
  public:
    explicit WishList(bool prefersEnabled, std::vector<std::shared_ptr<Wish>> wishes)
        : _prefersEnabled(prefersEnabled)
        , _wishes(std::move(wishes)) {}
    [[nodiscard]] bool prefersEnabledState() const override { return _prefersEnabled; }

  protected:
    void initializeItems() override {
        for (const auto& wish : _wishes) {
            protectedItems().emplace(wish->identifier(), wish);
        }
    }

  private:
    bool _prefersEnabled;
    std::vector<std::shared_ptr<Wish>> _wishes;
};

TEST(TogglableItemList, BehavesAsOneItem) {
    for (const bool prefersEnabled : {false, true}) {
        WishList empty(prefersEnabled, {});
        EXPECT_EQ(empty.currentEnabledState(), !prefersEnabled);
        EXPECT_FALSE(empty.applyChanges());

        const auto on = std::make_shared<Wish>("on", "", true);
        const auto off = std::make_shared<Wish>("off", "", false);
        WishList mixed(prefersEnabled, {on, off});
        EXPECT_EQ(mixed.currentEnabledState(), prefersEnabled);
        EXPECT_EQ(mixed.enabledState(), prefersEnabled);
        mixed.setEnabledState(false);
        EXPECT_EQ(mixed.currentEnabledState(), prefersEnabled);
        EXPECT_FALSE(mixed.enabledState());
        EXPECT_TRUE(mixed.discardChanges());
        EXPECT_TRUE(on->enabledState() && !off->enabledState());
        mixed.setEnabledState(true);
        EXPECT_TRUE(mixed.applyChanges());
        EXPECT_FALSE(mixed.applyChanges());
        EXPECT_TRUE(off->currentEnabledState());
    }
}

TEST(TogglableItemList, SortsOnceByTitleWithoutCase) {
    WishList list(false,
                  {std::make_shared<Wish>("1", "beta", true), std::make_shared<Wish>("2", "Alpha", true),
                   std::make_shared<Wish>("Y", "\xC3\x84hre", true),
                   std::make_shared<Wish>("x", "\xC3\xA4HRE", true)});
    const auto identifiers = [&] {
        std::vector<std::string> sorted;
        for (const auto& item : list.itemsSortedByTitle()) {
            sorted.push_back(item->identifier());
        }
        return sorted;
    };
    EXPECT_THAT(identifiers(), ElementsAre("2", "1", "x", "Y"));
    list.itemWithIdentifier("2")->setTitle("zeta");
    EXPECT_THAT(identifiers(), ElementsAre("2", "1", "x", "Y"));
    EXPECT_EQ(list.itemWithIdentifier("3"), nullptr);
}

} // namespace
