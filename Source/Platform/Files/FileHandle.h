#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/Error.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// When bytes reach the file: at once, or gathered to pieces of `FileHandle::gatheredBytes`.
enum class FileWriting : bool { direct, gathered };

/// An opened regular file. Gathered bytes are written when there are enough of them, before the handle seeks,
/// reads or synchronizes, by `flush`, and at the end of the handle's life, where nobody learns of an error.
/// They are lost when the process is killed.
class FileHandle {
  public:
    static constexpr size_t gatheredBytes = 65536;

    explicit FileHandle(Descriptor descriptor)
        : _descriptor(std::move(descriptor)) {}
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    [[nodiscard]] int descriptor() const { return _descriptor.get(); }
    /// Direct, unless told otherwise. What has been gathered is written first.
    void setWriting(FileWriting writing);
    /// Writes all bytes at the current position; the second text follows the first in the same write.
    Result<void> write(std::string_view bytes, std::string_view more = {});
    /// Writes what has been gathered.
    Result<void> flush();
    Result<void> seekToEnd();
    /// Reads from the current position to the end; more than `limit` bytes is an error (EFBIG).
    Result<std::string> readToEnd(uint64_t limit);
    /// Reads at most so many bytes from the current position, fewer only at the end.
    Result<std::string> readUpTo(size_t count);
    /// Waits until what was written is on the disk.
    Result<void> synchronize();

  private:
    Result<void> writeNow(std::string_view bytes, std::string_view more);

    Descriptor _descriptor;
    FileWriting _writing = FileWriting::direct;
    std::string _gathered;
};

} // namespace platform
