#pragma once

#include "Model/Core/CleanupChoices.h"
#include "Model/Core/CleanupRun.h"
#include "Model/Core/OZCoreMode.h"
#include "Model/Core/RunRecord.h"
#include "Platform/Formats/PropertyList.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class Device;
}
enum class OZAction : unsigned;
class OZAppList;
class OZLocalizationManager;
struct RunContext;

/// Whether a run only looks.
enum class Analyze : bool { no, yes };

/// What becomes of the backups of test runs.
enum class BackupAction : bool { remove, restore };

/// The cleanup engine, as front ends know it: what the user chose, the runs, and what they tell. One
/// long-lived object serves all front ends; one run at a time occupies the calling thread, and the device's
/// current directory belongs to it. While it runs, another thread may poll `isRunning`, `cleanupStepCount`
/// and `fileCount`.
class OZCore {
  public:
    /// What is given outlives the engine.
    OZCore(platform::Device& device, const OZAppList& appList,
           const OZLocalizationManager& localizationManager);

    /// What the user chose; whoever shows or changes choices asks them alone.
    [[nodiscard]] CleanupChoices& choices() { return _choices; }
    [[nodiscard]] const CleanupChoices& choices() const { return _choices; }
    /// The log of the runs; null where they have none.
    [[nodiscard]] OZCleanupLogger* cleanupLogger() const { return _record.cleanupLogger(); }
    void setCleanupLogger(std::unique_ptr<OZCleanupLogger> logger) {
        _record.setCleanupLogger(std::move(logger));
    }
    /// Whether the steps print their headings; one switch for all engines of the process.
    [[nodiscard]] bool commandLineOutputEnabled() const { return RunRecord::commandLineOutputEnabled(); }
    void setCommandLineOutputEnabled(bool enabled) { RunRecord::setCommandLineOutputEnabled(enabled); }

    // Runs.
    /// Walks the steps that the settings (the engine's own, if none are given) switch on. Returns when it is
    /// over.
    void clean(const platform::Dictionary* settings, Analyze analyze);
    /// Removes payload that the device or its user has no need of: images, artwork, languages, keyboards or
    /// voices. An action of another kind leaves the run open; nobody may ask for one.
    void remove(OZAction action, Analyze analyze);
    /// Restores all backups of test runs, or removes them for good. What stands in a backup's old place gives
    /// way to it.
    void backup(BackupAction action);
    /// Back to the state before a run: counters at 0, current directory "/", log closed.
    void resetState();
    /// The run that goes on, or the last one: single items may be cleaned by it, in its mode and beyond its
    /// steps. The next one takes its place.
    [[nodiscard]] CleanupRun& run() { return *_run; }

    // What a run tells.
    [[nodiscard]] bool isRunning() const { return _isRunning; }
    [[nodiscard]] uint64_t fileCount() const { return _record.fileCount(); }
    [[nodiscard]] uint64_t cleanupStepCount() const { return _cleanupStepCount; }
    /// Bytes: what the file systems gained in a cleanup, what the items' sizes add up to in the other modes.
    [[nodiscard]] uint64_t freedSpace() const { return _record.freedSpace(); }
    /// The same for people; none before the end of a run.
    [[nodiscard]] const std::optional<std::string>& freedSpaceString() const {
        return _record.freedSpaceString();
    }
    /// What the last cleanup, test run, removal or restore tried and could not do.
    [[nodiscard]] const StayedItems& stayedItems() const { return _record.stayedItems(); }

  private:
    [[nodiscard]] OZCoreMode modeFor(Analyze analyze) const;
    /// A new run at the top of the tree.
    void makeRun(OZCoreMode mode);
    /// Gives the free bytes of the moment, 0 in a mode that frees none.
    uint64_t beginRun(OZCoreMode mode);
    uint64_t beginRun(OZCoreMode mode, std::string_view title, platform::FileWriting logWriting);
    /// Tells no size where no start is given.
    void endRun(std::optional<uint64_t> freeAtStart);
    [[nodiscard]] RunContext context();
    /// Whether the language that the device speaks can be spared; tells a person if not.
    [[nodiscard]] bool knowsLanguageInUse() const;

    platform::Device& _device;
    const OZAppList& _appList;
    const OZLocalizationManager& _localizationManager;
    CleanupChoices _choices;
    RunRecord _record;
    std::optional<CleanupRun> _run;
    std::atomic<bool> _isRunning = false;
    std::atomic<uint64_t> _cleanupStepCount = 0;
};
