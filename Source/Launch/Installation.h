#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What has to lie beside the executable for it to work: without a helper whole steps would be left out, and
/// without its resources there would be no text. One line that says which file was looked for, and where;
/// none if everything is there.
std::optional<std::string> missingPartOfInstallation();

/// The path of a file of the installation by its path below the folder above the executable's.
std::string installedFile(std::string_view path);
