#pragma once

#include "Tests/Support/Usual.h"

namespace tests {

/// A new folder of the host that is gone, with all in it, at the end of its life. It works with the host's
/// own calls and tools only, so that it can judge ours.
class TemporaryFolder {
  public:
    explicit TemporaryFolder(const std::string& below = "/tmp");
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::string& path() const { return _path; }
    [[nodiscard]] std::string path(std::string_view relative) const {
        return _path + "/" + std::string(relative);
    }

    /// Makes one item a line, with the folders on the way: "a/folder/", "a/file: content", "a/link ->
    /// target". Space before a line does not count.
    void make(const std::string& lines) const;
    [[nodiscard]] bool exists(std::string_view relative) const;
    [[nodiscard]] std::string content(std::string_view relative) const;

  private:
    std::string _path;
};

/// A folder in memory, for trees of many small files, where there is one with room for so many bytes that
/// lets programs run; else "/tmp".
std::string memoryFolder(uint64_t bytes = uint64_t{1} << 30U);

/// Makes `depth` folders named "d", each in the one before, however long their path gets.
void makeDeepFolders(int folder, size_t depth);

} // namespace tests
