#include "Model/Items/Togglable/OZPreferenceBundleList.h"

#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"
#include "Tests/Support/TemporaryDevice.h"

#include <gmock/gmock.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string folder = "/Library/PreferenceLoader/Preferences/";

std::string page(const std::string& entry) {
    return "<plist><dict><key>entry</key><dict>" + entry + "</dict></dict></plist>";
}

std::string text(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
}

std::string versions(const std::string& values) {
    return "<key>pl_filter</key><dict><key>CoreFoundationVersion</key>" + values + "</dict>";
}

class PreferenceBundles : public testing::Test {
  protected:
    void add(const std::string& name, const std::string& entry) {
        device.addFile(folder + name, page(entry));
    }
    [[nodiscard]] std::shared_ptr<OZPreferenceBundle> make(const std::string& name) {
        return OZPreferenceBundle::make(device.device(), name, name);
    }
    /// "group: members" of a new list; disabled members have a "-" in front.
    [[nodiscard]] std::vector<std::string> found() {
        std::vector<std::string> lines;
        OZPreferenceBundleList list(device.device());
        for (const auto& group : list.groups()) {
            std::string line = group->identifier() + ":";
            for (const auto& bundle : group->bundles()) {
                line += (bundle->currentEnabledState() ? " " : " -") + bundle->identifier();
            }
            lines.push_back(line);
        }
        return lines;
    }

    TemporaryDevice device{platform::DeviceFacts{.coreFoundationVersion = 1100}};
};

TEST_F(PreferenceBundles, AreThePropertyListsOfPages) {
    EXPECT_THAT(found(), IsEmpty());
    add("Plain.plist", text("label", "A page"));
    add("Off.disabled", text("label", "Off"));
    add("Below/Deeper/Page.plist", text("label", "Below"));
    add("NoLabel.plist", text("bundle", "B"));
    add("Page.txt", text("label", "Text"));
    device.addFile(folder + "NoEntry.plist", "<plist><dict/></plist>");
    device.addFile(folder + "TextEntry.plist",
                   "<plist><dict><key>entry</key><string>label</string></dict></plist>");
    device.addFile(folder + "Broken.plist", "<plist><dict>");
    device.addFile(folder + "NumberLabel.plist", page("<key>label</key><integer>1</integer>"));
    EXPECT_THAT(found(), ElementsAre("Below/Deeper/Page: Below/Deeper/Page", "Off: -Off", "Plain: Plain"));
    EXPECT_EQ(make("Plain")->title(), "A page");
    EXPECT_FALSE(make("Off")->enabledState());
    EXPECT_EQ(make("Missing"), nullptr);
}

TEST_F(PreferenceBundles, MayBeInTheTextFormat) {
    device.addFile(folder + "Old.plist", "entry = { label = \"An old page\"; bundle = Old; "
                                         "pl_filter = { CoreFoundationVersion = ( 1000, 1100 ); }; };\n");
    EXPECT_THAT(found(), ElementsAre("Old: Old"));
    EXPECT_EQ(make("Old")->title(), "An old page");
    EXPECT_FALSE(make("Old")->isForCurrentiOSVersion());
}

TEST_F(PreferenceBundles, OfOneBundleAreSwitchedTogether) {
    add("New.plist", text("label", "New") + text("bundle", "Shared"));
    add("Below/Old.plist", text("label", "Old") + text("bundle", "Shared"));
    add("Other.plist", text("label", "Other") + text("bundle", "Other"));
    EXPECT_THAT(found(), ElementsAre("Below/Old: Below/Old New", "Other: Other"));
    OZPreferenceBundleList list(device.device());
    const auto group = list.itemWithIdentifier("Below/Old");
    EXPECT_EQ(group->title(), "Old");
    group->setEnabledState(false);
    EXPECT_TRUE(list.applyChanges());
    EXPECT_THAT(found(), ElementsAre("Below/Old: -Below/Old -New", "Other: Other"));
    fs::rename(device.hostPath(folder + "New.disabled"), device.hostPath(folder + "New.plist"));
    EXPECT_FALSE(group->currentEnabledState()) << "all of them have to be enabled";
}

TEST_F(PreferenceBundles, AreForARangeOfVersions) {
    const struct {
        const char* values;
        std::vector<double> current;
        std::vector<double> others;
    } rows[] = {
        {"<array><real>1000</real><real>1200</real></array>", {1000, 1199.9}, {999.9, 1200, 2000}},
        {"<array><integer>1000</integer></array>", {1000, 9000}, {999}},
        {"<array/>", {0, 1000}, {-1}},
        {"<array><string>x</string><real>1200</real></array>", {0, 1199}, {1200}},
        {"<array><real>10</real><dict/></array>", {10, 9000}, {9}},
        {"<string>1000</string>", {0, 1000}, {}},
        {"<array><string>1000.5</string><string>1200</string></array>", {1000.5, 1199}, {1000, 1200}},
    };
    for (const auto& row : rows) {
        for (const bool expected : {true, false}) {
            for (const double version : expected ? row.current : row.others) {
                TemporaryDevice other(platform::DeviceFacts{.coreFoundationVersion = version});
                other.addFile(folder + "Page.plist", page(text("label", "Page") + versions(row.values)));
                EXPECT_EQ(OZPreferenceBundle::make(other.device(), "Page", "Page")->isForCurrentiOSVersion(),
                          expected)
                    << row.values << " on " << version;
            }
        }
    }
    add("All.plist", text("label", "All"));
    EXPECT_TRUE(make("All")->isForCurrentiOSVersion());
}

TEST_F(PreferenceBundles, GroupsAreShownAsTheirLastBundleForTheVersion) {
    const std::string common = text("label", "Page") + text("bundle", "Shared");
    add("1.plist", common + text("icon", "/1.png"));
    add("2.plist", common + text("icon", "/2.png") + versions("<array><real>1100</real></array>"));
    add("3.plist", common + text("icon", "/3.png") + versions("<array><real>1101</real></array>"));
    OZPreferenceBundleList list(device.device());
    ASSERT_EQ(list.groups().size(), 1);
    EXPECT_EQ(list.groups().front()->bundleForCurrentiOSVersion()->identifier(), "2");
    EXPECT_EQ(list.groups().front()->iconURL(), "file:///2.png");
    EXPECT_EQ(list.groups().front()->package(), nullptr);
    EXPECT_EQ(OZPreferenceBundleGroup::make("none", {}), nullptr);
}

TEST_F(PreferenceBundles, IconsAreSearchedInTheBundleAndThenBesideThePage) {
    const std::string inLibrary = "/Library/PreferenceBundles/B.bundle/";
    const std::string inSystem = "/System/Library/PreferenceBundles/B.bundle/";
    const struct {
        const char* icon;
        std::vector<std::string> files;
        std::optional<std::string> found;
    } rows[] = {
        {"/any where.png", {}, "/any where.png"},
        {"i.png", {inLibrary + "i@2x.png", inLibrary + "i.png", inSystem + "i.png"}, inLibrary + "i.png"},
        {"i.png", {inLibrary + "i@3x.png", inSystem + "i.png"}, inLibrary + "i@3x.png"},
        {"i.png", {inSystem + "i@2x.png", folder + "Below/i.png"}, inSystem + "i@2x.png"},
        {"sub/i", {inLibrary + "sub/i"}, inLibrary + "sub/i"},
        {"i.png", {folder + "Below/i.png", folder + "i.png"}, folder + "Below/i.png"},
        {"i.png", {folder + "Below/i@2x.png"}, std::nullopt},
        {"", {folder + "Below/.png"}, std::nullopt},
    };
    for (const auto& row : rows) {
        fs::remove_all(device.hostPath("/Library"));
        fs::remove_all(device.hostPath("/System"));
        add("Below/Page.plist", text("label", "Page") + text("bundle", "B") + text("icon", row.icon));
        for (const auto& file : row.files) {
            device.addFile(file);
        }
        const auto bundle = make("Below/Page");
        const auto expected = row.found ? std::optional("file://" + *row.found) : std::nullopt;
        EXPECT_EQ(bundle->iconURL(),
                  expected && expected->contains(' ') ? "file:///any%20where.png" : expected)
            << row.icon;
        device.addFile(inLibrary + "i.png");
        EXPECT_EQ(bundle->iconURL().has_value(), row.found.has_value()) << "it is searched once";
        bundle->setIconURL("other");
        EXPECT_EQ(bundle->iconURL(), "other");
    }
}

} // namespace
