#include "Model/Core/OZCleanupLogger.h"
#include "Tests/Model/Core/GeneratedTree.h"
#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Support/Engine.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <iostream>
#include <regex>

using scenarios::effectsOn;
using testing::IsEmpty;
using tests::snapshotOf;
using tests::TreeSnapshot;
using namespace generated;

namespace {

// What a run may write beside what its steps remove: its log, wherever a link takes it, and one preference
// file that it edits.
bool isRunsOwn(std::string_view path) {
    return path.starts_with("private/var/mobile/Library/Ozvarine") ||
           path.starts_with("private/elsewhere/Ozvarine") || path.contains("/Ozvarine/junk.txt") ||
           path.ends_with("/Library/Preferences/net.box.BoxNet.plist");
}

struct Totals {
    size_t items = 0, named = 0, restored = 0;
};

// One device with a generated tree, and the outside beside it.
class Specimen {
  public:
    explicit Specimen(uint64_t seed)
        : _device(factsFor(seed))
        , _tree((_outside.make("file: outside\nfolder/inner: outside\nlink -> file"), seed), _root,
                _outside.path()) {
        _device.addNotingTool("/usr/bin/killall");
        _device.device().warnings().setReceiver([](const auto&) {});
        _settings = _tree.settings();
        _core.choices().setCustomFilesExcludingInvalid(_tree.customFiles());
        _core.choices().setFileTypesExcludingIllegal(_tree.fileTypes());
        before = snapshot();
        _outsideBefore = snapshotOf(_outside.path());
    }

    void check(Totals& totals) {
        const auto named = analyze();
        if (!_tree.hasBackups()) {
            testAndRestore(totals);
            EXPECT_EQ(analyze(), named) << "an analysis after a restore";
        }
        cleanUp(named);
        EXPECT_THAT(effectsOn(_outsideBefore, snapshotOf(_outside.path())), IsEmpty()) << "outside";
        totals.items += before.size();
        totals.named += named.size();
    }

    TreeSnapshot before;

  private:
    [[nodiscard]] TreeSnapshot snapshot() const {
        auto items = snapshotOf(_root);
        std::erase_if(items, [](const auto& item) { return isRunsOwn(item.first); });
        return items;
    }

    void run(OZCoreMode mode) {
        const tests::StandardOutput nowhere("/dev/null");
        _core.choices().setTestMode(mode == OZCoreMode::test);
        _core.clean(&_settings, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
    }

    // Changes nothing, and names each item that it counts.
    std::set<std::string> analyze() {
        run(OZCoreMode::analyze);
        EXPECT_THAT(effectsOn(before, snapshot()), IsEmpty()) << "an analysis";
        auto tree = before;
        tree["private/var/mobile/Library/Ozvarine"] = {.mode = S_IFDIR};
        tree.merge(snapshotOf(_root));
        const auto items = tests::itemsNamedByLog(_device.contents(OZCleanupLogger::logFilePath), tree);
        EXPECT_EQ(items.size(), _core.fileCount()) << "items of the log";
        return {items.begin(), items.end()};
    }

    void testAndRestore(Totals& totals) {
        run(OZCoreMode::test);
        EXPECT_EQ(filesOf(snapshot()), filesOf(before)) << "files after a test run";
        _core.backup(BackupAction::restore);
        totals.restored += _core.fileCount();
        EXPECT_THAT(effectsOn(before, snapshot()), IsEmpty()) << "a test run and its restore";
        _core.backup(BackupAction::restore);
        EXPECT_EQ(_core.fileCount(), 0U) << "a second restore";
    }

    // All files without their paths.
    static std::multiset<std::string> filesOf(const TreeSnapshot& tree) {
        std::multiset<std::string> files;
        for (const auto& [path, state] : tree) {
            if (!state.isFolder()) {
                files.insert(tests::describe("", state));
            }
        }
        return files;
    }

    void cleanUp(const std::set<std::string>& named) {
        run(OZCoreMode::clean);
        const auto after = snapshot();
        for (const auto& [path, state] : before) {
            const bool isGone = !after.contains(path);
            EXPECT_TRUE(isGone || !named.contains(path) || _tree.isImmutable(path))
                << "named by the analysis and still there after the cleanup: " << path;
            EXPECT_TRUE(!isGone || named.contains(path) || goesUnnamed(path, state))
                << "gone in the cleanup and not named by the analysis: " << path;
        }
        for (const auto& line : effectsOn(before, after)) {
            EXPECT_TRUE(line.starts_with("- ")) << line;
        }
    }

    // What the rules let a cleanup take although an analysis does not name it: uncounted links of crash
    // reports, folders of attachments that only the cleanup itself empties, and files by type where an
    // analysis looks no second time. Any rule's folder may be a link to the folder elsewhere.
    static bool goesUnnamed(const std::string& path, const tests::ItemState& state) {
        static const std::regex links("private/(elsewhere|var/mobile/Library/Logs/CrashReporter)/[^]*");
        static const std::regex folders("private/(elsewhere|var/mobile/Library/SMS)/[^]*");
        static const std::regex files(
            "(private/var/([Ll]ogs?|tmp)|(.*/)?Library/Logs)/[^]*\\.(log|tmp|temp|logs|x-y)");
        return std::regex_match(path, state.isLink() ? links : state.isFolder() ? folders : files);
    }

    tests::TemporaryFolder _outside{tests::memoryFolder()};
    TemporaryDevice _device;
    tests::Engine _engine{_device.device()};
    OZCore& _core = _engine.core;
    std::string _root = _device.folder() / "Root";
    GeneratedTree _tree;
    platform::Dictionary _settings;
    TreeSnapshot _outsideBefore;
};

} // namespace

TEST(GeneratedTrees, KeepTheEnginesPromises) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to make items of several owners";
    }
    ::setenv("TMPDIR", tests::memoryFolder().c_str(), 1);
    Totals totals;
    const uint64_t start = tests::numberFrom("OZ_FIRST_SEED", 1);
    const uint64_t count = tests::numberFrom("OZ_SEEDS", 150);
    for (uint64_t seed = start; seed < start + count && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Specimen specimen(seed);
        specimen.check(totals);
        if (HasFailure()) {
            std::cout << "OZ_FIRST_SEED=" << seed << " OZ_SEEDS=1 repeats it with this tree:\n";
            for (const auto& [path, state] : specimen.before) {
                std::cout << tests::describe(path, state) << "\n";
            }
        }
    }
    std::cout << "figures: " << count << " generated trees, " << totals.items << " items, " << totals.named
              << " named for removal, " << totals.restored << " restored\n";
}
