#include "Model/Packages/OZPackage.h"

#include "Platform/Device/Device.h"

#include <algorithm>
#include <unordered_set>

#include <fmt/format.h>

namespace {

constexpr std::string_view listFolder = "/var/lib/dpkg/info";
constexpr std::string_view listExtension = "list";

using Links = std::vector<OZPackage*>;

void addOnce(Links& links, OZPackage& package) {
    if (std::ranges::find(links, &package) == links.end()) {
        links.push_back(&package);
    }
}

/// All packages that can be reached from the start's links. Chains of packages may be as long as the database
/// is large, so the stack is not the machine's.
Links reachableFrom(const Links& start, const Links& (OZPackage::*linksOf)() const) {
    Links reached;
    std::unordered_set<const OZPackage*> visited;
    const auto visitAll = [&](const Links& links) {
        std::ranges::copy_if(links, std::back_inserter(reached),
                             [&](const OZPackage* package) { return visited.insert(package).second; });
    };
    visitAll(start);
    // By index, since the list grows on the way.
    for (size_t next = 0; next < reached.size(); ++next) {
        visitAll((reached[next]->*linksOf)());
    }
    return reached;
}

} // namespace

OZPackage::OZPackage(platform::Device& device, std::string identifier)
    : _device(device)
    , _identifier(std::move(identifier)) {
    if (_identifier.empty()) {
        throw platform::AssertionFailure("identifier.length != 0");
    }
}

std::string OZPackage::description() const {
    std::string text = fmt::format("Identifier: {}", _identifier);
    if (_name) {
        text += fmt::format("\nName: {}", *_name);
    }
    if (_iconURL) {
        text += fmt::format("\nIcon: {}", *_iconURL);
    }
    return text;
}

void OZPackage::addDependency(OZPackage& package) {
    addOnce(_dependencies, package);
}

void OZPackage::addDependant(OZPackage& package) {
    addOnce(_dependants, package);
}

void OZPackage::linkToDependency(OZPackage& package) {
    // A link that was made before was the last one that the other package got.
    if (package._dependants.empty() || package._dependants.back() != this) {
        package._dependants.push_back(this);
        _dependencies.push_back(&package);
    }
}

std::vector<OZPackage*> OZPackage::recursiveDependencies() const {
    return reachableFrom(_dependencies, &OZPackage::directDependencies);
}

std::vector<OZPackage*> OZPackage::recursiveDependants() const {
    return reachableFrom(_dependants, &OZPackage::directDependants);
}

std::string OZPackage::listFilePath() const {
    return fmt::format("{}/{}.{}", listFolder, _identifier, listExtension);
}

std::optional<std::vector<std::string>> OZPackage::pathsOfInstalledFiles() const {
    auto list = fileListWithUsedEncoding();
    return list ? std::optional(std::move(list->paths)) : std::nullopt;
}

bool OZPackage::addFilePath(std::string_view path) {
    auto list = fileListWithUsedEncoding();
    if (!list || list->paths.empty() || std::ranges::find(list->paths, path) != list->paths.end()) {
        return false;
    }
    list->paths.emplace_back(path);
    return writeFileList(*list);
}

bool OZPackage::removeFilePath(std::string_view path) {
    auto list = fileListWithUsedEncoding();
    if (!list) {
        return false;
    }
    const auto found = std::ranges::find(list->paths, path);
    if (found == list->paths.end()) {
        return false;
    }
    list->paths.erase(found);
    return writeFileList(*list);
}

platform::Result<OZPackageFileList> OZPackage::fileListWithUsedEncoding() const {
    const auto bytes = _device.fileManager().contentsAtPath(listFilePath());
    return bytes ? OZPackageFileList::parse(*bytes) : std::unexpected(bytes.error());
}

bool OZPackage::writeFileList(const OZPackageFileList& list) {
    const auto bytes = list.serialize();
    if (!bytes || bytes->empty()) {
        return false;
    }
    auto fileManager = _device.fileManager();
    const std::string path = listFilePath();
    const auto attributes = fileManager.attributesOfItemAtPath(path);
    const bool written = fileManager.writeContents(path, *bytes).has_value();
    if (attributes) {
        std::ignore = fileManager.setModificationDateOfItemAtPath(path, attributes->modified);
    }
    return written;
}
