#include "PackageNames.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

/// "name:architecture, name:architecture" without the architectures.
std::string plainList(std::string_view list) {
    std::string plain;
    bool inArchitecture = false;
    for (const char character : list) {
        inArchitecture = character == ':' || (inArchitecture && character != ',');
        if (!inArchitecture) {
            plain += character;
        }
    }
    return plain;
}

/// "packages: /path" with plain names; any other line stays.
std::string plainSearchLine(std::string_view line) {
    const size_t path = line.find(": /");
    return path == std::string_view::npos ? std::string(line)
                                          : plainList(line.substr(0, path)) + std::string(line.substr(path));
}

/// A row of the table, with blanks in place of the architecture so that the columns stay.
std::string plainListLine(std::string_view line) {
    // Three characters of state and a blank stand before the name.
    constexpr size_t nameColumn = 4;
    std::string plain(line);
    if (line.size() > nameColumn && line[nameColumn - 1] == ' ') {
        const size_t end = std::min(line.find(' ', nameColumn), line.size());
        for (size_t index = line.find(':', nameColumn); index < end; ++index) {
            plain[index] = ' ';
        }
    }
    return plain;
}

} // namespace

std::string lineWithPlainNames(std::string_view line, QueryOutput output) {
    return output == QueryOutput::list ? plainListLine(line) : plainSearchLine(line);
}

bool copyWithPlainNames(int from, QueryOutput output) {
    const std::unique_ptr<FILE, decltype(&std::fclose)> lines(::fdopen(from, "r"), &std::fclose);
    char* line = nullptr;
    size_t capacity = 0;
    ssize_t length = 0;
    while (lines && (length = ::getline(&line, &capacity, lines.get())) > 0) {
        const std::string plain = lineWithPlainNames({line, static_cast<size_t>(length)}, output);
        std::fwrite(plain.data(), 1, plain.size(), stdout);
    }
    std::free(line);
    return std::fflush(stdout) == 0;
}
