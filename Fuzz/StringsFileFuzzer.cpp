// Language files.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Platform/Formats/StringsFile.h"

void readInput(std::string_view bytes) {
    const auto table = platform::parseStringsFile(bytes);
    require(table || !table.error().reason.empty());
}
