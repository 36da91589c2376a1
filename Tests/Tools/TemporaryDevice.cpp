#include "TemporaryDevice.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <sys/wait.h>

namespace ozdevice::tests {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string name = fs::temp_directory_path() / "ozdevice.XXXXXX";
    if (!::mkdtemp(name.data())) {
        throw std::runtime_error("cannot make a temporary folder");
    }
    _path = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(_path, ignored);
}

TemporaryDevice::TemporaryDevice(const DeviceOptions& options) {
    if (const auto made = createDevice(path(), options); !made) {
        throw std::runtime_error(made.error());
    }
}

CommandResult shell(const std::string& commandLine) {
    CommandResult result;
    FILE* const stream = ::popen((commandLine + " 2>&1").c_str(), "r");
    char buffer[4096];
    for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, stream)) > 0;) {
        result.output.append(buffer, count);
    }
    const int status = ::pclose(stream);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::map<std::string, std::string> contentsBelow(const fs::path& folder) {
    std::map<std::string, std::string> contents;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder);
        if (entry.is_symlink()) {
            contents[name] = "-> " + fs::read_symlink(entry.path()).string();
        } else {
            contents[name] = entry.is_directory() ? "folder" : readFile(entry.path());
        }
    }
    return contents;
}

} // namespace ozdevice::tests
