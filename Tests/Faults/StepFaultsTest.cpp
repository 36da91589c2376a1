// Steps that spare what databases, applications and choices name, with one call to the system failing: what
// nobody could read is no reason to delete more.
#include "Model/Apps/OZAppList.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCore.h"
#include "Tests/Faults/EveryFault.h"
#include "Tests/Model/Apps/AppTree.h"

#include <functional>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

using tests::everyFault;
using tests::missingFrom;
using tests::treeOf;

namespace {

const std::string attachments = "/var/mobile/Library/SMS/Attachments/";
const std::string bundles = "/var/containers/Bundle/Application/";
const std::string data = "/var/mobile/Containers/Data/Application/";
constexpr const char* settings = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";

std::string bundleOf(const std::string& identifier) {
    return bundles + identifier + "/" + identifier + ".app";
}

class StepFaults : public testing::Test {
  protected:
    void makeDevice() {
        device = std::make_unique<TemporaryDevice>(
            platform::DeviceFacts{.foundationVersion = 1445.32, .hardwareModel = "iPhone8,2"});
        addMessages();
        tests::AppTree tree(*device);
        for (const std::string identifier : {"org.example.cleaned", "org.example.excluded"}) {
            tree.addContainer(bundles + identifier, identifier);
            tree.addBundle(bundleOf(identifier), identifier);
            tree.addContainer(data + identifier, identifier);
            device->addFile(data + identifier + "/Library/Caches/cached", identifier);
            device->addFile(data + identifier + "/Documents/diary.log", identifier);
            for (const char* name : {"fr.lproj/a.strings", "de.lproj/a.strings", "icon.png", "icon@2x.png"}) {
                device->addFile(bundleOf(identifier) + "/" + name, identifier);
            }
        }
        device->addFile("/var/mobile/Library/Auxo/Snapshots/org.example.excluded/snapshot", "x");
        device->addFile("/var/mobile/Library/Auxo/Snapshots/org.example.gone/snapshot", "x");
        device->addFile("/d/note.log", "x");
        tree.addPlist(settings, choices());
        before = treeOf(*device);
        std::ignore = device->device();
    }
    void addMessages() {
        device->addFile(attachments + "aa/known.jpg", "known");
        device->addFile(attachments + "bb/unknown.jpg", "unknown");
        device->addFile("/var/mobile/Library/SMS/sms.db");
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(device->hostPath("/var/mobile/Library/SMS/sms.db").c_str(), &database),
                  SQLITE_OK);
        const std::string rows = "pragma synchronous = off;"
                                 "create table attachment (a, b, c, d, path);"
                                 "insert into attachment (path) values ('" +
                                 attachments + "aa/known.jpg');";
        EXPECT_EQ(sqlite3_exec(database, rows.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }
    static platform::Dictionary choices() {
        platform::Dictionary steps;
        for (const auto& step : cleanupSteps) {
            steps[std::string(step.key)] = uint64_t{step.key != cleanupstep::dependencies};
        }
        return {{"cleanupSettings", steps},
                {"fileTypes", platform::Array{"log"}},
                {"languagesToRemove", platform::Array{"French"}},
                {"excludedApps", platform::Dictionary{
                                     {"org.example.excluded", static_cast<uint64_t>(OZExclusionMask::all)}}}};
    }
    /// What the action takes when nothing fails; with a fault it must take nothing else.
    std::set<std::string> takesNothingElse(const std::string& name,
                                           const std::function<void(OZCore&)>& action) {
        // As the program does it: everything is read anew.
        const auto run = [&] {
            if (!device->device().standardUserDefaults().readError()) {
                OZModelBuilder builder(device->device());
                action(builder.core());
            }
        };
        makeDevice();
        run();
        const auto taken = missingFrom(treeOf(*device), before);
        const std::set<std::string> rightful(taken.begin(), taken.end());
        everyFault(name, {.prepare = [&] { makeDevice(); },
                          .run = run,
                          .judge =
                              [&] {
                                  for (const auto& path : missingFrom(treeOf(*device), before)) {
                                      EXPECT_TRUE(rightful.contains(path)) << path;
                                  }
                              },
                          .release = [&] { device.reset(); },
                          .judgeWithoutFault = nullptr});
        return rightful;
    }

    std::unique_ptr<TemporaryDevice> device;
    tests::Tree before;
};

} // namespace

TEST_F(StepFaults, CleanupSparesWhatIsKnownAndExcluded) {
    const auto taken =
        takesNothingElse("cleanup by choices", [](OZCore& core) { core.clean(nullptr, Analyze::no); });
    EXPECT_TRUE(taken.contains(attachments + "bb/unknown.jpg"));
    EXPECT_FALSE(taken.contains(attachments + "aa/known.jpg"));
    EXPECT_TRUE(taken.contains(data + "org.example.cleaned/Documents/diary.log"));
    EXPECT_TRUE(taken.contains(data + "org.example.cleaned/Library/Caches/cached"));
    EXPECT_FALSE(taken.contains(data + "org.example.excluded/Documents/diary.log"));
    EXPECT_FALSE(taken.contains(data + "org.example.excluded/Library/Caches/cached"));
    EXPECT_TRUE(taken.contains("/var/mobile/Library/Auxo/Snapshots/org.example.gone/snapshot"));
    EXPECT_FALSE(taken.contains("/var/mobile/Library/Auxo/Snapshots/org.example.excluded/snapshot"));
}

TEST_F(StepFaults, RemovalsSpareWhatIsExcluded) {
    const auto languages = takesNothingElse(
        "languages", [](OZCore& core) { core.remove(OZAction::removeLanguages, Analyze::no); });
    EXPECT_TRUE(languages.contains(bundleOf("org.example.cleaned") + "/fr.lproj/a.strings"));
    EXPECT_FALSE(languages.contains(bundleOf("org.example.cleaned") + "/de.lproj/a.strings"));
    EXPECT_FALSE(languages.contains(bundleOf("org.example.excluded") + "/fr.lproj/a.strings"));
    const auto images =
        takesNothingElse("images", [](OZCore& core) { core.remove(OZAction::remove1xImages, Analyze::no); });
    EXPECT_TRUE(images.contains(bundleOf("org.example.cleaned") + "/icon.png"));
    EXPECT_FALSE(images.contains(bundleOf("org.example.excluded") + "/icon.png"));
}
