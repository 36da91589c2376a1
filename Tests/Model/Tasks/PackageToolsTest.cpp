// The host's package tools, run for a device: they work on the device's database, and neither the host's
// packages nor what lies in the tree come into play.

#include "Model/Tasks/OZTask.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/TemporaryDevice.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* architecture = "iphoneos-arm";

std::string hostDatabase() {
    return tests::contentOf("/var/lib/dpkg/status");
}

class PackageTools : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
        if (::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) < 1) {
            GTEST_SKIP()
                << "needs a kernel with Landlock; without it the package tools refuse to change anything";
        }
        for (const char* folder :
             {"/var/lib/dpkg/info", "/var/lib/dpkg/updates", "/var/cache/apt/archives/partial",
              "/var/lib/apt/lists/partial", "/var/log"}) {
            fs::create_directories(temporary.hostPath(folder));
        }
        temporary.addFile("/var/lib/dpkg/status");
        temporary.addFile("/var/lib/dpkg/available");
    }

    /// Installs a package of one file into the tree, as an automatically installed one.
    void install(const std::string& name, std::string_view postrm = "") {
        build(name, "postrm", postrm);
        host("dpkg --root=Root --force-architecture --log=/dev/null -i Root/package.deb");
        std::ofstream(temporary.hostPath("/var/lib/apt/extended_states"), std::ios::app)
            << "Package: " << name << "\nArchitecture: " << architecture << "\nAuto-Installed: 1\n\n";
    }

    void build(const std::string& name, std::string_view script, std::string_view lines) {
        const fs::path package = temporary.folder() / "package";
        fs::remove_all(package);
        fs::create_directories(package / "DEBIAN");
        fs::create_directories(package / "Library");
        std::ofstream(package / "Library" / name) << "content";
        std::ofstream(package / "DEBIAN/control")
            << "Package: " << name << "\nVersion: 1.0\nArchitecture: " << architecture
            << "\nMaintainer: a <a@b>\nDescription: test\n";
        if (!lines.empty()) {
            std::ofstream(package / "DEBIAN" / script) << "#!/bin/sh\n" << lines << "\n";
            fs::permissions(package / "DEBIAN" / script, fs::perms(0755));
        }
        host("dpkg-deb --root-owner-group -b package Root/package.deb");
    }

    /// A shell that works with the tree as its root.
    void installShell() {
        host("for file in /bin/sh $(ldd /bin/sh | grep -o '/[^ ]*'); do"
             " mkdir -p Root$(dirname $file); cp -L $file Root$file; done");
    }

    /// Runs a command of the host itself, in the device folder.
    void host(const std::string& command) const {
        const std::string line =
            "cd '" + temporary.folder().string() + "' && (" + command + ") >host.log 2>&1 </dev/null";
        ASSERT_EQ(std::system(line.c_str()), 0) << command;
    }

    std::shared_ptr<OZTask> run(std::string_view path, Lines arguments) {
        auto task = OZTask::make(temporary.device(), path, std::move(arguments));
        task->setStdOutAction(OZTaskStreamAction::capture);
        task->setStdErrAction(OZTaskStreamAction::capture);
        task->launchSynchronously();
        return task;
    }

    std::string output(std::string_view path, Lines arguments) {
        return run(path, std::move(arguments))->output().value_or("(not UTF-8)");
    }

    [[nodiscard]] bool exists(std::string_view devicePath) const {
        return fs::exists(fs::symlink_status(temporary.hostPath(devicePath)));
    }

    TemporaryDevice temporary;
};

TEST_F(PackageTools, QueriesReadTheDevicesDatabaseWithPlainNames) {
    install("com.one");
    install("com.two");
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package} ${Status}\\n"}),
              "com.one install ok installed\ncom.two install ok installed\n");
    // The tool reads its lists in the order of their places on the disk.
    const std::string owners = output("/usr/bin/dpkg", {"-S", "/Library/com.one", "/Library"});
    EXPECT_THAT(owners, testing::AnyOf("com.one: /Library/com.one\ncom.two, com.one: /Library\n",
                                       "com.one: /Library/com.one\ncom.one, com.two: /Library\n"));
    EXPECT_NE(output("/usr/bin/dpkg", {"-l"}).find("\nii  com.one "), std::string::npos);
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-S", "/Library/com.two"}), "com.two: /Library/com.two\n");
    EXPECT_NE(output("/usr/bin/dpkg", {"-s", "com.one"}).find("Architecture: iphoneos-arm\n"),
              std::string::npos);
    EXPECT_EQ(run("/usr/bin/dpkg", {"-S", "/none"})->terminationStatus(), 1);
}

TEST_F(PackageTools, QueriesFollowTheTreesLinksInsideOfIt) {
    install("com.one");
    fs::create_directories(temporary.hostPath("/Library"));
    fs::rename(temporary.hostPath("/var/lib/dpkg"), temporary.hostPath("/Library/dpkg"));
    temporary.addLink("/var/lib/dpkg", "/Library/dpkg");
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package}\\n"}), "com.one\n");
}

/// Where a device has its package database, told as the host's commands that put it there.
struct DatabasePlace {
    const char* name;
    const char* commands;
};

class PackageDatabaseElsewhere : public PackageTools, public testing::WithParamInterface<DatabasePlace> {};
INSTANTIATE_TEST_SUITE_P(
    Places, PackageDatabaseElsewhere,
    testing::Values(DatabasePlace{"AbsoluteLink", "mv Root/var/lib/dpkg Root/Library/dpkg;"
                                                  "ln -s /Library/dpkg Root/var/lib/dpkg"},
                    DatabasePlace{"LinkOnTheWay",
                                  "mv Root/var/lib Root/Library/lib; ln -s /Library/lib Root/var/lib;"
                                  "mv Root/var/cache/apt Root/Library/apt;"
                                  "ln -s /Library/apt Root/var/cache/apt"},
                    DatabasePlace{"NoTopLinks", "mkdir Root/private; mv Root/var Root/private/var"},
                    DatabasePlace{"NoTopLinksAndAbsoluteLink",
                                  "mkdir Root/private; mv Root/var Root/private/var;"
                                  "mv Root/private/var/lib/dpkg Root/Library/dpkg;"
                                  "ln -s /Library/dpkg Root/private/var/lib/dpkg; ln -s /var/lib Root/lib"}),
    [](const auto& row) { return row.param.name; });

TEST_P(PackageDatabaseElsewhere, IsTheOneThatTheToolsWorkOn) {
    const std::string before = hostDatabase();
    install("com.unused");
    install("com.scripted", "exit 0");
    temporary.addFile("/var/cache/apt/archives/a_1.0_iphoneos-arm.deb");
    host(GetParam().commands);
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package}\\n"}), "com.scripted\ncom.unused\n");
    EXPECT_NE(output("/usr/bin/dpkg", {"-l"}).find("\nii  com.unused "), std::string::npos);
    EXPECT_EQ(output("/usr/bin/dpkg", {"-S", "/Library/com.unused"}), "com.unused: /Library/com.unused\n");
    EXPECT_EQ(run("/usr/bin/dpkg", {"-P", "com.scripted"})->terminationStatus(), 126);
    EXPECT_TRUE(exists("/Library/com.scripted"));
    EXPECT_EQ(run("/usr/bin/dpkg", {"--clear-avail"})->terminationStatus(), 0);
    const auto task = run("/usr/bin/apt-get", {"-y", "autoremove"});
    EXPECT_EQ(task->terminationStatus(), 0) << task->output().value_or("");
    EXPECT_EQ(task->output().value_or("").find("W: "), std::string::npos) << *task->output();
    EXPECT_FALSE(exists("/Library/com.unused")) << task->output().value_or("");
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package}\\n"}), "com.scripted\n");
    EXPECT_EQ(run("/usr/bin/apt-get", {"-y", "clean"})->terminationStatus(), 0);
    host("! find Root -name 'a_1.0*' | grep .; test ! -e Root/private -o ! -e Root/var");
    EXPECT_EQ(hostDatabase(), before);
}

TEST_F(PackageTools, AutoremoveRemovesFromTheTreeAlone) {
    const std::string before = hostDatabase();
    install("com.unused");
    EXPECT_NE(output("/usr/bin/apt-get", {"-s", "autoremove"}).find("Remv com.unused"), std::string::npos);
    EXPECT_TRUE(exists("/Library/com.unused"));
    const auto task = run("/usr/bin/apt-get", {"-y", "autoremove"});
    EXPECT_EQ(task->terminationStatus(), 0) << task->output().value_or("");
    EXPECT_EQ(task->output().value_or("").find("W: "), std::string::npos) << *task->output();
    EXPECT_FALSE(exists("/Library/com.unused"));
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package}\\n"}), "");
    EXPECT_EQ(hostDatabase(), before);
}

TEST_F(PackageTools, SimulationChangesNothing) {
    install("com.unused");
    const std::string list = "cd Root && find . -printf '%p %T@ %s %i\\n' | sort";
    host("(" + list + ") > before");
    output("/usr/bin/apt-get", {"-s", "autoremove"});
    host("(" + list + ") > after");
    host("cmp before after");
}

TEST_F(PackageTools, ScriptsOfTheTreeAreNeverRun) {
    installShell();
    install("com.control", "echo > /canary");
    host("dpkg --root=Root --log=/dev/null -P com.control");
    ASSERT_TRUE(exists("/canary")) << "the script works where nothing keeps it from running";
    fs::remove(temporary.hostPath("/canary"));

    build("com.one", "preinst", "echo > /canary");
    const auto task =
        run("/usr/bin/dpkg", {"--force-architecture", "-i", temporary.hostPath("/package.deb").string()});
    EXPECT_NE(task->terminationStatus(), 0);
    EXPECT_NE(task->output().value_or("").find("preinst): Permission denied"), std::string::npos);
    EXPECT_FALSE(exists("/canary"));
}

TEST_F(PackageTools, PackagesWithRemovalScriptsAreKeptWhole) {
    install("com.plain");
    install("com.scripted", "exit 0");
    const auto purge = run("/usr/bin/dpkg", {"-P", "com.plain", "com.scripted"});
    EXPECT_EQ(purge->terminationStatus(), 126);
    EXPECT_EQ(purge->output(),
              "ozenter: package com.scripted has a removal script, which only the device itself "
              "can run; nothing was removed\n");
    const auto autoremove = run("/usr/bin/apt-get", {"-y", "autoremove"});
    EXPECT_EQ(autoremove->terminationStatus(), 0) << autoremove->output().value_or("");
    EXPECT_NE(autoremove->output().value_or("").find("removal scripts: com.scripted\n"), std::string::npos);
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package} ${Status}\n"}),
              "com.scripted install ok installed\n");
    EXPECT_TRUE(exists("/Library/com.scripted"));
}

TEST_F(PackageTools, SettingsOfTheTreeAreNotRead) {
    installShell();
    const std::string canary = (temporary.folder() / "Root/canary").string();
    const std::string settings = "DPkg::Pre-Invoke { \"echo > '" + canary + "'\"; };\n" +
                                 "DPkg::Post-Invoke { \"echo > '" + canary + "'\"; };\n" +
                                 "Dir::Bin::dpkg \"" + temporary.hostPath("/bin/sh").string() + "\";\n";
    temporary.addFile("/etc/apt/apt.conf.d/99evil", settings);
    temporary.addFile("/etc/apt/apt.conf", settings);
    install("com.unused");
    const auto task = run("/usr/bin/apt-get", {"-y", "autoremove"});
    EXPECT_EQ(task->terminationStatus(), 0) << task->output().value_or("");
    EXPECT_FALSE(exists("/canary"));
}

TEST_F(PackageTools, LinksOfTheTreeLeadToNothingOfTheHost) {
    const std::string before = hostDatabase();
    const fs::path outside = temporary.folder() / "outside";
    fs::create_directories(outside / "partial");
    std::ofstream(outside / "keep.deb") << "x";
    std::ofstream(outside / "partial/keep.deb") << "x";
    fs::remove_all(temporary.hostPath("/var/cache/apt/archives"));
    temporary.addLink("/var/cache/apt/archives", outside.string());
    run("/usr/bin/apt-get", {"-y", "clean"});
    EXPECT_TRUE(fs::exists(outside / "keep.deb") && fs::exists(outside / "partial/keep.deb"));

    fs::remove_all(temporary.hostPath("/var/lib/dpkg"));
    temporary.addLink("/var/lib/dpkg", "/var/lib/dpkg");
    EXPECT_NE(run("/usr/bin/dpkg", {"--clear-avail"})->terminationStatus(), 0);
    run("/usr/bin/apt-get", {"-y", "autoremove"});
    EXPECT_EQ(output("/usr/bin/dpkg-query", {"-W", "-f=${Package}"}).find("libc6"), std::string::npos);
    EXPECT_EQ(hostDatabase(), before);
}

TEST_F(PackageTools, CleanEmptiesTheDevicesArchive) {
    temporary.addFile("/var/cache/apt/archives/a_1.0_iphoneos-arm.deb");
    const auto task = run("/usr/bin/apt-get", {"-y", "clean"});
    EXPECT_EQ(task->terminationStatus(), 0) << task->output().value_or("");
    EXPECT_FALSE(exists("/var/cache/apt/archives/a_1.0_iphoneos-arm.deb"));
    EXPECT_TRUE(OZTask::launchSyncTask(temporary.device(), "/usr/bin/dpkg", {"--clear-avail"}, true));
}

} // namespace
