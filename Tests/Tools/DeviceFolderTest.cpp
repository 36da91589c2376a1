#include "CommandLine.h"
#include "Description.h"
#include "Platform/Formats/PropertyList.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/Program.h"
#include "Tests/Tools/DemoDevice.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace ozdevice::tests {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using ::tests::contentOf;
using ::tests::shell;

struct ExpectedGeneration {
    const char* version;
    const char* productVersion;
    double foundationVersion;
    const char* bundleFolder;
    const char* attachmentTable;
    bool hasBatteryContainer;
};

void PrintTo(const ExpectedGeneration& generation, std::ostream* stream) {
    *stream << generation.version;
}

class GenerationTest : public testing::TestWithParam<ExpectedGeneration> {};

INSTANTIATE_TEST_SUITE_P(
    Versions, GenerationTest,
    testing::Values(
        ExpectedGeneration{"4", "4.3.3", 751.49, "var/mobile/Applications", "madrid_attachment", false},
        ExpectedGeneration{"6.0", "6.0", 992.00, "var/mobile/Applications", "attachment", false},
        ExpectedGeneration{"7.1.2", "7.1.2", 1047.25, "var/mobile/Applications", "attachment", false},
        ExpectedGeneration{"8", "8.4.1", 1144.17, "var/mobile/Containers/Bundle/Application", "attachment",
                           false},
        ExpectedGeneration{"9.1", "9.1", 1241.14, "var/mobile/Containers/Bundle/Application", "attachment",
                           false},
        ExpectedGeneration{"9.3.5", "9.3.5", 1280.25, "var/containers/Bundle/Application", "attachment",
                           true},
        ExpectedGeneration{"11.1.2", "11.1.2", 1445.32, "var/containers/Bundle/Application", "attachment",
                           true}),
    [](const auto& row) {
        std::string name = row.param.version;
        std::ranges::replace(name, '.', '_');
        return "iOS" + name;
    });

size_t count(const fs::path& folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST_P(GenerationTest, HasItsFactsItsLayoutAndItsDatabases) {
    const DemoDevice device({.productVersion = GetParam().version, .junkFileCount = 0});

    const auto facts = platform::parsePropertyList(contentOf(device.path() / "Device.plist"));
    ASSERT_TRUE(facts);
    const auto& dictionary = *facts->as<platform::Dictionary>();
    EXPECT_EQ(*platform::valueAt<std::string>(dictionary, "SystemVersion"), GetParam().productVersion);
    EXPECT_EQ(*platform::valueAt<double>(dictionary, "FoundationVersion"), GetParam().foundationVersion);

    const auto preferences = platform::parsePropertyList(
        contentOf(device.root() / "var/mobile/Library/Preferences/.GlobalPreferences.plist"));
    const auto* const languages =
        preferences
            ? platform::valueAt<platform::Array>(*preferences->as<platform::Dictionary>(), "AppleLanguages")
            : nullptr;
    ASSERT_NE(languages, nullptr);
    EXPECT_THAT(*languages->front().as<std::string>(), testing::StartsWith("en"));

    EXPECT_GE(count(device.root() / GetParam().bundleFolder), 30U);
    const auto rows =
        shell(fmt::format("sqlite3 '{}/var/mobile/Library/SMS/sms.db' 'select count(*) from {}'",
                          device.root().string(), GetParam().attachmentTable));
    EXPECT_EQ(rows.output, "6\n");
    const auto packages = shell(fmt::format("dpkg --root='{}' -l", device.root().string()));
    EXPECT_THAT(packages.output, HasSubstr("\nrc  org.hillside.removed"));
    const auto states =
        shell(fmt::format("dpkg-query --admindir='{}/var/lib/dpkg' -W -f '${{db:Status-Abbrev}}\\n'"
                          " | sort -u",
                          device.root().string()));
    EXPECT_EQ(states.output, "ii \nrc \n");
    EXPECT_EQ(fs::exists(device.root() / "var/containers/Shared/SystemGroup"),
              GetParam().hasBatteryContainer);
}

TEST(DeviceFolder, ASeedDecidesTheTree) {
    const DemoDevice first({.junkFileCount = 50, .seed = 7});
    const DemoDevice again({.junkFileCount = 50, .seed = 7});
    const DemoDevice other({.junkFileCount = 50, .seed = 8});
    EXPECT_TRUE(first.listing() == again.listing());
    EXPECT_FALSE(first.listing() == other.listing());
}

TEST(DeviceFolder, JunkIsCountedExactly) {
    const auto files = [](size_t junk) {
        const DemoDevice device({.junkFileCount = junk});
        const auto description = describeDevice(device.path()).value();
        const auto found = std::ranges::find(description, "files", &Description::value_type::first);
        return std::stoul(found->second);
    };
    EXPECT_EQ(files(2503) - files(0), 2503U);
}

TEST(DeviceFolder, InfoTellsOfAPlainTreeWhatTheTreeTells) {
    const DemoDevice device({.productVersion = "9.3.5", .junkFileCount = 0});
    const auto told = [](const fs::path& directory) {
        const auto description = describeDevice(directory).value();
        return std::map<std::string, std::string>(description.begin(), description.end());
    };
    const auto folder = told(device.path());
    EXPECT_THAT(folder.at("packages"), testing::MatchesRegex("[1-9][0-9]+"));
    // A database behind an absolute link, in a tree that lacks the links at its top.
    fs::rename(device.root() / "private/var/lib/dpkg", device.root() / "Library/dpkg");
    fs::create_symlink("/Library/dpkg", device.root() / "private/var/lib/dpkg");
    fs::remove(device.root() / "var");
    const auto tree = told(device.root());
    for (const char* key : {"product version", "foundation version", "core foundation version",
                            "applications", "packages", "files", "bytes"}) {
        EXPECT_EQ(tree.at(key), folder.at(key)) << key;
    }
    EXPECT_EQ(tree.at("model"), "unknown");
    EXPECT_EQ(tree.at("tools"), "");
    EXPECT_THAT(
        shell(fmt::format("{}/ozdevice info '{}'", OZ_BINARY_DIRECTORY, device.root().string())).output,
        AllOf(HasSubstr("model: unknown\n"), HasSubstr("\nsystem applications: ")));
}

TEST(DeviceFolder, RefusesWhateverIsThere) {
    const TemporaryFolder folder;
    const fs::path full = folder.path("full");
    fs::create_directory(full);
    std::ofstream(full / "precious") << "kept";
    const std::string file = full / "precious";
    const auto before = folder.listing();
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* message;
    } cases[] = {
        {{"create", full}, 1, "is not empty"},
        {{"create", file}, 1, "is no directory"},
        {{"create", folder.path("new"), "--ios", "3"}, 1, "is no known iOS version"},
        {{"create", folder.path("new"), "--files", "many"}, 2, "--files takes a number"},
        {{"create", folder.path("new"), "--files"}, 2, "--files needs a value"},
        {{"create"}, 2, "needs a directory"},
        {{"info", full}, 1, "is no device"},
        {{"info", folder.path("new")}, 1, "there is no folder"},
    };
    for (const auto& row : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(runCommandLine(row.arguments), row.status) << row.message;
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(row.message));
    }
    EXPECT_EQ(folder.listing(), before);
}

TEST(DeviceFolder, AFailureLeavesNothingBehind) {
    const TemporaryFolder folder;
    rlimit usual{};
    ::getrlimit(RLIMIT_FSIZE, &usual);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 300, .rlim_max = usual.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto inNewFolder = createDevice(folder.path("new"), {});
    const auto inEmptyFolder = createDevice(folder.path(), {});
    ::setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, previous);

    ASSERT_FALSE(inNewFolder);
    EXPECT_THAT(inNewFolder.error(), HasSubstr("cannot make the device: "));
    EXPECT_FALSE(inEmptyFolder);
    EXPECT_THAT(folder.listing(), IsEmpty());
}

TEST(DeviceFolder, NothingIsWrittenOutside) {
    const std::string hostState =
        "stat -c '%n %Y %s' /var/lib/dpkg /var/lib/dpkg/status /var/log /var/log/dpkg.log";
    const auto before = shell(hostState);
    const DemoDevice device;
    EXPECT_EQ(shell(hostState).output, before.output);
    EXPECT_EQ(count(device.path().parent_path()), 1U);
    EXPECT_EQ(count(device.path()), 6U);
}

TEST(DeviceFolder, PackagesOwnTheirAddOnsAndOneIsNeededByNobody) {
    const DemoDevice device({.junkFileCount = 0, .packageArchitecture = "all"});
    const std::string root = device.root();
    const auto owner = shell(fmt::format("dpkg --root='{0}' -S {1}/StatusDots.dylib {1}/LooseEnd.dylib", root,
                                         "/Library/MobileSubstrate/DynamicLibraries"));
    EXPECT_THAT(owner.output, HasSubstr("org.hillside.statusdots: /Library/"));
    EXPECT_THAT(owner.output,
                HasSubstr("no path found matching pattern /Library/MobileSubstrate/DynamicLibraries/"
                          "LooseEnd.dylib"));
    if (shell("command -v apt-get").status != 0) {
        GTEST_SKIP() << "the host has no apt-get";
    }
    const auto plan = shell(fmt::format(
        "apt-get -o Dir='{0}' -o Dir::State::status='{0}/var/lib/dpkg/status' -s autoremove", root));
    EXPECT_THAT(plan.output, AllOf(HasSubstr("Remv org.hillside.leftover"), HasSubstr("1 to remove")));
}

TEST(DeviceFolder, AUserInANamespaceCanMakeOne) {
    if (shell("unshare -r true").status != 0) {
        GTEST_SKIP() << "the host allows no user namespaces";
    }
    const TemporaryFolder folder;
    const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "ozdevice";
    if (!fs::exists(program)) {
        GTEST_SKIP() << "ozdevice is not built";
    }
    const auto result =
        shell(fmt::format("unshare -r '{}' create '{}/device' --files 0", program.string(), folder.path()));
    EXPECT_EQ(result.status, 0) << result.output;
    const auto packages = shell(fmt::format("dpkg --root='{}/device/Root' -l", folder.path()));
    EXPECT_THAT(packages.output, HasSubstr("\nii  mobilesubstrate"));
}

} // namespace
} // namespace ozdevice::tests
