// Packages and their workspace beside what scenarios of a device show: threads, sizes, and a real system.

#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Packages/OZPackageList.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryDevice.h"

namespace fs = std::filesystem;

namespace {

using testing::IsEmpty;
using testing::SizeIs;
using Names = std::set<std::string>;

const std::string addon = "/Library/MobileSubstrate/DynamicLibraries/A.dylib";

TEST(PackageWorkspaceThreads, WaitForTheWork) {
    TemporaryDevice device;
    device.addFile(addon);
    device.addTool("/usr/bin/dpkg-query", "while [ ! -e \"$OZVARINE_DEVICE/go\" ]; do sleep 0.01; done\n"
                                          "printf 'Package=p\\nStatus=installed\\n'");
    OZPackageWorkspace workspace(device.device());
    std::thread other([&] { EXPECT_EQ(workspace.packageInfoByPkgId().size(), 1); });
    EXPECT_FALSE(workspace.finishedLoading());
    std::ofstream(device.folder() / "go");
    EXPECT_NE(workspace.infoForPackageWithIdentifier("p"), nullptr);
    EXPECT_EQ(workspace.infoForPackageWithIdentifier("q"), nullptr);
    EXPECT_TRUE(workspace.finishedLoading());
    other.join();
}

TEST(PackageWorkspaceThreads, ComeAndGoAtAnyMoment) {
    TemporaryDevice tree;
    tree.addFile(addon);
    platform::Device device(platform::FileManager::atRoot(tree.folder() / "Root").value(), {},
                            platform::ToolTable());
    for (int round = 0; round < 1000; ++round) {
        OZPackageWorkspace workspace(device);
        if (round % 2 == 0) {
            continue;
        }
        std::thread other([&] { EXPECT_THAT(workspace.CSAddonList().items(), SizeIs(1)); });
        EXPECT_THAT(workspace.prefBundleList().items(), IsEmpty());
        EXPECT_THAT(workspace.packageInfoByPkgId(), IsEmpty()) << "there are no package tools";
        other.join();
    }
    EXPECT_THROW(OZPackageInfo(nullptr, {}, nullptr), platform::AssertionFailure);
}

TEST(PackageList, KeepsItsGraphWhenTheToolFailsAndAsksAgainUntilItHasOne) {
    TemporaryDevice device;
    OZPackageList list(device.device());
    const auto answer = [&](const std::string& text, int status = 0) {
        device.addTool("/usr/bin/dpkg-query", "echo asked >>\"$OZVARINE_DEVICE/Journal.log\"\nprintf '" +
                                                  text + "'; exit " + std::to_string(status));
    };
    answer("Package=a\\nStatus=installed\\n", 1);
    EXPECT_THAT(list.allPackages(), IsEmpty());
    EXPECT_THAT(list.packagesWithIdentifiers({"a", "b"}), IsEmpty());
    EXPECT_THAT(device.journal(), SizeIs(2)) << "once an operation";
    answer("Package=a\\nStatus=installed\\nDepends=a\\n");
    const auto package = list.packageWithIdentifier("a");
    ASSERT_NE(package, nullptr);
    EXPECT_THAT(list.packagesWithIdentifiers({"b", "a"}), testing::ElementsAre(package));
    EXPECT_EQ(list.packagesForFilesAtPaths({}), std::nullopt);

    answer("", 1);
    list.refreshPackages();
    EXPECT_EQ(list.packageWithIdentifier("a"), package);
    answer("");
    list.refreshPackages();
    EXPECT_EQ(list.packageWithIdentifier("a"), nullptr);
    EXPECT_THAT(package->recursiveDependants(), SizeIs(1)) << "what somebody still holds stays whole";
}

TEST(Package, ChainsAndCirclesOfAnyLengthAreWalkedOnce) {
    TemporaryDevice device;
    constexpr size_t length = 100'000;
    std::vector<std::unique_ptr<OZPackage>> chain;
    for (size_t index = 0; index < length; ++index) {
        chain.push_back(std::make_unique<OZPackage>(device.device(), std::to_string(index)));
        if (index > 0) {
            chain[index - 1]->linkToDependency(*chain[index]);
            chain[index - 1]->linkToDependency(*chain[index]);
        }
    }
    EXPECT_THAT(chain.front()->recursiveDependencies(), SizeIs(length - 1));
    EXPECT_THAT(chain.back()->recursiveDependants(), SizeIs(length - 1));
    chain.back()->addDependency(*chain.front());
    chain.back()->addDependency(*chain.front());
    EXPECT_THAT(chain.back()->directDependencies(), SizeIs(1));
    EXPECT_THAT(chain.front()->recursiveDependencies(), SizeIs(length));
    EXPECT_THROW(OZPackage(device.device(), ""), platform::AssertionFailure);
}

/// What the installed packages of the host need, by an own reading of its status file: a line for each, with
/// the names that its dependencies hold.
constexpr const char* needsOfHost = R"(awk -v RS= -F'\n' '{
    split("", field)
    for (i = 1; i <= NF; i++) if (match($i, /^[A-Za-z-]+: /)) field[substr($i, 1, RLENGTH)] = substr($i, RLENGTH + 1)
    if (field["Status: "] !~ / installed$/) next
    printf "%s", field["Package: "]
    count = split(field["Pre-Depends: "] "," field["Depends: "], parts, /[,|]/)
    for (i = 1; i <= count; i++) { sub(/^ +/, "", parts[i]); sub(/[ :(].*/, "", parts[i]); printf " %s", parts[i] }
    print ""
}' /var/lib/dpkg/status)";

std::map<std::string, Names> readNeedsOfHost() {
    std::map<std::string, Names> packages;
    std::istringstream lines(tests::shell(needsOfHost).output);
    for (std::string line, name; std::getline(lines, line);) {
        std::istringstream words(line);
        words >> name;
        packages[name] = {std::istream_iterator<std::string>(words), {}};
    }
    for (auto& [name, needs] : packages) {
        std::erase_if(needs, [&](const auto& need) { return !packages.contains(need); });
    }
    return packages;
}

TEST(PackageList, AgreesWithTheStatusFileOfARealSystem) {
    const std::string status = "/var/lib/dpkg/status";
    if (::geteuid() != 0 || !fs::exists(status)) {
        GTEST_SKIP() << "needs root, or a user namespace that maps it, and a package database";
    }
    TemporaryDevice device;
    device.addFile("/var/lib/dpkg/info/format", "1\n");
    fs::copy_file(status, device.hostPath(status));
    std::map<std::string, Names> needs;
    std::map<std::string, Names> isNeededBy;
    for (const auto& [name, package] : OZPackageList(device.device()).allPackages()) {
        needs[name];
        for (const OZPackage* other : package->directDependencies()) {
            EXPECT_TRUE(needs[name].insert(other->identifier()).second) << "each once";
        }
        for (const OZPackage* other : package->directDependants()) {
            EXPECT_TRUE(isNeededBy[other->identifier()].insert(name).second) << "each once";
        }
    }
    EXPECT_THAT(needs, testing::Not(IsEmpty()));
    EXPECT_EQ(needs, readNeedsOfHost());
    std::erase_if(needs, [](const auto& package) { return package.second.empty(); });
    EXPECT_EQ(isNeededBy, needs);
}

} // namespace
