#pragma once

#include "Platform/Files/Descriptor.h"

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace ozdevice {

/// What a new file gets beside its content.
struct FileTraits {
    mode_t mode = 0644;
    /// Seconds before the moment at which the writer was made.
    int64_t age = 0;
};

/// Makes folders, files and links below one directory and nowhere else: no link is followed on the way. Paths
/// are device paths; the device's own links of "/var", "/tmp" and "/etc" into "/private" are taken into
/// account. Folders on the way to an entry are made on demand. Everything below "/var/mobile" is given to the
/// mobile user where the system permits that. Failures throw `std::system_error` with the path in the text.
class TreeWriter {
  public:
    /// The directory must exist.
    explicit TreeWriter(const std::string& directory);

    void folder(std::string_view path, int64_t age = 0);
    /// Makes the file or replaces its content.
    void file(std::string_view path, std::string_view content, FileTraits traits = {});
    void link(std::string_view path, const std::string& target);
    /// Makes `count` files in one folder, named by `prefix`, a running number from `first` and `suffix`; ages
    /// and sizes vary with the number.
    struct Series {
        std::string_view prefix;
        std::string_view suffix;
        size_t first = 0;
        size_t count = 0;
    };
    void series(std::string_view folder, const Series& series, std::string_view content);

    /// The path below the host's directory of a device path, for tools that need one.
    [[nodiscard]] std::string hostPath(std::string_view path) const;
    /// Owner, permissions and date for a file that another tool wrote.
    void adopt(std::string_view path, FileTraits traits);
    /// Dates the folders, whose dates changed while entries were added. Call it last.
    void dateFolders();

    /// The path without the device's links into "/private".
    static std::string physicalPath(std::string_view path);

  private:
    const platform::Descriptor& openFolder(const std::string& physicalPath);
    /// Opens a folder in another and makes it if it is missing.
    platform::Descriptor enter(int parent, const std::string& name, const std::string& path);
    void writeFile(int parent, const char* name, std::string_view content, FileTraits traits);
    void finish(int file, mode_t mode, int64_t age);
    [[nodiscard]] timespec moment(int64_t age) const { return {_now - age, 0}; }

    std::string _directory;
    platform::Descriptor _root;
    time_t _now;
    std::string _currentPath;
    platform::Descriptor _current;
    bool _currentIsMobile = false;
    bool _mayGiveAway;
    std::map<std::string, int64_t> _folderAges;
};

} // namespace ozdevice
