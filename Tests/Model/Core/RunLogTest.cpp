// The log of a run beside the device's own file: what is told of one that could not be written, and its copy.

#include "Model/Core/CleanupSteps.h"
#include "Platform/Device/HostOutput.h"
#include "Tests/Support/EngineFixture.h"
#include "Tests/Support/Mounts.h"
#include "Tests/Support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::EndsWith;
using testing::HasSubstr;
using tests::EngineFixture;
using tests::TemporaryFolder;

namespace {

const std::string logFolder = "/var/mobile/Library/Ozvarine";
const std::string incomplete = "The log /var/mobile/Library/Ozvarine/junk.txt could not be written in full: ";

void sendLogTo(EngineFixture& engine, const std::string& path) {
    auto& device = engine.device.device();
    engine.core->cleanupLogger()->setHostOutput(
        platform::HostOutput::open(path, device.fileManager().rootDescriptor()).value());
}

// Leaves so many bytes free.
void fillUp(const std::filesystem::path& file, uint64_t bytes) {
    const auto space = std::filesystem::space(file.parent_path());
    std::ofstream(file) << std::string(space.available - bytes, 'b');
}

} // namespace

TEST(RunLog, IsTheSameOnTheHostByteForByte) {
    const TemporaryFolder host;
    EngineFixture engine;
    sendLogTo(engine, host.path("log"));
    for (int number = 0; number < 3000; ++number) {
        engine.addFiles({"/var/tmp/some folder/and a long name of file number " + std::to_string(number)});
    }
    for (const auto mode : tests::allModes) {
        engine.clean({cleanupstep::tempFiles, cleanupstep::cacheFiles}, mode);
        EXPECT_EQ(host.content("log"), engine.log());
        EXPECT_THAT(engine.log(), HasSubstr("\nNumber of files: 3000\n"));
        if (mode == OZCoreMode::test) {
            engine.core->backup(BackupAction::restore);
            EXPECT_EQ(host.content("log"), engine.log());
            EXPECT_THAT(engine.log(), HasSubstr("RESTORED FILES"));
        }
    }
}

TEST(RunLog, ThatCannotBeWrittenIsToldOnceARun) {
    const struct {
        const char* name;
        void (*disturb)(EngineFixture&);
        bool hasHostOutput;
        std::string told;
    } cases[] = {
        {"a folder that cannot be written",
         [](EngineFixture& engine) { tests::makeReadOnly(engine.device.hostPath(logFolder)); }, false,
         incomplete + "Read-only file system.\n"},
        {"a folder that cannot be made, and an output on the host",
         [](EngineFixture& engine) {
             std::filesystem::remove(engine.device.hostPath(logFolder));
             tests::makeReadOnly(engine.device.hostPath("/var/mobile/Library"));
         },
         true, incomplete + "Read-only file system. The one on this host is whole.\n"},
        {"a disk that is full in the middle of the run",
         [](EngineFixture& engine) { fillUp(engine.device.hostPath("/ballast"), 16384); }, true,
         incomplete + "No space left on device. The one on this host is whole.\n"},
        {"nothing", [](EngineFixture&) {}, true, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder host;
        const TemporaryFolder memory;
        const auto outcome = tests::inMountNamespace([&] {
            tests::mountMemory(memory.path(), 16U << 20U);
            ::setenv("TMPDIR", memory.path().c_str(), 1);
            EngineFixture engine;
            std::filesystem::create_directories(engine.device.hostPath(logFolder));
            for (int number = 0; number < 1000; ++number) {
                engine.addFiles({"/var/tmp/a long name of a file with the number " + std::to_string(number)});
            }
            row.disturb(engine);
            if (row.hasHostOutput) {
                sendLogTo(engine, host.path("log"));
            }
            std::string told;
            engine.device.device().warnings().setReceiver([&](const auto& line) { told += line + "\n"; });
            engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
            const std::string once = told;
            engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
            return told == once + once ? once : told;
        });
        if (!outcome) {
            GTEST_SKIP() << "needs a namespace to mount in";
        }
        EXPECT_EQ(*outcome, row.told);
        if (row.hasHostOutput) {
            EXPECT_EQ(tests::pathsNamedBy(host.content("log")).size(), 1000U);
            EXPECT_THAT(host.content("log"), HasSubstr("\nNumber of files: 1000\nApproximate size: "));
        }
    }
}

TEST(RunLog, OnTheHostThatCannotBeWrittenIsToldAsWell) {
    EngineFixture engine;
    sendLogTo(engine, "/dev/full");
    std::string told;
    engine.device.device().warnings().setReceiver([&](const auto& line) { told += line + "\n"; });
    engine.clean({});
    EXPECT_EQ(told, "The log on this host could not be written in full: No space left on device.\n");
    EXPECT_THAT(engine.log(), EndsWith("Total size: 0.00 B\n"));
}
