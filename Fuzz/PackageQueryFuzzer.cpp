// The package database's answer: every link has its other side, and circles end.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Packages/OZPackageGraph.h"
#include "Tests/Support/TemporaryDevice.h"

#include <algorithm>

void readInput(std::string_view bytes) {
    static TemporaryDevice device;
    OZPackageGraph graph(device.device());
    // The tool's answer comes in parts, whose length the input decides itself.
    const size_t length = bytes.empty() ? 1 : 1 + static_cast<unsigned char>(bytes.front());
    for (size_t start = 0; start < bytes.size(); start += length) {
        graph.read(bytes.substr(start, length));
    }
    std::ignore = graph.link();
    for (OZPackage& package : graph.packages()) {
        require(graph.packageWithIdentifier(package.identifier()) == &package);
        for (const OZPackage* dependency : package.directDependencies()) {
            require(std::ranges::count(dependency->directDependants(), &package) == 1);
        }
        require(package.recursiveDependencies().size() <= graph.packages().size());
        require(package.recursiveDependants().size() <= graph.packages().size());
        std::ignore = package.description();
    }
}
