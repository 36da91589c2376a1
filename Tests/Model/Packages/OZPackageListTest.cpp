// The graph of packages, from the answers of the real tools and from answers that no real tool gives.

#include "Model/Packages/OZPackageList.h"

#include "Tests/Model/Packages/PackageDatabase.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::set<std::string>;

Names namesOf(const std::vector<OZPackage*>& packages) {
    Names names;
    for (const OZPackage* package : packages) {
        EXPECT_TRUE(names.insert(package->identifier()).second) << package->identifier() << " twice";
    }
    return names;
}

std::vector<std::string> namesOf(const OZPackageList::Packages& packages) {
    std::vector<std::string> names;
    for (const auto& package : packages) {
        names.push_back(package->identifier());
    }
    return names;
}

/// The whole graph in one line: "package[name](icon)>dependency,dependency; …".
std::string describe(OZPackageList& list) {
    std::string text;
    for (const auto& [identifier, package] : list.allPackages()) {
        text += text.empty() ? "" : "; ";
        text += identifier + (package->name() ? "[" + *package->name() + "]" : "") +
                (package->iconURL() ? "(" + *package->iconURL() + ")" : "");
        for (const auto& dependency : namesOf(package->directDependencies())) {
            text += ">" + dependency;
        }
    }
    return text;
}

class PackageList : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
    }

    tests::PackageDatabase database;
    OZPackageList list{database.device.device()};
};

TEST_F(PackageList, ReadsInstalledPackagesWithTheirLinks) {
    database.install("libfoo", "Name: Foo = library\nIcon: file:///Library/foo.png\n");
    database.install("bar", "Pre-Depends: com.cycle\n");
    database.install("baz", "Name: Baz\n");
    database.install("com.cycle", "Depends: com.tweak\n");
    database.install("com.tweak", "Depends: libfoo (>= 1.0), bar | baz, libfoo, missing\n");
    database.install("gone", "", {"/etc/gone"});
    database.host("dpkg --root=Root --force-depends --log=/dev/null --remove gone");
    EXPECT_EQ(describe(list), "bar>com.cycle; baz[Baz]; com.cycle>com.tweak; "
                              "com.tweak>bar>baz>libfoo; libfoo[Foo = library](file:///Library/foo.png)");

    const auto tweak = list.packageWithIdentifier("com.tweak");
    ASSERT_NE(tweak, nullptr);
    EXPECT_EQ(namesOf(tweak->recursiveDependencies()),
              (Names{"bar", "baz", "com.cycle", "com.tweak", "libfoo"}));
    EXPECT_EQ(namesOf(tweak->recursiveDependants()), (Names{"bar", "com.cycle", "com.tweak"}));
    EXPECT_EQ(namesOf(list.packageWithIdentifier("baz")->directDependants()), (Names{"com.tweak"}));
    EXPECT_EQ(list.packageWithIdentifier("libfoo")->description(),
              "Identifier: libfoo\nName: Foo = library\nIcon: file:///Library/foo.png");
    EXPECT_THAT(namesOf(list.packagesWithIdentifiers({"libfoo", "unknown", "bar"})),
                ElementsAre("libfoo", "bar"));
    EXPECT_EQ(list.packageWithIdentifier("gone"), nullptr);
}

TEST_F(PackageList, ReadsWhateverTheToolAnswers) {
    const std::string end = "<OzvarineQueryPackageDelimiter>\n";
    const struct {
        std::string answer;
        std::string graph;
    } rows[] = {
        {"", ""},
        {"no record at all", ""},
        {"Package=a\nStatus=install ok installed\n" + end, "a"},
        {"Package=a\nStatus=install ok installed", "a"},
        {"\n\t Package=a \nStatus=x not-installed\n\n" + end, "a"},
        {"Package=a\n" + end + "Status=install ok installed\n" + end, ""},
        {"Package=\nStatus=install ok installed\n" + end, ""},
        {"Package=a\nStatus=deinstall ok config-files\n" + end, ""},
        {"package=a\nStatus=install ok installed\n" + end, ""},
        {"Package=a\nStatus=installed\nName= \nIcon=\n" + end, "a"},
        {"Package=a\nStatus=installed\nName=b=c\nIcon= x\n" + end, "a[b=c]( x)"},
        {"Package=a\nPackage=b\nStatus=installed\n" + end, "b"},
        {"Package=a\rStatus=installed\xE2\x80\xA8Name=n\n" + end, "a[n]"},
        {"Package=a\nStatus=installed\nDepends=,| a(>=1), ,|\ta (x)|a,a\n" + end, "a>a"},
        {"Package=a\nStatus=installed\nDepends=\xC2\xA0"
         "b\xC2\xA0(x)\n" +
             end + "Package=b\nStatus=installed\n" + end,
         "a>b; b"},
        // Of two records of one package the later one counts, but for dependencies that it does not tell.
        {"Package=a\nStatus=installed\nName=x\nDepends=b\n" + end + "Package=b\nStatus=installed\n" + end +
             "Package=a\nStatus=installed\nIcon=i\n" + end,
         "a(i)>b; b"},
        {"Package=a\0b\nStatus=installed\n"s + end, "a\0b"s},
        // What is no text takes its own record along, and no other.
        {"Package=a\nStatus=installed\nName=\xFF\n" + end + "Package=b\nStatus=installed\nDepends=a\n" + end,
         "b"},
        // An architecture, or any, belongs to the question which build serves, not to the package's name.
        {"Package=a\nStatus=installed\nDepends=b:any (>= 1), c:arm64 | d:iphoneos-arm(x), :any\n" + end +
             "Package=b\nStatus=installed\nPre-depends=c:any,a:any\n" + end +
             "Package=c\nStatus=installed\n" + end + "Package=d\nStatus=installed\n" + end,
         "a>b>c>d; b>a>c; c; d"},
    };
    for (const auto& row : rows) {
        database.answer("dpkg-query", row.answer);
        OZPackageList fresh(database.device.device());
        EXPECT_EQ(describe(fresh), row.graph) << row.answer;
    }
}

TEST_F(PackageList, KeepsItsGraphWhenTheToolFailsAndAsksAgainUntilItHasOne) {
    const std::string record = "Package=a\nStatus=installed\n";
    database.answer("dpkg-query", record, 1);
    EXPECT_THAT(list.allPackages(), IsEmpty());
    database.answer("dpkg-query", record + "Depends=a\n");
    const auto package = list.packageWithIdentifier("a");
    ASSERT_NE(package, nullptr);

    database.answer("dpkg-query", "", 1);
    list.refreshPackages();
    EXPECT_EQ(list.packageWithIdentifier("a"), package);
    database.answer("dpkg-query", "");
    list.refreshPackages();
    EXPECT_EQ(list.packageWithIdentifier("a"), nullptr);
    // What somebody still holds stays whole.
    EXPECT_EQ(namesOf(package->recursiveDependants()), Names{"a"});
}

TEST_F(PackageList, FindsTheOwnersOfFilesWithOneCall) {
    database.install("com.one", "", {"/Library/one", "/Library/shared/one"});
    database.install("com.two", "", {"/Library/two file: x", "/Library/shared/two"});
    const auto owners = list.packagesForFilesAtPaths(
        {"/Library/one", "/Library/two file: x", "/Library/shared", "/Library/none", "--help"});
    ASSERT_TRUE(owners);
    ASSERT_EQ(owners->size(), 3);
    EXPECT_THAT(namesOf(owners->at("/Library/one")), ElementsAre("com.one"));
    EXPECT_THAT(namesOf(owners->at("/Library/two file: x")), ElementsAre("com.two"));
    EXPECT_THAT(namesOf(owners->at("/Library/shared")), UnorderedElementsAre("com.one", "com.two"));
    EXPECT_EQ(list.packagesForFileAtPath("/Library/none"), std::nullopt);
    EXPECT_EQ(list.packagesForFilesAtPaths({}), std::nullopt);

    database.answer("dpkg",
                    " b, a: /x \nnone of them\na: \nunknown: /y\na: /x/z\xC2\x85"
                    "b: /x/z\n",
                    1);
    const auto odd = list.packagesForFilesAtPaths({"/x"});
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->size(), 3);
    EXPECT_THAT(odd->at("/y"), IsEmpty());
}

TEST_F(PackageList, FindsOwnersBesideNamesThatAreNoTextAndThroughArchitectures) {
    database.install("com.one", "", {"/Library/one", "/Library/caf\xE9"});
    database.install("libtwo", "Multi-Arch: same\n", {"/Library/two"});
    const auto owners = list.packagesForFilesAtPaths({"/Library/caf\xE9", "/Library/one", "/Library/two"});
    ASSERT_TRUE(owners);
    ASSERT_EQ(owners->size(), 2);
    EXPECT_THAT(namesOf(owners->at("/Library/one")), ElementsAre("com.one"));
    EXPECT_THAT(namesOf(owners->at("/Library/two")), ElementsAre("libtwo"));
    database.answer("dpkg", "com.one:arm, libtwo:arm64: /Library/both: b\n");
    EXPECT_THAT(namesOf(list.packagesForFileAtPath("/Library/both: b").value()),
                ElementsAre("com.one", "libtwo"));
}

TEST_F(PackageList, AsksAtMostOnceAnAccessForPackagesThatCannotBeTold) {
    database.answer("dpkg", "a: /x\nb, c: /y\na: /z\n");
    database.device.addNotingTool("/usr/bin/dpkg-query", 1);
    const auto asked = [&] {
        return std::ranges::count_if(database.device.journal(),
                                     [](const auto& line) { return line.starts_with("dpkg-query "); });
    };
    EXPECT_EQ(list.packagesForFilesAtPaths({"/x", "/y", "/z"})->size(), 3);
    EXPECT_EQ(asked(), 1);
    EXPECT_THAT(list.packagesWithIdentifiers({"a", "b"}), IsEmpty());
    EXPECT_EQ(asked(), 2);
    EXPECT_THAT(list.packagesWithIdentifiers({"a"}), IsEmpty());
    EXPECT_EQ(asked(), 3) << "what failed is tried again";
}

TEST_F(PackageList, TakesOwnersInTheirOrderAndTheLastLineOfAPath) {
    database.install("a", "");
    database.install("b", "");
    database.answer("dpkg", "b, unknown, a: /x\na: /y\nb: /y\n");
    EXPECT_THAT(namesOf(list.packagesForFileAtPath("/x").value()), ElementsAre("b", "a"));
    EXPECT_THAT(namesOf(list.packagesForFileAtPath("/y").value()), ElementsAre("b"));
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
    EXPECT_EQ(chain.front()->recursiveDependencies().size(), length - 1);
    EXPECT_EQ(chain.back()->recursiveDependants().size(), length - 1);
    chain.back()->addDependency(*chain.front());
    chain.back()->addDependency(*chain.front());
    EXPECT_EQ(chain.back()->directDependencies().size(), 1);
    EXPECT_EQ(chain.front()->recursiveDependencies().size(), length);
    EXPECT_THROW(OZPackage(device.device(), ""), platform::AssertionFailure);
}

/// A package as its stanza in the database's status file tells it.
struct Stanza {
    std::string name;
    Names dependencies;
};

/// An own reading of a status file, which shares nothing with the one that is tested.
std::map<std::string, Stanza> readStatusFile(const fs::path& path) {
    std::map<std::string, Stanza> stanzas;
    std::map<std::string, std::string> fields;
    const auto finish = [&] {
        std::istringstream status(fields["Status"]);
        std::string want;
        std::string error;
        std::string state;
        status >> want >> error >> state;
        if (state == "installed") {
            Stanza& stanza = stanzas[fields["Package"]];
            stanza.name = fields["Name"];
            std::string list = fields["Pre-Depends"] + "," + fields["Depends"];
            std::ranges::replace(list, '|', ',');
            std::istringstream parts(list);
            for (std::string part; std::getline(parts, part, ',');) {
                std::string dependency;
                std::istringstream(part) >> dependency;
                stanza.dependencies.insert(dependency.substr(0, dependency.find(':')));
            }
        }
        fields.clear();
    };
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const size_t colon = line.find(": ");
        if (line.empty()) {
            finish();
        } else if (line[0] != ' ' && colon != std::string::npos) {
            fields[line.substr(0, colon)] = line.substr(colon + 2);
        }
    }
    finish();
    for (auto& [identifier, stanza] : stanzas) {
        std::erase_if(stanza.dependencies, [&](const auto& name) { return !stanzas.contains(name); });
    }
    return stanzas;
}

Names reachable(const std::map<std::string, Stanza>& stanzas, const std::string& start) {
    Names reached;
    std::vector<std::string> open(stanzas.at(start).dependencies.begin(),
                                  stanzas.at(start).dependencies.end());
    while (!open.empty()) {
        const std::string name = open.back();
        open.pop_back();
        if (reached.insert(name).second) {
            open.insert(open.end(), stanzas.at(name).dependencies.begin(),
                        stanzas.at(name).dependencies.end());
        }
    }
    return reached;
}

TEST_F(PackageList, AgreesWithTheStatusFileOfARealSystem) {
    const fs::path status = "/var/lib/dpkg/status";
    if (!fs::exists(status)) {
        GTEST_SKIP() << "the host has no package database";
    }
    fs::copy_file(status, database.device.hostPath(status.string()), fs::copy_options::overwrite_existing);
    const auto stanzas = readStatusFile(status);
    const auto packages = list.allPackages();
    ASSERT_EQ(packages.size(), stanzas.size());
    ASSERT_FALSE(packages.empty());
    std::map<std::string, Names> dependants;
    for (const auto& [identifier, stanza] : stanzas) {
        ASSERT_TRUE(packages.contains(identifier)) << identifier;
        const OZPackage& package = *packages.at(identifier);
        EXPECT_EQ(package.name().value_or(""), stanza.name) << identifier;
        EXPECT_EQ(namesOf(package.directDependencies()), stanza.dependencies) << identifier;
        EXPECT_EQ(namesOf(package.recursiveDependencies()), reachable(stanzas, identifier)) << identifier;
        for (const auto& dependency : stanza.dependencies) {
            dependants[dependency].insert(identifier);
        }
    }
    for (const auto& [identifier, package] : packages) {
        EXPECT_EQ(namesOf(package->directDependants()), dependants[identifier]) << identifier;
    }
}

} // namespace
