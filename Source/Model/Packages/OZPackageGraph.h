#pragma once

#include "Model/Packages/OZPackage.h"

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The packages of one answer of the package database, linked by their dependencies. It owns them.
class OZPackageGraph {
  public:
    /// The tool's format for the question that the graph is made from.
    static std::string queryFormat();

    /// Reads the tool's answer, record by record; what is no record of an installed package is passed over.
    OZPackageGraph(platform::Device& device, std::string_view answer);
    OZPackageGraph(const OZPackageGraph&) = delete;
    OZPackageGraph& operator=(const OZPackageGraph&) = delete;

    /// Null for an unknown package.
    [[nodiscard]] OZPackage* packageWithIdentifier(std::string_view identifier);
    [[nodiscard]] std::deque<OZPackage>& packages() { return _packages; }

  private:
    /// What a package said of its dependencies, not yet taken apart: parts of the answer.
    struct Dependencies {
        std::string_view preDepends;
        std::string_view depends;
    };

    void readRecord(platform::Device& device, std::string_view text, std::vector<Dependencies>& remembered);
    size_t indexOfPackage(platform::Device& device, std::string_view identifier);
    void link(OZPackage& package, std::string_view dependencies);

    std::deque<OZPackage> _packages;
    /// Indexes by the packages' own identifiers.
    std::unordered_map<std::string_view, size_t> _indexes;
};
