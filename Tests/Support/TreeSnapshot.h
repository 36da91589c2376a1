#pragma once

#include "Tests/Support/Usual.h"

namespace tests {

/// Throws the system's error for what was to be done.
void require(bool done, const std::string& what);

/// What can be told of an item of the host without its path, access time aside.
struct ItemState {
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;
    int64_t size = 0;
    timespec modified{};
    /// A hash of a file's bytes with the places of its holes left out, or a link's target.
    std::string content;

    [[nodiscard]] bool isFolder() const { return S_ISDIR(mode); }
    [[nodiscard]] bool isFile() const { return S_ISREG(mode); }
    [[nodiscard]] bool isLink() const { return S_ISLNK(mode); }
    /// A folder's size and time change with its entries and do not count.
    bool operator==(const ItemState& other) const;
};

/// All below a folder of the host, by path relative to it. The host's own calls make it, so that it can judge
/// ours.
using TreeSnapshot = std::map<std::string, ItemState>;

TreeSnapshot snapshotOf(const std::string& hostFolder);
/// The tree with every backup at its old name.
TreeSnapshot withoutBackupNames(const TreeSnapshot& tree);
/// One line: path, mode in octal, owner, size, time and content.
std::string describe(const std::string& path, const ItemState& state);

/// The items of a tree that a run's log names, by their path below the root without links on the way, in the
/// log's order. What is no item of the tree, such as a heading, is passed over.
std::vector<std::string> itemsNamedByLog(std::string_view log, const TreeSnapshot& tree);

} // namespace tests
