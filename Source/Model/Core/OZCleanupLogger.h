#pragma once

#include "Platform/Device/DeviceNames.h"
#include "Platform/Files/FileManager.h"

#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace platform {
class Device;
class HostOutput;
} // namespace platform

/// Writes the log of a run: a text file that names each item touched. What cannot be written is left out, and
/// told when the run is over.
class OZCleanupLogger {
  public:
    explicit OZCleanupLogger(platform::Device& device);

    static constexpr std::string_view logFilePath = devicename::logFile;

    /// Opens the log and goes on at its end; a missing one is made, its folder too. Nothing if it is open.
    /// Gathered writing is for runs that change nothing: the log of any other tells what was touched even
    /// when the process is killed.
    void openLogFileForWriting(platform::FileWriting writing = platform::FileWriting::direct);
    void closeLogFile();
    /// Removes the file, closing it first.
    void deleteLogFile();

    /// Writes the text as it is. A log that is not open is opened for this one text.
    void log(std::string_view text) { write(text, {}); }
    /// The text and a blank line.
    void logWithSpacer(std::string_view text);
    /// Puts the text before a line of the closed file (the first is 1), or behind its last line where that is
    /// the one before. Nothing without a "sed" on the device; one that the device folder brings does the
    /// work.
    void logAtLine(std::string_view text, unsigned long line);

    /// From now on the log of each run goes there, too, byte for byte.
    void setHostOutput(std::shared_ptr<platform::HostOutput> output) { _hostOutput = std::move(output); }
    /// To be called when a run is over and its log is closed: ends the output on the host, and tells a
    /// person, in one line each, what could not be written since the log was deleted.
    void endLog();
    /// Whether an output on the host lacks something.
    [[nodiscard]] bool hostOutputFailed() const;

  private:
    void note(const platform::Result<void>& outcome);
    void write(std::string_view text, std::string_view more);
    void openOrCreateLogFile();
    void makeLogFolder();
    void createLogFile();
    void insertAtLine(std::string_view text, unsigned long line);

    platform::Device& _device;
    platform::FileManager _fileManager;
    std::optional<platform::FileHandle> _logFileHandle;
    // The first one of the run.
    std::optional<std::error_code> _error;
    std::shared_ptr<platform::HostOutput> _hostOutput;
    bool _startsAnew = true;
};
