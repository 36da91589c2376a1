#pragma once

#include <string>
#include <vector>

/// What package tools must know of the scripts in a tree's package database. Scripts are the device's own
/// programs and are never run on a host; a removal that needs one would stop halfway and leave a broken
/// package, so it must not begin.
class PackageScripts {
  public:
    /// Reads an open database folder; a tree without one has no scripts.
    explicit PackageScripts(int database);

    /// The options that make apt-get leave the packages with removal scripts where they are.
    [[nodiscard]] std::vector<std::string> keepingOptions() const;
    /// The packages with removal scripts, separated by blanks.
    [[nodiscard]] std::string names() const;
    /// The first package with a removal script that a vector of dpkg would remove; empty if there is none.
    [[nodiscard]] std::string removedBy(const std::vector<std::string>& arguments) const;

  private:
    std::vector<std::string> _packages;
};
