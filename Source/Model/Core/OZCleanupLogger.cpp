#include "Model/Core/OZCleanupLogger.h"

#include "Model/Tasks/OZTask.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/HostOutput.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace {

// The tool ends inserted text at a line break without a backslash before it, and reads a backslash as such a
// mark.
std::string escapedForSed(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\\' || character == '\n') {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

// Where a line begins; the end of a text that ends right before it, none in a shorter text.
std::optional<size_t> startOfLine(std::string_view text, unsigned long line) {
    size_t start = 0;
    for (unsigned long number = 1; number < line; ++number) {
        start = text.find('\n', start);
        if (start == std::string_view::npos) {
            return std::nullopt;
        }
        ++start;
    }
    return start;
}

} // namespace

OZCleanupLogger::OZCleanupLogger(platform::Device& device)
    : _device(device)
    , _fileManager(device.fileManager()) {}

void OZCleanupLogger::openLogFileForWriting(platform::FileWriting writing) {
    if (_hostOutput && std::exchange(_startsAnew, false)) {
        _hostOutput->start(writing);
    }
    if (_logFileHandle) {
        return;
    }
    openOrCreateLogFile();
    if (_logFileHandle) {
        _logFileHandle->setWriting(writing);
    }
}

void OZCleanupLogger::openOrCreateLogFile() {
    if (_fileManager.isWritableFileAtPath(logFilePath)) {
        if (auto file = _fileManager.openForWriting(logFilePath)) {
            std::ignore = file->seekToEnd();
            _logFileHandle = std::move(*file);
            return;
        }
    }
    makeLogFolder();
    createLogFile();
}

void OZCleanupLogger::makeLogFolder() {
    const std::string_view folder = platform::deletingLastPathComponent(logFilePath);
    bool isDirectory = false;
    if (_fileManager.fileExistsAtPath(folder, &isDirectory) && isDirectory) {
        return;
    }
    // That nobody can tell what stands there is no reason to remove it.
    const auto standing = _fileManager.attributesOfItemAtPath(folder);
    if (standing && standing->type != platform::FileType::directory) {
        std::ignore = _fileManager.removeItemAtPath(folder);
    }
    note(_fileManager.createDirectoryAtPath(folder, platform::IntermediateFolders::create));
}

void OZCleanupLogger::createLogFile() {
    if (auto file = _fileManager.createFileAtPath(logFilePath)) {
        _logFileHandle = std::move(*file);
    } else {
        note(std::unexpected(file.error()));
    }
}

void OZCleanupLogger::closeLogFile() {
    if (_logFileHandle) {
        note(_logFileHandle->flush());
        _logFileHandle.reset();
    }
}

void OZCleanupLogger::deleteLogFile() {
    closeLogFile();
    _error.reset();
    _startsAnew = true;
    const auto removed = _fileManager.removeItemAtPath(logFilePath);
    if (!removed && !platform::meansAbsence(removed.error())) {
        note(removed);
    }
}

void OZCleanupLogger::note(const platform::Result<void>& outcome) {
    if (!outcome && !_error) {
        _error = outcome.error();
    }
}

void OZCleanupLogger::write(std::string_view text, std::string_view more) {
    const bool wasOpen = _logFileHandle.has_value();
    openLogFileForWriting();
    if (_logFileHandle) {
        note(_logFileHandle->write(text, more));
    }
    if (_hostOutput) {
        _hostOutput->write(text, more);
    }
    if (!wasOpen) {
        closeLogFile();
    }
}

void OZCleanupLogger::logWithSpacer(std::string_view text) {
    write(text, "\n\n");
}

void OZCleanupLogger::logAtLine(std::string_view text, unsigned long line) {
    if (_hostOutput) {
        _hostOutput->insertAtLine(text, line);
    }
    const auto sed = OZTask::launchPathForExecutable(_device, "sed");
    // The tool would go past the file manager: where that may only look, the log is another run's.
    if (!sed || !_fileManager.mayChange()) {
        return;
    }
    closeLogFile();
    const auto tool = _device.tools().toolAt(*sed);
    if (tool && !tool->isStandIn()) {
        insertAtLine(text, line);
        return;
    }
    const std::string escaped = escapedForSed(text);
    std::string script = fmt::format("{}i\\\n{}", line, escaped);
    if (line > 1) {
        // A file that ends right before the line has no line to insert before.
        script += fmt::format("\n{}{{\n$a\\\n{}\n}}", line - 1, escaped);
    }
    OZTask::launchSyncTask(_device, *sed, {"-i", script, std::string(logFilePath)}, true);
}

// The host's tool would find the log by its path, and its folder belongs to an ordinary user, who could lead
// the tool to other people's files of that name.
void OZCleanupLogger::insertAtLine(std::string_view text, unsigned long line) {
    auto content = _fileManager.contentsAtPath(logFilePath, std::numeric_limits<uint64_t>::max());
    if (!content) {
        note(std::unexpected(content.error()));
        return;
    }
    if (const auto start = startOfLine(*content, line)) {
        content->insert(*start, std::string(text).append("\n"));
        note(_fileManager.writeContents(logFilePath, *content));
    }
}

void OZCleanupLogger::endLog() {
    if (_hostOutput) {
        _hostOutput->finish();
    }
    if (_error && _fileManager.mayChange()) {
        _device.warnings().tell(
            fmt::format("The log {} could not be written in full: {}.{}", logFilePath, _error->message(),
                        _hostOutput && !hostOutputFailed() ? " The one on this host is whole." : ""));
    }
    if (hostOutputFailed()) {
        _device.warnings().tell(fmt::format("The log on this host could not be written in full: {}.",
                                            _hostOutput->error()->message()));
    }
}

bool OZCleanupLogger::hostOutputFailed() const {
    return _hostOutput && _hostOutput->error();
}
