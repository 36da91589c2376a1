#include "Categories/Files.h"

#include <array>
#include <charconv>

using platform::FileManager;
using platform::FileType;
using platform::Result;

namespace {

struct Account {
    std::string_view name;
    unsigned number;
};

// Every device has these; its own tables may be missing from a dump.
constexpr std::array accounts = {Account{"root", 0}, Account{"mobile", 501}};
constexpr std::array groups = {Account{"wheel", 0}, Account{"mobile", 501}, Account{"admin", 80}};

constexpr uint64_t tableSizeLimit = uint64_t{1} << 20U;

// The third field of the line that begins with the name and a colon, as both of the device's tables have it.
std::optional<unsigned> numberInTable(std::string_view table, std::string_view name) {
    while (!table.empty()) {
        std::string_view line = table.substr(0, table.find('\n'));
        table.remove_prefix(std::min(line.size() + 1, table.size()));
        if (!line.starts_with(name) || line.substr(name.size(), 1) != ":") {
            continue;
        }
        line.remove_prefix(name.size() + 1);
        const size_t colon = line.find(':');
        line.remove_prefix(colon == std::string_view::npos ? line.size() : colon + 1);
        unsigned number = 0;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        if (error == std::errc{}) {
            return number;
        }
    }
    return std::nullopt;
}

template <size_t Count>
Result<std::optional<unsigned>> numberOf(FileManager& fileManager, std::optional<std::string_view> name,
                                         std::string_view tablePath,
                                         const std::array<Account, Count>& known) {
    if (!name) {
        return std::nullopt;
    }
    const auto table = fileManager.contentsAtPath(tablePath, tableSizeLimit);
    if (const auto number = table ? numberInTable(*table, *name) : std::nullopt) {
        return number;
    }
    for (const Account& account : known) {
        if (account.name == *name) {
            return account.number;
        }
    }
    return platform::failure(EINVAL);
}

} // namespace

uint64_t sizeOfItemAtPath(FileManager& fileManager, std::string_view path) {
    const auto item = fileManager.itemAtPath(path);
    const auto attributes = item ? item->attributes() : std::unexpected(item.error());
    if (!attributes) {
        return 0;
    }
    if (attributes->type != FileType::directory) {
        return attributes->size;
    }
    uint64_t size = 0;
    const auto enumerator = item->enumerate();
    while (enumerator && enumerator->nextObject()) {
        const auto entry = enumerator->fileAttributes();
        size += entry ? entry->size : 0;
    }
    return size;
}

bool fileExistsAtPath(FileManager& fileManager, std::optional<std::string_view> path, bool* isDirectory,
                      TraverseLinks traverseLinks) {
    if (path && traverseLinks == TraverseLinks::yes) {
        return fileManager.fileExistsAtPath(*path, isDirectory);
    }
    const auto attributes = path ? fileManager.attributesOfItemAtPath(*path) : platform::failure(ENOENT);
    if (isDirectory != nullptr) {
        *isDirectory = attributes && attributes->type == FileType::directory;
    }
    return attributes.has_value();
}

Result<void> removeItemAtPath(FileManager& fileManager, std::string_view path, TraverseLinks traverseLinks) {
    if (traverseLinks == TraverseLinks::yes) {
        const auto attributes = fileManager.attributesOfItemAtPath(path);
        if (!attributes) {
            return std::unexpected(attributes.error());
        }
        if (attributes->type == FileType::symbolicLink) {
            auto removed = fileManager.removeItemAtPath(fileManager.stringByResolvingSymlinksInPath(path));
            if (!removed) {
                return removed;
            }
        }
    }
    return fileManager.removeItemAtPath(path);
}

Result<void> setOwnerOfItemAtPath(FileManager& fileManager, std::string_view path,
                                  std::optional<std::string_view> owner,
                                  std::optional<std::string_view> group) {
    const auto user = numberOf(fileManager, owner, "/etc/passwd", accounts);
    if (!user) {
        return std::unexpected(user.error());
    }
    const auto users = numberOf(fileManager, group, "/etc/group", groups);
    if (!users) {
        return std::unexpected(users.error());
    }
    return fileManager.setOwnerOfItemAtPath(path, *user, *users);
}
