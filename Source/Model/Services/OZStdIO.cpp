#include "Model/Services/OZStdIO.h"

#include "Categories/Text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <limits>
#include <tuple>

#include <poll.h>
#include <unistd.h>

namespace {

// Whether a failed read says nothing about the next one.
bool mayReadAgain(int error) {
    if (std::feof(stdin) != 0 || (error != EINTR && error != EAGAIN)) {
        return false;
    }
    if (error == EAGAIN) {
        // Another program has set the terminal to return at once.
        pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        std::ignore = ::poll(&input, 1, -1);
    }
    std::clearerr(stdin);
    return true;
}

std::optional<size_t> lineCapacity;

std::optional<std::string> readLine() {
    std::string line;
    while (!lineCapacity || line.size() < *lineCapacity) {
        errno = 0;
        const int character = std::fgetc(stdin);
        if (character == EOF && mayReadAgain(errno)) {
            continue;
        }
        if (character != EOF) {
            line.push_back(static_cast<char>(character));
        }
        if (character == '\n' || (character == EOF && !line.empty())) {
            break;
        }
        if (character == EOF) {
            return std::nullopt;
        }
    }
    return line;
}

bool isASCII(std::string_view text) {
    return std::ranges::all_of(text,
                               [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

std::optional<int64_t> integerFrom(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<int64_t>;
        return text.starts_with('-') ? Limits::min() : Limits::max();
    }
    return number;
}

} // namespace

void OZStdIO::clear() {
    printf("\033[H\033[J");
}

void OZStdIO::flushStdOut() {
    std::fflush(stdout);
}

void OZStdIO::printf(std::string_view text) {
    fprintf(stdout, text);
    flushStdOut();
}

void OZStdIO::fprintf(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

void OZStdIO::setLineCapacity(std::optional<size_t> bytes) {
    lineCapacity = bytes;
}

std::optional<std::string> OZStdIO::getLine() {
    while (const auto line = readLine()) {
        if (isASCII(*line)) {
            return std::string(stringByTrimmingCharactersInSet(*line, whitespaceAndNewlineCharacterSet()));
        }
    }
    return std::nullopt;
}

std::optional<int64_t> OZStdIO::getInteger() {
    while (const auto line = getLine()) {
        if (const auto number = integerFrom(*line)) {
            return number;
        }
    }
    return std::nullopt;
}

void OZStdIO::pause() {
    printf("\n\nPress [Enter] to continue . . . ");
    std::ignore = getLine();
}
