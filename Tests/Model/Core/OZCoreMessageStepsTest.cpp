#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using tests::EngineFixture;

namespace {

constexpr uint64_t smart = 1;

void addDatabase(const EngineFixture& fixture, const std::string& table,
                 const std::vector<std::string>& paths) {
    const auto file = fixture.device.hostPath("/var/mobile/Library/SMS/sms.db");
    std::filesystem::create_directories(file.parent_path());
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    std::string statements = "create table " + table + " (a, b, c, d, path);";
    for (const auto& path : paths) {
        statements += "insert into " + table + " (path) values ('" + path + "');";
    }
    EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

void addAttachments(EngineFixture& fixture) {
    const std::string attachments = "/var/mobile/Library/SMS/Attachments";
    fixture.addFiles({attachments + "/aa/10/known/a.jpg", attachments + "/aa/10/known/b.jpg",
                      attachments + "/aa/10/gone/c.jpg", attachments + "/stray.jpg",
                      "/var/mobile/Library/SMS/Parts/00/known/d.jpg",
                      "/var/mobile/Library/SMS/Parts/00/e.jpg"});
    std::filesystem::create_directories(fixture.device.hostPath(attachments + "/bb/empty"));
    fixture.device.addLink(attachments + "/bb/link", "/var/mobile/Library/SMS/sms.db");
}

const std::vector<std::string> knownPaths = {
    "~/Library/SMS/Attachments/aa/10/known/a.jpg", "/var/mobile/Library/SMS/Attachments/aa/10/known/b.jpg",
    "/private/var/mobile/Library/SMS/Parts/00/known/d.jpg", "/var/mobile/Media/elsewhere/f.jpg"};

} // namespace

TEST(AttachmentsStep, SmartCleanupRemovesWhatTheDatabaseDoesNotKnow) {
    for (const auto mode : tests::allModes) {
        EngineFixture fixture;
        addAttachments(fixture);
        addDatabase(fixture, "attachment", knownPaths);
        const auto before = fixture.tree();
        fixture.run(cleanupstep::attachments, mode, smart);
        const std::string attachments = "/var/mobile/Library/SMS/Attachments";
        const std::vector<std::string> unknown = {attachments + "/aa/10/gone/c.jpg",
                                                  attachments + "/stray.jpg",
                                                  "/var/mobile/Library/SMS/Parts/00/e.jpg"};
        auto expected = before;
        if (mode != OZCoreMode::analyze) {
            for (const auto& path : unknown) {
                expected.erase(path);
                if (mode == OZCoreMode::test) {
                    expected.insert(path + ".OzvarineBackup");
                }
            }
        }
        std::vector<std::string> logged = unknown;
        if (mode == OZCoreMode::test) {
            expected.erase(attachments + "/bb/empty/");
            expected.insert(attachments + "/bb/empty.OzvarineBackup/");
        } else if (mode == OZCoreMode::clean) {
            expected.erase(attachments + "/bb/empty/");
            // The folder of the file that went is empty by then.
            logged.push_back(attachments + "/aa/10/gone");
        }
        logged.push_back(attachments + "/bb/empty");
        EXPECT_EQ(fixture.tree(), expected);
        EXPECT_THAT(fixture.loggedItems(), testing::UnorderedElementsAreArray(logged));
        EXPECT_EQ(fixture.core->fileCount(), logged.size());
        EXPECT_EQ(fixture.core->cleanupStepCount(), 1);
    }
}

TEST(AttachmentsStep, ASecondTestRunSumsTheSameFolders) {
    EngineFixture fixture;
    const auto folder = fixture.device.hostPath("/var/mobile/Library/SMS/Attachments/empty/er");
    std::filesystem::create_directories(folder);
    struct stat status {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    addDatabase(fixture, "attachment", {});
    for (int run = 0; run < 3; ++run) {
        fixture.run(cleanupstep::attachments, OZCoreMode::test, smart);
        EXPECT_EQ(fixture.core->freedSpace(), static_cast<uint64_t>(status.st_size)) << run;
    }
}

TEST(AttachmentsStep, AnyOtherSettingRemovesAll) {
    for (const uint64_t number : {2, 7}) {
        EngineFixture fixture;
        addAttachments(fixture);
        fixture.run(cleanupstep::attachments, OZCoreMode::clean, number);
        EXPECT_THAT(fixture.tree(), UnorderedElementsAre("/var/mobile/Library/SMS/Attachments/",
                                                         "/var/mobile/Library/SMS/Parts/"));
    }
}

TEST(AttachmentsStep, WithoutAListNothingIsDeleted) {
    EngineFixture fixture;
    addAttachments(fixture);
    fixture.device.addFile("/var/mobile/Library/SMS/sms.db", "no database");
    const auto before = fixture.tree();
    fixture.run(cleanupstep::attachments, OZCoreMode::clean, smart);
    EXPECT_EQ(fixture.tree(), before);
    EXPECT_EQ(fixture.core->cleanupStepCount(), 1);
    EXPECT_EQ(fixture.body(), "\nAn error occurred while reading the sms database. Skipping step...\n");
}

TEST(AttachmentsStep, TheTableIsThatOfTheGeneration) {
    for (const auto& [version, table] : {std::pair{991.9, "madrid_attachment"}, {992.0, "attachment"}}) {
        EngineFixture fixture(version);
        addDatabase(fixture, table, {"~/a/b"});
        EXPECT_THAT(fixture.run().attachmentPathsFromSMSDatabase(), testing::Optional(ElementsAre("a")))
            << version;
    }
}
