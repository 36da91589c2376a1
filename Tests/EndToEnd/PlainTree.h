#pragma once

#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fstream>
#include <string>
#include <vector>

namespace tests {

/// A plain tree, the folder's "tree", that says no more than its version, with one file that a cleanup takes.
inline void makeTree(const TemporaryFolder& folder, const std::string& version = "11.1") {
    folder.make("tree/System/Library/CoreServices/\ntree/var/mobile/\ntree/var/tmp/zz: junk");
    std::ofstream(folder.path("tree/System/Library/CoreServices/SystemVersion.plist"))
        << "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>ProductVersion</key><string>" << version
        << "</string></dict></plist>";
}

/// Runs the program on it.
inline Outcome onTree(const TemporaryFolder& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--device", folder.path("tree")});
    return runProgram("ozvarine", arguments);
}

} // namespace tests
