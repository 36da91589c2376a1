#pragma once

#include "Model/Packages/OZPackage.h"
#include "Model/Tasks/SeparatedPieces.h"

#include <cstdint>
#include <deque>
#include <functional>
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

    /// Takes the next bytes of the tool's answer, record by record; what is no record of an installed
    /// package, or not UTF-8, is passed over. The bytes need not outlive the call.
    void read(std::string_view bytes);
    /// Links the packages, once the whole answer has been read. False if it was empty.
    [[nodiscard]] bool link();

    /// Null for an unknown package.
    [[nodiscard]] OZPackage* packageWithIdentifier(std::string_view identifier);
    [[nodiscard]] std::deque<OZPackage>& packages() { return _packages; }

  private:
    /// Looks strings up by their text alone.
    struct TextHash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    /// All that is told of one name.
    struct Named {
        /// Null for a name that only dependencies tell.
        OZPackage* package = nullptr;
        /// Names, as they were told; each may come more than once.
        std::vector<uint32_t> dependencies;
    };

    void readRecord(std::string_view text);
    uint32_t indexOfName(std::string_view name);
    void addNames(std::string_view list, std::vector<uint32_t>& names);

    platform::Device& _device;
    SeparatedPieces _records;
    bool _isEmpty = true;
    std::deque<OZPackage> _packages;
    std::deque<Named> _named;
    /// Indexes of what is named.
    std::unordered_map<std::string, uint32_t, TextHash, std::equal_to<>> _indexes;
};
