#pragma once

#include "Tests/Scenarios/Runner/Text.h"
#include "Tests/Support/TreeSnapshot.h"

namespace scenarios {

/// Whether a path lies below a folder, at any depth.
[[nodiscard]] bool isBelow(std::string_view path, std::string_view folder);

/// An item and all below it, by the rest of their paths.
[[nodiscard]] tests::TreeSnapshot branchOf(const tests::TreeSnapshot& tree, const std::string& path);

/// What became of a tree, as lines with their marks: "- gone", "+ new", "~ changed" and what of it, "@ from
/// -> to" for what is not a folder and moved. A folder that went stands for all that was in it.
[[nodiscard]] Lines effectsOn(const tests::TreeSnapshot& before, const tests::TreeSnapshot& after);

} // namespace scenarios
