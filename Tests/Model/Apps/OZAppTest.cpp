#include "Model/Apps/OZApp.h"

#include <gtest/gtest.h>

namespace {

platform::Dictionary infoWith(platform::Dictionary more) {
    more.insert({{"Path", "/Applications/My Notes.app"},
                 {"CFBundleExecutable", "Main"},
                 {"CFBundleIdentifier", "org.example.notes"}});
    return more;
}

TEST(OZAppTest, takesTheFirstNameThatIsNoBlank) {
    const auto nameOf = [](platform::Dictionary more) {
        return OZApp::make(OZAppType::system, infoWith(std::move(more)))->displayName();
    };
    EXPECT_EQ(nameOf({{"CFBundleDisplayName", "Notes"}, {"CFBundleName", "N"}}), "Notes");
    EXPECT_EQ(nameOf({{"CFBundleDisplayName", " \t\u00A0"}, {"CFBundleName", "N"}}), "N");
    EXPECT_EQ(nameOf({{"CFBundleDisplayName", 7}, {"CFBundleName", ""}}), "My Notes");
}

TEST(OZAppTest, aUserApplicationNeedsItsDataContainer) {
    EXPECT_EQ(OZApp::make(OZAppType::user, infoWith({{"BundleContainer", "/b"}})), nullptr);
    EXPECT_EQ(OZApp::make(OZAppType::user, infoWith({{"Container", "/c"}}))->bundleContainer(), "/c");
    EXPECT_EQ(OZApp::make(OZAppType::user, infoWith({{"Container", "/c"}, {"BundleContainer", "/b"}}))
                  ->bundleContainer(),
              "/b");
    const auto system = OZApp::make(OZAppType::system, infoWith({}));
    EXPECT_FALSE(system->dataContainer() || system->bundleContainer());
}

TEST(OZAppTest, isNoRecordWithoutWhatNamesIt) {
    for (const auto* key : {"Path", "CFBundleExecutable", "CFBundleIdentifier"}) {
        auto info = infoWith({});
        info.erase(info.find(key));
        EXPECT_EQ(OZApp::make(OZAppType::system, info), nullptr) << key;
        info.emplace(key, "");
        EXPECT_EQ(OZApp::make(OZAppType::system, info), nullptr) << key;
    }
}

// The identifier becomes a name below the folders that a cleanup empties.
TEST(OZAppTest, refusesIdentifiersThatLeadOutOfAFolder) {
    for (const auto* identifier : {"..", ".", "../../Media", "a/b"}) {
        EXPECT_EQ(OZApp::make(OZAppType::system, infoWith({{"CFBundleIdentifier", identifier}})), nullptr)
            << identifier;
    }
}

} // namespace
