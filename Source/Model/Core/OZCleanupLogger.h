#pragma once

#include "Platform/FileManager.h"

#include <optional>
#include <string_view>

namespace platform {
class Device;
}

/// Writes the log of a run: a text file that names each item touched. All of it is silent: what cannot be
/// written is left out.
class OZCleanupLogger {
  public:
    explicit OZCleanupLogger(platform::Device& device);

    static constexpr std::string_view logFilePath = "/var/mobile/Library/Ozvarine/junk.txt";

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

  private:
    void write(std::string_view text, std::string_view more);
    void openOrCreateLogFile();
    void makeLogFolder();
    void createLogFile();
    void insertAtLine(std::string_view text, unsigned long line);

    platform::Device& _device;
    platform::FileManager _fileManager;
    std::optional<platform::FileHandle> _logFileHandle;
};
