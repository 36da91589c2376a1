#pragma once

#include "Model/Packages/OZPackage.h"
#include "Model/Tasks/SeparatedPieces.h"

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

    /// An empty graph, for packages of the device, which outlives it.
    explicit OZPackageGraph(platform::Device& device);
    OZPackageGraph(const OZPackageGraph&) = delete;
    OZPackageGraph& operator=(const OZPackageGraph&) = delete;

    /// Takes the next bytes of the tool's answer, record by record; what is no record of an installed package is
    /// passed over. The bytes need not outlive the call.
    void read(std::string_view bytes);
    /// Links the packages, once the whole answer has been read. False if it is none: empty, or not UTF-8.
    [[nodiscard]] bool link();

    /// Null for an unknown package.
    [[nodiscard]] OZPackage* packageWithIdentifier(std::string_view identifier);
    [[nodiscard]] std::deque<OZPackage>& packages() { return _packages; }

  private:
    /// What a package said of its dependencies, not yet taken apart.
    struct Dependencies {
        std::string preDepends;
        std::string depends;
    };

    void readRecord(std::string_view text);
    size_t indexOfPackage(std::string_view identifier);
    void link(OZPackage& package, std::string_view dependencies);

    platform::Device& _device;
    SeparatedPieces _records;
    bool _isEmpty = true;
    bool _isText = true;
    std::deque<OZPackage> _packages;
    /// Indexes by the packages' own identifiers.
    std::unordered_map<std::string_view, size_t> _indexes;
    /// By the same indexes, until they are linked.
    std::vector<Dependencies> _dependencies;
};
