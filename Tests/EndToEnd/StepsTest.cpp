#include "Platform/Formats/PropertyList.h"
#include "Tests/EndToEnd/StepRules.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <ranges>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/regex.h>

using testing::HasSubstr;
using testing::IsEmpty;
using tests::ItemState;
using tests::Outcome;
using tests::runProgram;
using tests::TemporaryFolder;
using tests::TreeSnapshot;

namespace {

namespace fs = std::filesystem;

constexpr std::string_view allSteps[] = {
    "ATTACHMENTS",  "SAFARI",   "APPLICATIONS", "OTAUPDATES", "BATTERYDATA",     "CYDIA",      "CYDIASOURCES",
    "DEPENDENCIES", "LOGFILES", "CACHEFILES",   "TEMPFILES",  "FILETYPECLEANUP", "CUSTOMFILES"};

// Where generations keep the containers that today's name for them stands for in a rule.
constexpr std::pair<std::string_view, std::string_view> olderFolders[] = {
    {"/var/mobile/Applications/", "/var/mobile/Containers/Data/Application/"},
    {"/var/mobile/Containers/Bundle/Application/", "/var/containers/Bundle/Application/"},
};

// What a container's metadata or, before there was any, the application in it says that it is.
const std::string* identifierOf(const fs::path& container, platform::Value& list) {
    fs::path file = container / ".com.apple.mobile_container_manager.metadata.plist";
    const char* key = "MCMMetadataIdentifier";
    if (!fs::exists(file)) {
        key = "CFBundleIdentifier";
        for (const auto& entry : fs::directory_iterator(container)) {
            if (entry.path().extension() == ".app") {
                file = entry.path() / "Info.plist";
            }
        }
    }
    list = platform::parsePropertyList(tests::contentOf(file)).value();
    return platform::valueAt<std::string>(*list.as<platform::Dictionary>(), key);
}

// Containers have random names; a rule names them by what they contain.
std::map<std::string, std::string> containerNames(const std::string& root) {
    std::map<std::string, std::string> names;
    for (const auto* folder :
         {"private/var/mobile/Containers/Data/Application", "private/var/containers/Data/System",
          "private/var/mobile/Containers/Data/PluginKitPlugin", "private/var/mobile/Applications",
          "private/var/mobile/Containers/Shared/AppGroup", "private/var/containers/Shared/SystemGroup"}) {
        if (!fs::exists(root + "/" + folder)) {
            continue;
        }
        for (const auto& container : fs::directory_iterator(root + "/" + folder)) {
            platform::Value list;
            if (const auto* identifier = identifierOf(container, list)) {
                names[container.path().filename()] = *identifier;
            }
        }
    }
    return names;
}

// The path as rules write it.
std::string ruleName(const std::string& path, const std::map<std::string, std::string>& containers) {
    std::string name;
    for (const auto& part : fs::path(path)) {
        const auto container = containers.find(part);
        name += "/" + (container == containers.end() ? part.string() : container->second);
    }
    name = name.starts_with("/private/var/") ? name.substr(8) : name;
    for (const auto& [older, today] : olderFolders) {
        if (name.starts_with(older)) {
            name.replace(0, older.size(), today);
        }
    }
    return name;
}

class Rules {
  public:
    explicit Rules(std::span<const StepRule> rules, int version = 11) {
        for (const auto& rule : rules) {
            if (version < rule.from || version >= rule.below) {
                continue;
            }
            UErrorCode error = U_ZERO_ERROR;
            _rows.push_back(
                {rule,
                 std::make_unique<icu::RegexMatcher>(icu::UnicodeString::fromUTF8(rule.pattern), 0U, error),
                 false});
            EXPECT_TRUE(U_SUCCESS(error)) << rule.pattern;
        }
    }

    /// The paths that must be gone, by kind of the rule that says so.
    std::map<std::string, Goes> expected(const TreeSnapshot& tree,
                                         const std::map<std::string, std::string>& names) {
        std::map<std::string, Goes> gone;
        for (const auto& [path, state] : tree) {
            // A folder stands before its entries in the snapshot.
            const auto parent = gone.find(fs::path(path).parent_path());
            const auto goes = ruleFor(ruleName(path, names), state);
            if (parent != gone.end() && parent->second == Goes::item) {
                gone[path] = Goes::item;
            } else if (goes) {
                gone[path] = *goes;
            }
        }
        return gone;
    }
    /// A rule that matches nothing tests nothing.
    [[nodiscard]] std::vector<std::string> unused() const {
        std::vector<std::string> patterns;
        for (const auto& row : _rows) {
            if (!row.used) {
                patterns.emplace_back(row.rule.pattern);
            }
        }
        return patterns;
    }

  private:
    struct Row {
        StepRule rule;
        std::unique_ptr<icu::RegexMatcher> matcher;
        bool used;
    };

    std::optional<Goes> ruleFor(const std::string& name, const ItemState& state) {
        const auto text = icu::UnicodeString::fromUTF8(name);
        std::optional<Goes> result;
        for (auto& row : _rows) {
            UErrorCode error = U_ZERO_ERROR;
            const bool isKind = row.rule.goes == Goes::link
                                    ? state.isLink()
                                    : state.isFile() || (row.rule.goes == Goes::item && state.isFolder());
            if (isKind && row.matcher->reset(text).matches(error)) {
                row.used = true;
                result = row.rule.goes;
            }
        }
        return result;
    }

    std::vector<Row> _rows;
};

class DemoDevice {
  public:
    explicit DemoDevice(const std::string& version = "11.1.2") {
        const auto made =
            runProgram("ozdevice", {"create", folder.path("device"), "--files", "300", "--ios", version});
        EXPECT_EQ(made.status, 0) << made.errors;
        for (const auto line : stepNeighbours) {
            folder.make("device/Root" + std::string(line));
        }
    }

    Outcome cleanOnly(std::string_view step, int number, const platform::Dictionary& choices = {},
                      std::vector<std::string> options = {}) {
        platform::Dictionary settings;
        for (const auto key : allSteps) {
            settings[std::string(key)] = key == step ? number : 0;
        }
        platform::Dictionary stored = choices;
        stored["cleanupSettings"] = settings;
        std::ofstream(root() + "/private/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist",
                      std::ios::binary)
            << platform::serializePropertyList(stored, platform::PropertyListFormat::xml);
        before = tests::snapshotOf(root());
        options.insert(options.end(), {"--device", folder.path("device"), "-clean", "-printresults"});
        auto outcome = runProgram("ozvarine", options);
        after = tests::snapshotOf(root());
        return outcome;
    }
    [[nodiscard]] std::string root() const { return folder.path("device/Root"); }
    [[nodiscard]] std::set<std::string> gone() const {
        std::set<std::string> paths;
        for (const auto& [path, state] : before) {
            if (!after.contains(path)) {
                paths.insert(path);
            }
        }
        return paths;
    }
    /// What is new or changed, the program's own log aside.
    [[nodiscard]] std::vector<std::string> changes() const {
        auto lines = tests::differences(before, after);
        std::erase_if(lines, [](const std::string& line) {
            return line.starts_with("gone ") || line.contains(" private/var/mobile/Library/Ozvarine");
        });
        return lines;
    }

    TemporaryFolder folder{tests::memoryFolder()};
    TreeSnapshot before;
    TreeSnapshot after;
};

platform::Array customFiles() {
    const auto folder = [](const char* path, int setting, bool recursive, const char* start,
                           const char* middle, const char* end) {
        platform::Dictionary record{{"filePath", path}, {"fileType", "NSFileTypeDirectory"}};
        record["customFolderSetting"] = setting;
        record["recursive"] = recursive;
        for (const auto& [key, text] : {std::pair("startPattern", start), std::pair("middlePattern", middle),
                                        std::pair("endPattern", end)}) {
            if (text != nullptr) {
                record[key] = text;
            }
        }
        return record;
    };
    const auto file = [](const char* path) {
        return platform::Dictionary{{"filePath", path}, {"fileType", "NSFileTypeRegular"}};
    };
    return {file("/var/mobile/Documents/Downloads/invoice.pdf"),
            file("/var/mobile/Documents/admob"),
            file("   "),
            folder("/var/mobile/Documents/Scratch", 0, false, nullptr, "nothing", nullptr),
            folder("/var/mobile/Documents/Traces/", 2, true, nullptr, nullptr, nullptr),
            folder("/var/mobile/Documents/Downloads/", 2, true, "part-", nullptr, ".bin"),
            folder("/var/mobile/Media/Recordings/", 1, false, nullptr, nullptr, nullptr),
            folder("/var/mobile/Library/Caches/", 1, false, nullptr, "springboard", nullptr),
            folder("/var/mobile/Library/Caches/", 2, false, "http", nullptr, nullptr)};
}

uint64_t deletedCount(const std::string& output) {
    const size_t at = output.find("deleted=");
    return at == std::string::npos ? ~uint64_t{0} : std::stoull(output.substr(at + 8));
}

// Runs the step alone and compares what is gone with its rules; answers the rules that named nothing.
std::vector<std::string> expectRules(DemoDevice& device, const StepCase& step, int version) {
    const auto outcome = device.cleanOnly(step.key, step.number,
                                          {{"customFiles", customFiles()},
                                           {"fileTypes", platform::Array{"log", "logs", "tmp", "temp"}},
                                           {"excludedApps", platform::Dictionary{{"org.example.diary", 1}}}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");

    Rules rules(step.rules, version);
    const auto expected = rules.expected(device.before, containerNames(device.root()));
    std::set<std::string> paths;
    for (const auto& [path, goes] : expected) {
        paths.insert(path);
    }
    const auto gone = device.gone();
    std::vector<std::string> stayed;
    std::vector<std::string> tooMuch;
    std::ranges::set_difference(paths, gone, std::back_inserter(stayed));
    std::ranges::set_difference(gone, paths, std::back_inserter(tooMuch));
    EXPECT_THAT(stayed, IsEmpty()) << "should be gone";
    EXPECT_THAT(tooMuch, IsEmpty()) << "should have stayed";

    // Links go without being counted.
    const auto links =
        std::ranges::count_if(expected, [](const auto& row) { return row.second == Goes::link; });
    EXPECT_EQ(deletedCount(outcome.output), expected.size() - static_cast<size_t>(links));
    const bool respring = step.key == "CACHEFILES" || step.key == "TEMPFILES";
    EXPECT_THAT(outcome.output, HasSubstr(respring ? "shouldrespring=true" : "shouldrespring=false"));

    auto changes = device.changes();
    if (step.key == "APPLICATIONS") {
        std::erase_if(changes, [](const std::string& line) {
            return line.starts_with("changed ") && line.contains("/Library/Preferences/net.box.BoxNet.plist");
        });
    }
    EXPECT_THAT(changes, IsEmpty());
    std::cout << "figures: step " << step.key << " " << step.number << ": " << device.before.size()
              << " items, " << gone.size() << " removed\n";
    return rules.unused();
}

class StepAlone : public testing::TestWithParam<StepCase> {};
class StepsInTurn : public testing::TestWithParam<std::string> {};

} // namespace

TEST_P(StepAlone, RemovesWhatItsRulesNameAndNothingElse) {
    DemoDevice device;
    EXPECT_THAT(expectRules(device, GetParam(), 11), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(, StepAlone, testing::ValuesIn(stepCases), [](const auto& row) {
    return std::string(row.param.key) + std::to_string(row.param.number);
});

TEST_P(StepsInTurn, RemoveWhatTheirRulesNameOnOlderGenerations) {
    DemoDevice device(GetParam());
    const int version = std::stoi(GetParam());
    // From the last to the first, since all attachments would leave no unknown one.
    for (const auto& step : stepCases | std::views::reverse) {
        SCOPED_TRACE(step.key);
        if (version >= step.from) {
            expectRules(device, step, version);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, StepsInTurn, testing::Values("4.3", "7.1", "8.4"),
                         [](const auto& row) { return "iOS" + row.param.substr(0, 1); });

TEST(PackageStepAlone, DependenciesRemovesTheUnusedPackageWithTheDevicesOwnPackageDatabase) {
    const char* hostDatabase[] = {"/var/lib/dpkg/status", "/var/lib/dpkg/available",
                                  "/var/lib/apt/extended_states"};
    std::vector<std::string> host;
    for (const auto* path : hostDatabase) {
        host.push_back(tests::contentOf(path));
    }
    ASSERT_FALSE(host.front().empty());
    DemoDevice device;
    device.cleanOnly("DEPENDENCIES", 1, {}, {"--dry-run"});
    EXPECT_THAT(device.gone(), IsEmpty()) << "a dry run only shows the plan";
    EXPECT_THAT(device.changes(), IsEmpty()) << "a dry run only shows the plan";
    const auto outcome = device.cleanOnly("DEPENDENCIES", 1);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(deletedCount(outcome.output), 0);

    Rules rules(dependencyRules);
    const auto expected = rules.expected(device.before, {});
    EXPECT_THAT(rules.unused(), IsEmpty());
    std::set<std::string> paths;
    for (const auto& [path, goes] : expected) {
        paths.insert(path);
    }
    EXPECT_EQ(device.gone(), paths);
    for (const auto& line : device.changes()) {
        EXPECT_TRUE(line.contains("private/var/lib/dpkg/") || line.contains("private/var/lib/apt/") ||
                    line.contains("private/var/cache/apt/"))
            << line;
    }
    const std::string status = tests::contentOf(device.root() + "/private/var/lib/dpkg/status");
    EXPECT_THAT(status, testing::Not(HasSubstr("Package: org.hillside.leftover\n")));
    EXPECT_THAT(status, HasSubstr("Package: org.hillside.library\n"));
    for (size_t index = 0; index < host.size(); ++index) {
        EXPECT_EQ(tests::contentOf(hostDatabase[index]), host[index]) << hostDatabase[index];
    }
}
