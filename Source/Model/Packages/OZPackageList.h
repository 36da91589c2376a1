#pragma once

#include "Model/Packages/OZPackage.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class OZPackageGraph;

/// The device's installed packages, as its own package tools tell them. They are asked once, when the first
/// package is wanted; a question that failed is asked again with the next operation.
///
/// A pointer to a package keeps all packages of its graph: those of before a refresh stay valid and are not
/// brought up to date any more.
class OZPackageList {
  public:
    using Packages = std::vector<std::shared_ptr<OZPackage>>;
    using PackagesByPath = std::map<std::string, Packages, std::less<>>;
    using PackagesByIdentifier = std::map<std::string, std::shared_ptr<OZPackage>, std::less<>>;

    /// The device outlives the list.
    explicit OZPackageList(platform::Device& device);
    OZPackageList(const OZPackageList&) = delete;
    OZPackageList& operator=(const OZPackageList&) = delete;
    ~OZPackageList();

    /// Empty if the packages cannot be told.
    [[nodiscard]] PackagesByIdentifier allPackages();
    /// Null for an unknown package.
    [[nodiscard]] std::shared_ptr<OZPackage> packageWithIdentifier(std::string_view identifier);
    /// In the given order, without those that are unknown.
    [[nodiscard]] Packages packagesWithIdentifiers(const std::vector<std::string>& identifiers);

    /// The packages that own a file. None if no package does, or if nobody can tell.
    [[nodiscard]] std::optional<Packages> packagesForFileAtPath(std::string_view path);
    /// The same for many files, with one call of the tool. A file that no package owns has no entry. None
    /// without paths or without the tool.
    [[nodiscard]] std::optional<PackagesByPath>
    packagesForFilesAtPaths(const std::vector<std::string>& paths);

    /// Asks the package database and replaces the graph. It stays as it is if the tool is missing or fails.
    void refreshPackages();

  private:
    /// Asks for the graph where there is none. Once an operation: where no answer can be had, none will be
    /// had.
    void ensureGraph();
    /// A package of the graph; null for an unknown one, and without a graph.
    [[nodiscard]] std::shared_ptr<OZPackage> knownPackage(std::string_view identifier) const;
    template <class Identifiers>
    [[nodiscard]] Packages knownPackages(const Identifiers& identifiers) const;

    platform::Device& _device;
    std::shared_ptr<OZPackageGraph> _graph;
};
