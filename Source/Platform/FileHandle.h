#pragma once

#include "Platform/Descriptor.h"
#include "Platform/Error.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// An opened regular file.
class FileHandle {
  public:
    explicit FileHandle(Descriptor descriptor)
        : _descriptor(std::move(descriptor)) {}

    [[nodiscard]] int descriptor() const { return _descriptor.get(); }
    /// Writes all bytes at the current position.
    Result<void> write(std::string_view bytes);
    Result<void> seekToEnd();
    /// Reads from the current position to the end; more than `limit` bytes is an error (EFBIG).
    Result<std::string> readToEnd(uint64_t limit);
    /// Waits until what was written is on the disk.
    Result<void> synchronize();

  private:
    Descriptor _descriptor;
};

} // namespace platform
