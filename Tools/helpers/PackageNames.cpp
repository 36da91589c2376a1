#include "PackageNames.h"

#include <cstdio>
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

/// The second column of a table, with blanks in place of the architecture so that the columns stay.
std::string plainColumn(std::string line, size_t column) {
    const size_t end = line.find(' ', column);
    for (size_t index = line.find(':', column); index < end && index < line.size(); ++index) {
        line[index] = ' ';
    }
    return line;
}

} // namespace

std::string lineWithPlainNames(std::string_view line) {
    // "packages: /path" of a search.
    const size_t path = line.find(": /");
    if (path != std::string_view::npos) {
        return plainList(line.substr(0, path)) + std::string(line.substr(path));
    }
    // "ii  package  version …" of a list: two or three letters of state.
    const size_t column = line.find_first_not_of(' ', 3);
    if (line.size() > 3 && column != std::string_view::npos && column > line.find(' ')) {
        return plainColumn(std::string(line), column);
    }
    return std::string(line);
}

bool copyWithPlainNames(int from) {
    const std::unique_ptr<FILE, decltype(&std::fclose)> lines(::fdopen(from, "r"), &std::fclose);
    char* line = nullptr;
    size_t capacity = 0;
    ssize_t length = 0;
    while (lines && (length = ::getline(&line, &capacity, lines.get())) > 0) {
        const std::string plain = lineWithPlainNames({line, static_cast<size_t>(length)});
        std::fwrite(plain.data(), 1, plain.size(), stdout);
    }
    std::free(line);
    return std::fflush(stdout) == 0;
}
