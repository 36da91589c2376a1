// A run acts with many rights on what somebody else may have made: neither the caller's environment nor the
// device's tree gets any code into the programs that it starts.
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using tests::runProgram;

namespace {

class Privileges : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(runProgram("ozdevice", {"create", device, "--files", "50"}).status, 0);
        fs::create_directory(folder.path("canary"));
        fs::copy_file(OZ_CANARY, canary);
    }
    /// A cleanup and a restart of the shell, with every step that needs a tool.
    void cleanDevice(const std::vector<std::string>& environment = {}) {
        const auto outcome = runProgram("ozvarine", {"--device", device, "-clean", "-respring"}, environment);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(folder.content("device/Journal.log"), HasSubstr("killall"));
        EXPECT_THAT(folder.content("device/Root/var/mobile/Library/Ozvarine/junk.txt"),
                    HasSubstr("Number of files"))
            << "the tool that writes the summary did not run";
    }
    /// The programs that have loaded the canary.
    [[nodiscard]] std::vector<std::string> heard() const {
        std::istringstream notes(fs::exists(canary + ".notes") ? folder.content("canary/libcanary.so.notes")
                                                               : "");
        std::vector<std::string> programs;
        for (std::string line; std::getline(notes, line);) {
            programs.push_back(line);
        }
        return programs;
    }
    /// Puts a program of the host's or a library of ours at a path of the tree.
    void plant(const std::string& path, const fs::path& file) {
        const fs::path place = device + "/Root" + path;
        std::error_code error;
        fs::create_directories(place.parent_path(), error);
        fs::copy_file(file, place, fs::copy_options::overwrite_existing, error);
    }

    const tests::TemporaryFolder folder;
    const std::string device = folder.path("device");
    const std::string canary = folder.path("canary/libcanary.so");
};

} // namespace

TEST_F(Privileges, EnvironmentSteersNoProgramThatARunStarts) {
    const std::string libraries = folder.path("canary");
    // Libraries that the tools need and the program itself does not.
    for (const char* name :
         {"libselinux.so.1", "libpcre2-8.so.0", "libacl.so.1", "libmd.so.0", "libbz2.so.1.0"}) {
        fs::create_symlink("libcanary.so", libraries + "/" + name);
    }
    std::ofstream(libraries + "/startup.sh") << "echo shell >> " << canary << ".notes\n";
    cleanDevice({"LD_PRELOAD=" + canary, "LD_AUDIT=" + canary, "LD_LIBRARY_PATH=" + libraries,
                 "GCONV_PATH=" + libraries, "LOCPATH=" + libraries, "GLIBC_TUNABLES=glibc.malloc.check=3",
                 "BASH_ENV=" + libraries + "/startup.sh", "ENV=" + libraries + "/startup.sh",
                 // For programs that are built with a sanitizer.
                 "ASAN_OPTIONS=verify_asan_link_order=0"});
    const auto programs = heard();
    EXPECT_THAT(programs, Not(IsEmpty())) << "the canary must be able to sing";
    EXPECT_THAT(programs, Each(testing::EndsWith("/ozvarine")));
}

TEST_F(Privileges, ToolsSeeTheirStreamsAndNothingElse) {
    const fs::path tool = device + "/Tools/usr/bin/find";
    fs::create_directories(tool.parent_path());
    // A shell lists its own descriptors; the one that it reads its script from is not inherited.
    std::ofstream(tool) << "#!/bin/sh\nls -l /proc/$$/fd >> '" << folder.path("seen") << "'\n";
    fs::permissions(tool, fs::perms(0755));
    std::ofstream(folder.path("secret")) << "secret";
    const int secret = ::open(folder.path("secret").c_str(), O_RDONLY); // NOLINT: it is to be inherited
    EXPECT_EQ(runProgram("ozvarine", {"--device", device, "-clean"}).status, 0);
    ::close(secret);
    const std::string seen = folder.content("seen");
    EXPECT_THAT(seen, HasSubstr(" 0 -> "));
    EXPECT_THAT(seen, Not(HasSubstr("secret")));
    EXPECT_THAT(seen, Not(HasSubstr("/Root")));
    EXPECT_THAT(seen, Not(HasSubstr("junk.txt")));
}

TEST_F(Privileges, NothingThatLiesInTheTreeIsExecuted) {
    const fs::path loud = folder.path("loud");
    std::ofstream(loud) << "#!/bin/sh\necho \"$0\" >> '" << canary << ".notes'\n";
    fs::permissions(loud, fs::perms(0755));
    for (const std::string name :
         {"find", "sed", "dpkg", "dpkg-query", "apt-get", "killall", "launchctl", "su", "reboot", "uicache",
          "sh", "bash", "ls", "ldconfig", "dpkg-deb", "rm"}) {
        for (const std::string directory : {"/bin/", "/sbin/", "/usr/bin/", "/usr/sbin/", "/usr/local/bin/",
                                            "/usr/local/sbin/", "/usr/libexec/", "/"}) {
            plant(directory + name, loud);
        }
    }
    for (const std::string library :
         {"libc.so.6", "libselinux.so.1", "libpcre2-8.so.0", "libacl.so.1", "libm.so.6", "libozenter.so",
          "ld-linux-x86-64.so.2", "libnss_files.so.2", "gconv/UTF-16.so"}) {
        for (const std::string directory : {"/", "/lib/", "/lib64/", "/usr/lib/", "/lib/x86_64-linux-gnu/",
                                            "/usr/lib/x86_64-linux-gnu/", "/usr/local/lib/", "/libexec/"}) {
            plant(directory + library, canary);
        }
    }
    plant("/evil.so", canary);
    std::ofstream(device + "/Root/etc/ld.so.preload") << "/evil.so\n";
    for (const std::string script : {"/etc/profile", "/root/.bashrc", "/.profile", "/etc/bash.bashrc",
                                     "/var/lib/dpkg/info/com.example.prerm", "/etc/apt/apt.conf.d/canary"}) {
        plant(script, loud);
    }
    cleanDevice();
    const auto packages = runProgram("ozvarine", {"--device", device, "--dry-run", "-clean"});
    EXPECT_EQ(packages.status, 0) << packages.errors;
    EXPECT_THAT(heard(), IsEmpty());
}
