#pragma once

#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCoreMode.h"
#include "Model/Core/StayedItems.h"
#include "Platform/Files/FileHandle.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class Device;
}

/// What a run tells of itself: how many items it touched and their bytes, the log that names them, what could
/// not be done, and what a person at a terminal sees. The primitives write it; while they do, another thread
/// may ask for `fileCount` and `freedSpace`.
class RunRecord {
  public:
    /// The device outlives the record.
    explicit RunRecord(platform::Device& device)
        : _device(device) {}

    [[nodiscard]] OZCleanupLogger* cleanupLogger() const { return _cleanupLogger.get(); }
    void setCleanupLogger(std::unique_ptr<OZCleanupLogger> logger) { _cleanupLogger = std::move(logger); }
    /// Whether `print` prints; one switch for all engines of the process.
    [[nodiscard]] static bool commandLineOutputEnabled() { return _commandLineOutputEnabled; }
    static void setCommandLineOutputEnabled(bool enabled) { _commandLineOutputEnabled = enabled; }

    // The frame of a run.
    /// Counters at 0, nothing stayed, log closed.
    void reset();
    /// Begins a new log for a run in a mode; the title says in its banner what became of the paths below it.
    /// Gives the free bytes of the moment, 0 in a mode that frees none.
    uint64_t begin(OZCoreMode mode, std::string_view title, platform::FileWriting logWriting);
    /// Completes counters and log, and tells what stayed; no size where no start is given.
    void end(std::optional<uint64_t> freeAtStart);
    /// Completes the counters of a run and gives its summary; with the size when asked for it.
    std::string processFreedSpaceAndReturnResultsString(bool withSize);

    // While it goes on.
    /// One more item, which the log names.
    void count(std::string_view path) {
        ++_fileCount;
        if (_cleanupLogger) {
            _cleanupLogger->logWithSpacer(path);
        }
    }
    /// Bytes of an item.
    void addSize(uint64_t bytes) { _freedSpace += bytes; }
    void log(std::string_view text);
    /// For whoever sits at a terminal; nothing unless command-line output is enabled.
    void print(std::string_view text) const;
    /// Any thread may add to them.
    [[nodiscard]] StayedItems& stayedItems() { return _stayedItems; }

    // What it has come to.
    [[nodiscard]] uint64_t fileCount() const { return _fileCount; }
    /// Bytes: what the file systems gained in a cleanup, what the items' sizes add up to in the other modes.
    [[nodiscard]] uint64_t freedSpace() const { return _freedSpace; }
    /// The same for people; none before the end of a run.
    [[nodiscard]] const std::optional<std::string>& freedSpaceString() const { return _freedSpaceString; }
    [[nodiscard]] const StayedItems& stayedItems() const { return _stayedItems; }

  private:
    void tellWhatStayed();

    platform::Device& _device;
    OZCoreMode _mode = OZCoreMode::clean;
    std::unique_ptr<OZCleanupLogger> _cleanupLogger;
    std::atomic<uint64_t> _fileCount = 0;
    std::atomic<uint64_t> _freedSpace = 0;
    std::optional<std::string> _freedSpaceString;
    StayedItems _stayedItems;

    static inline bool _commandLineOutputEnabled = false;
};
