#include "Tests/Faults/Promises.h"

#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Support/LogReader.h"

#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using scenarios::effectsOn;
using testing::IsEmpty;
using tests::Aftermath;
using tests::TreeSnapshot;
using tests::withoutBackupNames;

namespace promises {

namespace {

std::vector<std::string> itemsNamed(const Aftermath& aftermath) {
    return tests::itemsNamedByLog(aftermath.subject.world.folder.contents(OZCleanupLogger::logFilePath),
                                  aftermath.before);
}

} // namespace

void nothingChanges(const Aftermath& aftermath) {
    EXPECT_THAT(effectsOn(aftermath.before, aftermath.after), IsEmpty());
}

void onlyBackupNamesChange(const Aftermath& aftermath) {
    EXPECT_THAT(effectsOn(withoutBackupNames(aftermath.before), withoutBackupNames(aftermath.after)),
                IsEmpty());
}

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

void fileIsOldOrNew(const Aftermath& aftermath) {
    const auto& done = aftermath.subject.done;
    EXPECT_EQ(aftermath.subject.world.folder.contents("/to/kept"), done->has_value() ? "new" : "kept");
    for (const auto& [path, state] : aftermath.before) {
        const auto after = aftermath.after.at(path);
        EXPECT_TRUE(path == "to/kept" || after == state) << path;
        EXPECT_TRUE(after.mode == state.mode && after.owner == state.owner && after.group == state.group);
    }
}

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

void allFilesStay(const Aftermath& aftermath) {
    const auto filesOf = [](const TreeSnapshot& tree) {
        std::multiset<std::string> files;
        for (const auto& [path, state] : tree) {
            if (state.isFile()) {
                files.insert(tests::describe(path.substr(path.rfind('/') + 1), state));
            }
        }
        return files;
    };
    EXPECT_EQ(filesOf(aftermath.after), filesOf(aftermath.before));
}

} // namespace promises
