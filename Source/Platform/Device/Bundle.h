#pragma once

#include "Platform/Files/Error.h"
#include "Platform/Formats/PropertyList.h"
#include "Platform/Formats/StringsFile.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The program's own resources. They belong to the running program and lie on the host, outside every
/// device's tree; nothing here writes. Safe to use from several threads.
class Bundle {
  public:
    /// The resources beside the running executable, in "../share/ozvarine" of its folder.
    Bundle();
    /// Those in a folder of the host.
    explicit Bundle(std::filesystem::path directory);

    [[nodiscard]] const std::filesystem::path& directory() const { return _directory; }
    /// The names of all resources, sorted; none where there is no such folder.
    [[nodiscard]] std::vector<std::string> resourceNames() const;
    /// The bytes of a resource. A name that leads to another folder is no resource's (ENOENT).
    [[nodiscard]] Result<std::string> contentsOfResource(std::string_view name) const;

    /// The text for a key in the table "<table>.strings". None where the key, or a table that can be read, is
    /// missing. A table is read once.
    [[nodiscard]] std::optional<std::string> localizedString(std::string_view key,
                                                             std::string_view table) const;

    /// A text of "Info.plist"; none where it has none.
    [[nodiscard]] std::optional<std::string> infoString(std::string_view key) const;
    /// "CFBundleIdentifier"; empty where there is none.
    [[nodiscard]] std::string bundleIdentifier() const;

  private:
    std::filesystem::path _directory;
    mutable std::mutex _mutex;
    mutable std::map<std::string, StringTable, std::less<>> _tables;
};

} // namespace platform
