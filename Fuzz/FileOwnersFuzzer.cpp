// The package database's answer to whose a file is.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Packages/FileOwners.h"

void readInput(std::string_view bytes) {
    for (const FileOwners& owners : parseFileOwners(bytes)) {
        require(!owners.path.empty() && !owners.identifiers.empty());
        require(bytes.contains(owners.path));
    }
}
