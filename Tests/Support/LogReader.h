#pragma once

#include "Tests/Support/TreeSnapshot.h"

namespace tests {

/// The items of a tree that a run's log names, by their path below the root without links on the way, in the
/// log's order. What is no item of the tree, such as a heading, is passed over.
std::vector<std::string> itemsNamedByLog(std::string_view log, const TreeSnapshot& tree);

} // namespace tests
