#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/FileHandle.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace platform {

/// A text that goes to a file of the host or to a stream of the process. A file has what was written at once
/// or in large pieces, as a tree's file would; a stream, a pipe or a terminal gets the whole text at the end,
/// since text may still be put between. The first error is kept, and what comes after it is tried all the
/// same.
class HostOutput {
  public:
    /// Makes the file where there is none; one that is there keeps its content until `start`. "-" is standard
    /// output, and the names that the system has for streams ("/dev/stdout", "/dev/fd/N") mean them. What
    /// lies inside of `tree` (a folder's descriptor), a link and a file of several names are refused: nobody
    /// can lead the text to other people's files. The error is one line for the user.
    static std::expected<std::unique_ptr<HostOutput>, std::string> open(const std::string& path, int tree);

    HostOutput(const HostOutput&) = delete;
    HostOutput& operator=(const HostOutput&) = delete;

    /// Begins an empty text.
    void start(FileWriting writing);
    /// The second text follows the first.
    void write(std::string_view text, std::string_view more = {});
    /// Puts a text and a line break before a line (the first is 1), or at the end where that is where the
    /// line would begin. Nothing where the text is shorter.
    void insertAtLine(std::string_view text, unsigned long line);
    /// Ends the text: all of it is where it belongs, or there is an error.
    void finish();
    [[nodiscard]] const std::optional<std::error_code>& error() const { return _error; }

  private:
    /// Without a stream the file is the output itself.
    HostOutput(FileHandle file, Descriptor stream)
        : _file(std::move(file))
        , _stream(std::move(stream)) {}

    static std::expected<std::unique_ptr<HostOutput>, std::string> overStream(Descriptor stream,
                                                                              const std::string& path);
    static std::expected<std::unique_ptr<HostOutput>, std::string> overFile(const std::string& path,
                                                                            int tree);
    void note(const Result<void>& outcome);
    Result<off_t> startOfLine(unsigned long line) const;
    Result<void> moveEnd(off_t start, size_t distance);

    FileHandle _file;
    Descriptor _stream;
    std::optional<std::error_code> _error;
};

} // namespace platform
