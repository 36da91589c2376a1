#pragma once

#include "Model/Packages/OZPackageFileList.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class Device;
}

/// An installed package, its links to others and its list of installed files. Links go both ways and may form
/// circles; they are plain pointers, as valid as the graph that the package belongs to (OZPackageList).
///
/// Nothing is locked: a graph is filled by one thread and read by another when that has finished.
class OZPackage {
  public:
    /// Throws AssertionFailure for an empty identifier. The device outlives the package.
    OZPackage(platform::Device& device, std::string identifier);
    OZPackage(const OZPackage&) = delete;
    OZPackage& operator=(const OZPackage&) = delete;
    ~OZPackage() = default;

    /// The package's name in the database; never empty.
    [[nodiscard]] const std::string& identifier() const { return _identifier; }
    /// The name for people; a package need not have one.
    [[nodiscard]] const std::optional<std::string>& name() const { return _name; }
    void setName(std::optional<std::string> name) { _name = std::move(name); }
    /// A URL's text; may be absent.
    [[nodiscard]] const std::optional<std::string>& iconURL() const { return _iconURL; }
    void setIconURL(std::optional<std::string> url) { _iconURL = std::move(url); }
    /// For people who look for faults: identifier, name and icon, a line each.
    [[nodiscard]] std::string description() const;

    /// A package that is there already is not added again. The other side's link is the caller's to make.
    void addDependency(OZPackage& package);
    void removeAllDependencies() { _dependencies.clear(); }
    void addDependant(OZPackage& package);
    void removeAllDependants() { _dependants.clear(); }
    /// Makes the link on both sides. A link that is there already is recognised, in constant time, where all
    /// links to the same package are made by this operation and each package makes all of its own in a row.
    void linkToDependency(OZPackage& package);

    // In no particular order, each package once.
    [[nodiscard]] const std::vector<OZPackage*>& directDependencies() const { return _dependencies; }
    [[nodiscard]] const std::vector<OZPackage*>& directDependants() const { return _dependants; }
    /// All that can be reached; the package itself is among them only if a circle leads back to it.
    [[nodiscard]] std::vector<OZPackage*> recursiveDependencies() const;
    [[nodiscard]] std::vector<OZPackage*> recursiveDependants() const;

    /// Device path of the file that lists the package's files.
    [[nodiscard]] std::string listFilePath() const;
    /// Device paths as the list holds them; none if the list cannot be read.
    [[nodiscard]] std::optional<std::vector<std::string>> pathsOfInstalledFiles() const;
    /// Appends a path to the list. False if the list cannot be read, is empty or has the path already, and if
    /// it cannot be written. The list keeps its encoding and its modification date.
    bool addFilePath(std::string_view path);
    /// Takes the first occurrence of a path out of the list. False if there is none, if it is the list's only
    /// path, and if the list cannot be read or written.
    bool removeFilePath(std::string_view path);

    [[nodiscard]] platform::Result<OZPackageFileList> fileListWithUsedEncoding() const;
    /// Writes the list's paths in its encoding. False if it has none: a list file is never emptied.
    bool writeFileList(const OZPackageFileList& list);

  private:
    platform::Device& _device;
    std::vector<OZPackage*> _dependants;
    std::vector<OZPackage*> _dependencies;
    std::optional<std::string> _iconURL;
    std::string _identifier;
    std::optional<std::string> _name;
};
