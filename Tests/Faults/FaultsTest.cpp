// Operations in which one call to the system fails, each call once, and what they promise: they end as they
// should, they tell it, and nobody's data suffers.
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZAction.h"
#include "Tests/Faults/Trial.h"
#include "Tests/Scenarios/Runner/Effects.h"

#include <sys/xattr.h>

using namespace tests;
using scenarios::effectsOn;
using testing::IsEmpty;

namespace {

constexpr const char* settings = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";

// Promises.

std::vector<std::string> itemsNamed(const Aftermath& aftermath) {
    return itemsNamedByLog(aftermath.subject.world.folder.contents(OZCleanupLogger::logFilePath),
                           aftermath.before);
}

void nothingChanges(const Aftermath& aftermath) {
    EXPECT_THAT(effectsOn(aftermath.before, aftermath.after), IsEmpty());
}

void onlyBackupNamesChange(const Aftermath& aftermath) {
    EXPECT_THAT(effectsOn(withoutBackupNames(aftermath.before), withoutBackupNames(aftermath.after)),
                IsEmpty());
}

/// Nothing goes but what the device's lines say, and all of it where the operation claims success.
void onlyWhatIsJunkGoes(const Aftermath& aftermath) {
    const auto& junk = aftermath.subject.world.gone();
    const auto isJunk = [&](const std::string& path) {
        return std::ranges::any_of(
            junk, [&](const auto& top) { return path == top || scenarios::isBelow(path, top); });
    };
    for (const auto& line : effectsOn(aftermath.before, aftermath.after)) {
        EXPECT_TRUE(line.starts_with("- ") && isJunk(line.substr(3, line.find_last_not_of('/') - 2))) << line;
    }
    const bool claimsSuccess = aftermath.subject.done && aftermath.subject.done->has_value();
    for (const auto& [path, state] : aftermath.after) {
        EXPECT_FALSE((aftermath.isUndisturbed || claimsSuccess) && isJunk(path)) << path << " is still there";
    }
}

void runEnds(const Aftermath& aftermath) {
    auto& core = aftermath.subject.engine->core;
    aftermath.subject.count = core.fileCount();
    EXPECT_FALSE(core.isRunning());
    EXPECT_LE(core.fileCount(), 4 * aftermath.before.size());
    EXPECT_LT(core.freedSpace(), uint64_t{1} << 40U);
    EXPECT_LE(itemsNamed(aftermath).size(), core.fileCount());
    EXPECT_TRUE(!aftermath.isUndisturbed || core.fileCount() > 3);
}

void whatIsNamedHasGone(const Aftermath& aftermath) {
    for (const auto& path : itemsNamed(aftermath)) {
        EXPECT_FALSE(aftermath.after.contains(path)) << path << " was reported as gone";
    }
}

/// After a success the new end alone.
void oneEndHoldsAll(const Aftermath& aftermath) {
    const auto whole = scenarios::branchOf(aftermath.before, "from/tree");
    const auto atOld = scenarios::branchOf(aftermath.after, "from/tree");
    const auto atNew = scenarios::branchOf(aftermath.after, "to/tree");
    EXPECT_TRUE(atOld == whole || atNew == whole);
    // A refusal that was expected has been taken note of already, and left nothing here.
    const bool succeeded = aftermath.subject.done && aftermath.subject.done->has_value();
    EXPECT_TRUE(!succeeded || (atNew == whole && atOld.empty()));
    EXPECT_EQ(aftermath.after.at("to/kept"), aftermath.before.at("to/kept"));
}

void isRefused(const Aftermath& aftermath) {
    EXPECT_FALSE(std::exchange(aftermath.subject.done, std::nullopt)->has_value());
}

/// A file that could not even be unlinked may stay behind; it hides nothing.
void fileIsOldOrNew(const Aftermath& aftermath) {
    const auto& done = aftermath.subject.done;
    EXPECT_EQ(aftermath.subject.world.folder.contents("/to/kept"), done->has_value() ? "new" : "kept");
    for (const auto& [path, state] : aftermath.before) {
        const auto after = aftermath.after.at(path);
        EXPECT_TRUE(path == "to/kept" || after == state) << path;
        EXPECT_TRUE(after.mode == state.mode && after.owner == state.owner && after.group == state.group);
    }
}

/// Settings that could not be read when they were to be changed are kept beside the new ones.
void settingsAreOldOrNew(const Aftermath& aftermath) {
    auto& [world, engine, item, task, done, count] = aftermath.subject;
    const auto listAt = [&](const std::string& path) {
        const auto list = platform::parsePropertyList(world.folder.contents(path));
        return list ? scenarios::textOf(*list) : "";
    };
    const auto isOld = [&](const std::string& path) {
        return listAt(path) == R"({"mine": "old", "other": "kept"})";
    };
    const bool isKeptBeside = isOld(std::string(settings) + ".damaged");
    EXPECT_TRUE(done->has_value() || isKeptBeside || isOld(settings));
    auto& defaults = world.device().standardUserDefaults();
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(isKeptBeside || listAt(settings) == R"({"mine": "new", "other": "kept"})");
    EXPECT_EQ(defaults.stringForKey("mine"), "new");
}

/// The names and contents of all files, wherever they are.
void allFilesStay(const Aftermath& aftermath) {
    const auto filesOf = [](const TreeSnapshot& tree) {
        std::multiset<std::string> files;
        for (const auto& [path, state] : tree) {
            if (state.isFile()) {
                files.insert(describe(path.substr(path.rfind('/') + 1), state));
            }
        }
        return files;
    };
    EXPECT_EQ(filesOf(aftermath.after), filesOf(aftermath.before));
}

void isSwitched(const Aftermath& aftermath) {
    auto& item = *aftermath.subject.item;
    EXPECT_TRUE(!aftermath.isUndisturbed || item.currentEnabledState() == item.enabledState());
}

constexpr char toolOutput[] = "one\ntwo\n";
constexpr char findOutput[] = "/d\n/d/a\n";

/// Only a whole output counts; `whole` is what the tool writes.
template <const char* whole>
void outputIsWhole(const Aftermath& aftermath) {
    const auto& [world, engine, item, task, done, count] = aftermath.subject;
    EXPECT_TRUE(task->terminated());
    EXPECT_EQ(task->error().has_value(), !done->has_value());
    const bool isWhole = done->has_value() && task->terminationStatus() == 0;
    EXPECT_TRUE(isWhole || !aftermath.isUndisturbed);
    EXPECT_TRUE(isWhole ? task->outputBytes() == whole
                        : std::string_view(whole).starts_with(task->outputBytes()))
        << task->outputBytes();
    // The end of a task is told there.
    aftermath.subject.world.device().mainQueue().runPending();
}

void logsNeighbourStays(const Aftermath& aftermath) {
    const auto& folder = aftermath.subject.world.folder;
    EXPECT_EQ(folder.contents("/var/mobile/Library/Ozvarine/Backups/kept"), "12345");
    EXPECT_TRUE(!aftermath.isUndisturbed || folder.contents(OZCleanupLogger::logFilePath) == "text");
}

// Devices.

// Something for each of the steps below, and neighbours that are nobody's junk.
const std::string junk =
    R"(gone /var/mobile/Library/Logs/a/b /var/mobile/Library/Logs/CrashReporter/own /var/log/x
gone /var/logs/y/z /var/tmp/t/u /d/one.log /d/deep/er/two.tmp /custom/ /custom/a /custom/b/c
kept /var/mobile/Library/Caches/c/d /var/mobile/Library/Caches/e /d/kept /var/mobile/Media/DCIM/100APPLE/IMG_0001.JPG
kept /var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist.kept
file /var/log/link -> /d
gone /custom/b/link -> /var/mobile/Media)";

const std::string applications = R"(file /tmp -> private/var/tmp
file /etc -> private/etc
fact HardwareModel "iPhone8,2"
no Applications
let B = /var/containers/Bundle/Application
let D = /var/mobile/Containers/Data/Application
let A = /var/mobile/Library/SMS/Attachments
let S = /var/mobile/Library/Auxo/Snapshots
each I in org.example.cleaned org.example.excluded
container $B/$I $I
bundle $B/$I/$I.app $I
container $D/$I $I
gone $D/org.example.cleaned/Library/Caches/cached $D/org.example.cleaned/Documents/diary.log
kept $D/org.example.excluded/Library/Caches/cached $D/org.example.excluded/Documents/diary.log
let C = $B/org.example.cleaned/org.example.cleaned.app
let E = $B/org.example.excluded/org.example.excluded.app
gone $C/fr.lproj/ $C/fr.lproj/a.strings $C/icon.png
kept $C/de.lproj/a.strings $C/icon@2x.png
kept $E/fr.lproj/a.strings $E/de.lproj/a.strings $E/icon.png $E/icon@2x.png
gone $A/bb/ $A/bb/unknown.jpg $S/org.example.gone/ $S/org.example.gone/snapshot /d/note.log
kept $A/aa/known.jpg $S/org.example.excluded/snapshot
sqlite /var/mobile/Library/SMS/sms.db pragma synchronous = off; create table attachment (a, b, c, d, path); insert into attachment (path) values ('/var/mobile/Library/SMS/Attachments/aa/known.jpg'))";

const std::string files = R"(gone /from/tree/
file /from/tree/a: a
file /from/tree/sub/b: b
file /from/tree/sub/deep/c: c
file /from/tree/link -> ../../to
file /to/kept: kept)";

const std::string others = "\nhost chown 501:20 Root/to/kept && chmod 600 Root/to/kept";
const std::string readable = "\nhost chmod 640 Root/to/kept";
const std::string emptyFolders =
    "gone /empty/none/ /empty/none/at/all/ /empty/2/ /empty/3/ /empty/4/\nkept /empty/full/sub/file";
const std::string stored = std::string("plist ") + settings + R"( {"mine": "old", "other": "kept"})";
const std::string neighbours = " /on/other /off/another";
const std::string fonts = "kept /System/Library/Fonts/Cache/fonts /var/Fonts/mine.ttf";

// Operations.

const std::vector<std::string_view> steps = {cleanupstep::logFiles, cleanupstep::cacheFiles,
                                             cleanupstep::tempFiles, cleanupstep::fileTypeCleanup,
                                             cleanupstep::customFiles};

void startEngine(Subject& subject) {
    subject.engine = std::make_unique<Engine>(subject.world.device());
    auto& choices = subject.engine->core.choices();
    choices.setFileTypesExcludingIllegal({"log", "tmp"});
    choices.setCustomFilesExcludingInvalid(
        platform::Array{platform::Dictionary{{"filePath", "/custom"}, {"fileType", "NSFileTypeDirectory"}}});
}

template <OZCoreMode mode>
void clean(Subject& subject) {
    subject.engine->clean(steps, mode);
}

template <OZCoreMode mode>
void startRun(Subject& subject) {
    startEngine(subject);
    subject.engine->clean({}, mode);
    subject.engine->core.cleanupLogger()->deleteLogFile();
}

void makeBackups(Subject& subject) {
    startEngine(subject);
    clean<OZCoreMode::test>(subject);
    subject.engine->core.cleanupLogger()->deleteLogFile();
}

const CleanupRun::Paths paths = {"/var/log/x",    "/custom",  "/d/deep",
                                 "/var/log/link", "/missing", "/custom/a"};

void walk(Subject& subject) {
    auto& run = subject.engine->core.run();
    run.delFilesInFolderRecursive("/custom");
    run.delEmptyDirs("/var");
    run.delr(CleanupRun::Paths{"/d/deep"});
}

void writeLog(Subject& subject) {
    auto& log = *subject.engine->core.cleanupLogger();
    log.openLogFileForWriting();
    log.log("text");
    log.closeLogFile();
}

void storeChoices(Subject& subject) {
    // Steps end many programs; one task that fails shows what all of them do.
    std::filesystem::remove(subject.world.folder.folder() / "Tools/usr/bin/killall");
    platform::Dictionary chosen;
    for (const auto& step : cleanupSteps) {
        chosen[std::string(step.key)] = uint64_t{step.key != cleanupstep::dependencies};
    }
    const auto all = static_cast<uint64_t>(OZExclusionMask::all);
    subject.world.folder.addFile(
        settings,
        platform::serializePropertyList(
            platform::Dictionary{{"cleanupSettings", chosen},
                                 {"fileTypes", platform::Array{"log"}},
                                 {"languagesToRemove", platform::Array{"French"}},
                                 {"excludedApps", platform::Dictionary{{"org.example.excluded", all}}}},
            platform::PropertyListFormat::xml));
}

// As the program does it: everything of the device is read anew.
void cleanByChoices(Subject& subject) {
    auto& device = subject.world.device();
    auto& defaults = device.standardUserDefaults();
    if (defaults.readError()) {
        return;
    }
    static const platform::Bundle resources;
    subject.engine = std::make_unique<Engine>(device, resources);
    auto& [apps, languages, core] = *subject.engine;
    registerDefaultSettings(defaults);
    registerObject(defaults, apps);
    registerObject(defaults, core.choices());
    core.clean(nullptr, Analyze::no);
    core.remove(OZAction::removeLanguages, Analyze::no);
    core.remove(OZAction::remove1xImages, Analyze::no);
}

void addItem(Subject& subject) {
    subject.item = OZTogglableFile::make(subject.world.device(), "id", "/on/item.plist", "/off/item.plist");
    subject.item->setEnabledState(!subject.item->currentEnabledState());
}

// As an owner of choices does: it loads them, and writes them all back.
void saveSettings(Subject& subject) {
    auto& defaults = subject.world.device().standardUserDefaults();
    defaults.setObject("other", defaults.stringForKey("other").value_or("default"));
    defaults.setObject("mine", "new");
    subject.done = defaults.synchronize();
}

void makeTask(Subject& subject, const char* tool, std::vector<std::string> arguments) {
    subject.task = OZTask::make(subject.world.device(), tool, std::move(arguments));
    subject.task->setStdOutAction(OZTaskStreamAction::capture);
    subject.task->setStdErrAction(OZTaskStreamAction::discard);
}

void launch(Subject& subject) {
    subject.done.emplace();
    if (!subject.task->launchSynchronously()) {
        subject.done = platform::failure(ECANCELED);
    }
}

CleanupRun& runOf(Subject& it) {
    return it.engine->core.run();
}

platform::FileManager filesOf(Subject& it) {
    return it.world.device().fileManager();
}

const auto restore = [](Subject& it) { it.engine->core.backup(BackupAction::restore); };
const auto quickDel = [](Subject& it) { runOf(it).quickDel(paths); };
const auto quickDelLang = [](Subject& it) { runOf(it).quickDelLang(paths); };
const auto delEmptyDirs = [](Subject& it) { runOf(it).delEmptyDirs("/empty"); };
const auto addAttribute = [](Subject& it) {
    ::setxattr(it.world.folder.hostPath("/from/tree/a").c_str(), "user.note", "x", 1, 0);
};
const auto moveTree = [](Subject& it) { it.done = filesOf(it).moveItemAtPath("/from/tree", "/to/tree"); };
const auto moveOntoItem = [](Subject& it) {
    it.done = filesOf(it).moveItemAtPath("/from/tree/a", "/to/kept");
};
const auto removeTree = [](Subject& it) { it.done = filesOf(it).removeItemAtPath("/from/tree"); };
const auto writeFile = [](Subject& it) { it.done = filesOf(it).writeContents("/to/kept", "new"); };
const auto switchItem = [](Subject& it) { std::ignore = it.item->applyChanges(); };
const auto moveFonts = [](Subject& it) {
    std::ignore = OZFontsFolderMover(it.world.device()).moveFolder(nullptr);
};
const auto makeTool = [](Subject& it) { makeTask(it, "/usr/bin/tool", {}); };
const auto makeSearch = [](Subject& it) { makeTask(it, "/usr/bin/find", {"/d", "-print"}); };

class Faults : public testing::TestWithParam<Trial> {};

} // namespace

TEST_P(Faults, LeavePromisesKept) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, or a user namespace that maps it";
    }
    tryEveryFault(GetParam());
}

const std::string elsewhere = "renameat2 to another folder";
const Fault otherFileSystem{.call = elsewhere, .error = EXDEV};
const Fault cannotKeepFromReplacing{.call = elsewhere, .error = EINVAL};
const Fault mayNotGiveFilesAway{.call = "fchown", .error = EINVAL};

const Trial trials[] = {
    {"Analysis", junk, startEngine, clean<OZCoreMode::analyze>, {nothingChanges, runEnds}},
    {"Cleanup", junk, startEngine, clean<OZCoreMode::clean>, {onlyWhatIsJunkGoes, runEnds}},
    {"TestRun", junk, startEngine, clean<OZCoreMode::test>, {onlyBackupNamesChange, runEnds}},
    {"Restore", junk, makeBackups, restore, {onlyBackupNamesChange, runEnds}},
    {"QuickDel", junk, startRun<OZCoreMode::clean>, quickDel, {whatIsNamedHasGone, runEnds}},
    {"QuickDelLang", junk, startRun<OZCoreMode::clean>, quickDelLang, {whatIsNamedHasGone, runEnds}},
    {"EmptyFolders", emptyFolders, startRun<OZCoreMode::clean>, delEmptyDirs, {onlyWhatIsJunkGoes, runEnds}},
    {"Walks", junk, startRun<OZCoreMode::test>, walk, {onlyBackupNamesChange}, {}, allocation},
    {"Log", "kept /var/mobile/Library/Ozvarine/Backups/kept", startEngine, writeLog, {logsNeighbourStays}},
    {"CleanupByChoices", applications, storeChoices, cleanByChoices, {onlyWhatIsJunkGoes}},
    {"Move", files, addAttribute, moveTree, {oneEndHoldsAll}},
    {"MoveAway", files, addAttribute, moveTree, {oneEndHoldsAll}, otherFileSystem},
    {"MoveAwayMemory", files, addAttribute, moveTree, {oneEndHoldsAll}, otherFileSystem, allocation},
    {"MoveOntoItem", files, nullptr, moveOntoItem, {nothingChanges, isRefused}, cannotKeepFromReplacing},
    {"Removal", files, nullptr, removeTree, {onlyWhatIsJunkGoes}},
    {"RemovalMemory", files, nullptr, removeTree, {onlyWhatIsJunkGoes}, {}, allocation},
    {"Write", files + others, nullptr, writeFile, {fileIsOldOrNew}},
    {"WriteByUser", files + readable, nullptr, writeFile, {fileIsOldOrNew}, mayNotGiveFilesAway},
    {"Settings", stored, nullptr, saveSettings, {settingsAreOldOrNew}},
    {"SwitchingOff", "kept /on/item.plist" + neighbours, addItem, switchItem, {allFilesStay, isSwitched}},
    {"SwitchingOn", "kept /off/item.plist" + neighbours, addItem, switchItem, {allFilesStay, isSwitched}},
    {"Fonts", fonts, nullptr, moveFonts, {allFilesStay}},
    {"Tool", "tool /usr/bin/tool echo one; echo two", makeTool, launch, {outputIsWhole<toolOutput>}},
    {"Search", "file /d/a", makeSearch, launch, {outputIsWhole<findOutput>}},
};

INSTANTIATE_TEST_SUITE_P(, Faults, testing::ValuesIn(trials),
                         [](const auto& trial) { return trial.param.name; });
