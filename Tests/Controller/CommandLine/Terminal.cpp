#include "Tests/Controller/CommandLine/Terminal.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

constexpr int patienceSeconds = 60;

// What every prompt ends in.
constexpr std::string_view prompts[] = {"Choice = ", "to continue . . . ", "):\033[0;0m "};

constexpr std::pair<std::string_view, std::string_view> escapes[] = {
    {"\033[H\033[J", "<clear>"}, {"\033[0;31m", "<red>"},  {"\033[0;32m", "<green>"},
    {"\033[0;33m", "<yellow>"},  {"\033[0;0m", "<reset>"}, {"\r\n", "\n"},
};

std::string named(std::string text) {
    for (const auto& [bytes, name] : escapes) {
        for (size_t at = 0; (at = text.find(bytes, at)) != std::string::npos; at += name.size()) {
            text.replace(at, bytes.size(), name);
        }
    }
    return text;
}

} // namespace

int execute(const std::string& program, const std::vector<std::string>& arguments) {
    ::unsetenv("OZVARINE_DEVICE");
    std::vector<char*> vector = {const_cast<char*>(program.c_str())};
    for (const auto& argument : arguments) {
        vector.push_back(const_cast<char*>(argument.c_str()));
    }
    vector.push_back(nullptr);
    ::execv((std::string(OZ_BINARY_DIRECTORY) + "/" + program).c_str(), vector.data());
    return 127;
}

Terminal::Terminal(const std::string& program, const std::vector<std::string>& arguments)
    : Terminal([&] { return execute(program, arguments); }) {}

Terminal::Terminal(const std::function<int()>& program) {
    const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    _process = ::forkpty(&_master, nullptr, nullptr, &size);
    if (_process == 0) {
        const int status = program();
        std::fflush(nullptr);
        ::_exit(status);
    }
    if (_process < 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
}

Terminal::~Terminal() {
    hangUp();
    if (!end()) {
        ::kill(_process, SIGKILL);
        ::waitpid(_process, nullptr, 0);
    }
}

void Terminal::enter(std::string_view line) {
    type(std::string(line) + "\n");
}

void Terminal::type(std::string_view bytes) {
    if (::write(_master, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the terminal takes no more");
    }
}

bool Terminal::readMore(int milliseconds) {
    pollfd master{.fd = _master, .events = POLLIN, .revents = 0};
    std::array<char, 4096> chunk{};
    if (::poll(&master, 1, milliseconds) != 1) {
        return false;
    }
    const ssize_t length = ::read(_master, chunk.data(), chunk.size());
    if (length > 0) {
        _output.append(chunk.data(), static_cast<size_t>(length));
    }
    return length > 0;
}

std::string Terminal::screen() {
    const auto hasPrompt = [&] {
        return std::ranges::any_of(prompts, [&](auto prompt) { return _output.ends_with(prompt); });
    };
    while (!hasPrompt()) {
        if (!readMore(patienceSeconds * 1000)) {
            throw std::runtime_error("no prompt after: " + named(_output));
        }
    }
    std::string picture = named(std::exchange(_output, "")) + "<cursor>";
    if (std::smatch found; std::regex_search(picture, found, std::regex("files: <yellow>([0-9]+)<"))) {
        _count = std::stoull(found[1]);
    }
    static const std::regex counts("files: <yellow>[0-9]+<");
    static const std::regex sizes("size: <yellow>[0-9.,]+ [KMG]?i?B<");
    picture = std::regex_replace(picture, counts, "files: <yellow>COUNT<");
    picture = std::regex_replace(picture, sizes, "size: <yellow>SIZE<");
    _waitMessage.clear();
    static const std::regex waiting("<clear>([^<]*, please wait)( \\.)*");
    for (std::smatch found; std::regex_search(picture, found, waiting);) {
        _waitMessage = found[1];
        picture.erase(static_cast<size_t>(found.position()), static_cast<size_t>(found.length()));
    }
    return picture;
}

void Terminal::hangUp() {
    if (_master >= 0) {
        ::close(std::exchange(_master, -1));
    }
}

termios Terminal::settings() const {
    termios settings{};
    ::tcgetattr(_master, &settings);
    return settings;
}

std::optional<int> Terminal::end() {
    if (_process < 0) {
        return 0;
    }
    using Clock = std::chrono::steady_clock;
    for (const auto limit = Clock::now() + std::chrono::seconds(patienceSeconds); Clock::now() < limit;) {
        int status = 0;
        if (::waitpid(_process, &status, WNOHANG) == _process) {
            _process = -1;
            return status;
        }
        // A program whose words nobody takes would wait for ever.
        if (!readMore(10)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    return std::nullopt;
}

double Terminal::processorTime() const {
    std::ifstream file("/proc/" + std::to_string(_process) + "/stat");
    std::string text;
    std::getline(file, text);
    // Behind the name in brackets: 11 fields, then user time and system time.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    for (int index = 0; index < 11; ++index) {
        fields >> field;
    }
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace tests
