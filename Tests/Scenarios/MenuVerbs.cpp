// What scenarios can do with the built program at a terminal, and with its switches.

#include "Controller/CommandLine/OZCLIController.h"
#include "Tests/Scenarios/Verbs.h"

#include <array>
#include <latch>
#include <regex>

#include <poll.h>
#include <pty.h>

namespace scenarios::menu {

constexpr std::string_view clearing = "<clear>";

std::string withNamedEscapes(std::string text) {
    constexpr std::pair<std::string_view, std::string_view> escapes[] = {
        {"\033[H\033[J", clearing}, {"\033[0;31m", "<red>"},  {"\033[0;32m", "<green>"},
        {"\033[0;33m", "<yellow>"}, {"\033[0;0m", "<reset>"}, {"\r\n", "\n"},
    };
    for (const auto& [bytes, name] : escapes) {
        text = tests::replaced(text, bytes, name);
    }
    return text;
}

/// The first line of a screen without the clearing before it.
std::string headingOf(std::string_view line) {
    while (line.starts_with(clearing)) {
        line.remove_prefix(clearing.size());
    }
    return std::string(line.substr(0, line.find('\n')));
}

/// A command line at a pseudo-terminal of 80 by 24 characters, and the person in front of it.
class Terminal {
  public:
    explicit Terminal(const std::string& command) {
        const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        process = ::forkpty(&_master, nullptr, nullptr, &size);
        if (process == 0) {
            ::unsetenv("OZVARINE_DEVICE");
            ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            ::_exit(127);
        }
        ::tcgetattr(_master, &_settings);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(_master);
        if (process > 0) {
            ::kill(process, SIGKILL);
            ::waitpid(process, nullptr, 0);
        }
    }

    void type(std::string_view bytes) const {
        if (::write(_master, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("the terminal takes no more");
        }
    }
    /// All that is printed up to the next prompt, or to the program's end.
    std::string screen() {
        constexpr std::string_view prompts[] = {"Choice = ", "to continue . . . ", "):\033[0;0m "};
        std::string output;
        while (std::ranges::none_of(prompts, [&](auto prompt) { return output.ends_with(prompt); })) {
            pollfd master{.fd = _master, .events = POLLIN, .revents = 0};
            std::array<char, 4096> chunk{};
            if (::poll(&master, 1, 60000) != 1) {
                throw std::runtime_error("no prompt after: " + withNamedEscapes(output));
            }
            const ssize_t length = ::read(_master, chunk.data(), chunk.size());
            if (length <= 0) {
                return withNamedEscapes(output) + awaitEnd();
            }
            output.append(chunk.data(), static_cast<size_t>(length));
        }
        return withNamedEscapes(output) + remark() + "<cursor>";
    }
    /// The screen after a line, without the line's echo and without the one that told to wait. That may have
    /// been too short a while to be seen, but its text may be no other than the given one.
    std::string screenAfter(const std::string& line, const std::string& wait = {}) {
        type(line + "\n");
        std::string picture = screen();
        if (!picture.starts_with(line + "\n")) {
            return "no echo: " + picture;
        }
        picture.erase(0, line.size() + 1);
        static const std::regex waiting("<clear>([^<]*), please wait( \\.)*");
        for (std::smatch found; std::regex_search(picture, found, waiting);) {
            if (!wait.empty() && found[1] != wait) {
                return picture;
            }
            picture.erase(static_cast<size_t>(found.position()), static_cast<size_t>(found.length()));
        }
        return picture;
    }
    /// Closes the terminal, as a dropped connection does.
    std::string hangUp() {
        ::close(std::exchange(_master, -1));
        return awaitEnd();
    }

    pid_t process = -1;
    /// The screens so far, by their first lines.
    std::map<std::string, Lines> known;

  private:
    std::string awaitEnd() {
        int status = 0;
        for (int tries = 0; ::waitpid(process, &status, WNOHANG) == 0; ++tries) {
            if (tries == 6000) {
                throw std::runtime_error("the program does not end");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        process = -1;
        return fmt::format("<end, {} {}>{}", WIFSIGNALED(status) ? "signal" : "status",
                           WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status), remark());
    }
    [[nodiscard]] std::string remark() const {
        termios settings{};
        const bool isSame =
            ::tcgetattr(_master, &settings) != 0 || std::memcmp(&settings, &_settings, sizeof settings) == 0;
        return isSame ? "" : "<the terminal's settings are changed>";
    }

    int _master = -1;
    termios _settings{};
};

Terminal& terminalOf(World& world) {
    return *static_cast<Terminal*>(world.companion.get());
}

/// Says a screen behind what was entered for it, blank lines as "\n" before the next. Of one that was there
/// before, its first line and what has changed are enough.
void show(World& world, const std::string& picture, const std::string& entered) {
    Lines lines = {""};
    for (const auto& line : linesOf(picture)) {
        lines.back() += line.empty() ? "\\n" : escaped(line);
        lines.resize(lines.size() + (line.empty() ? 0 : 1));
    }
    lines.pop_back();
    std::string first = entered + lines[0];
    Lines& known = terminalOf(world).known[headingOf(picture)];
    lines.erase(lines.begin());
    if (known.empty()) {
        world.say(first);
        std::ranges::for_each(lines, [&](const auto& line) { world.say(line); });
    } else {
        for (const auto& line : linesOf(difference(known, lines))) {
            // What gives way to something else needs no word.
            const bool isLess = line.starts_with("- ") && lines.size() < known.size();
            first += line.starts_with("+ ") ? " | " + line.substr(2)
                     : isLess               ? " | less: " + line.substr(2)
                                            : "";
        }
        world.say(first);
    }
    known = lines;
}

void start(World& world, const std::string& command) {
    world.device();
    world.reopen();
    world.companion = std::make_shared<Terminal>(fmt::format(
        "cd '{}' && PATH={}:$PATH && {}", world.folder.folder().string(), OZ_BINARY_DIRECTORY, command));
    world.variables["PID"] = std::to_string(terminalOf(world).process);
    show(world, terminalOf(world).screen(), "");
}

/// "terminal command line": what it shows up to the first prompt. $PID is its process from then on.
VERB("terminal") {
    start(world, joined(words));
}

/// "enter line line…": the screen after each.
VERB("enter") {
    for (const auto& line : words) {
        show(world, terminalOf(world).screenAfter(line), line + "> ");
    }
}

/// "go line line…": the same without a word.
VERB("go") {
    saidBy(world, "enter", words);
}

/// "menu line line…": the program's menu, on the screen that the lines lead to, without a word.
VERB("menu") {
    start(world, "exec ozvarine --device . -cli");
    saidBy(world, "enter", words);
}

/// "try line line…": what each leads to, by the first lines of the screens, and back by [Enter].
VERB("try") {
    std::map<std::string, Words> answers;
    for (const auto& line : words) {
        answers[headingOf(terminalOf(world).screenAfter(line))].push_back(line);
        terminalOf(world).screenAfter("");
    }
    for (const auto& [heading, lines] : answers) {
        world.say(heading + " " + joined(lines));
    }
}

/// "work line message": the screen after a line, with a message that may be seen meanwhile.
VERB("work") {
    show(world, terminalOf(world).screenAfter(words.at(0), words.at(1)), words[0] + "> ");
}

/// "press bytes": what is shown then, echo included.
VERB("press") {
    terminalOf(world).type(words.at(0));
    const std::string picture = terminalOf(world).screen();
    const size_t echo = std::min(picture.find(clearing), picture.size());
    echo == picture.size() ? world.say(escaped(picture))
                           : show(world, picture.substr(echo), escaped(picture.substr(0, echo)));
}

/// "end [bytes]": how the program ends by these, whatever it shows before that.
VERB("end") {
    terminalOf(world).type(words.empty() ? "" : words[0]);
    std::string picture;
    while (!picture.contains("<end")) {
        picture = terminalOf(world).screen();
    }
    world.say(picture.substr(picture.find("<end")));
}

VERB("hangup") {
    world.say(terminalOf(world).hangUp());
}

/// What the menu shows while something takes six ticks of the clock, and how long they are.
VERB("wait") {
    std::latch sleeps(6);
    std::set<double> seconds;
    world.device().setSleep([&](double length) {
        seconds.insert(length);
        sleeps.try_wait() ? std::this_thread::sleep_for(std::chrono::milliseconds(1)) : sleeps.count_down();
    });
    const std::string file = world.folder.folder() / "output";
    {
        const tests::StandardOutput output(file);
        OZCLIController(world.builder()).executeBlockInBackground([&] { sleeps.wait(); }, words.at(0));
    }
    world.say(joined(seconds) + " " + withNamedEscapes(tests::contentOf(file)));
}

/// "ozvarine arguments": its status and the lines that it prints; an error stands behind the line before it.
VERB("ozvarine") {
    world.shell("ozvarine " + joined(words));
    Lines lines = world.takeOutput();
    const bool failed = !lines.empty() && lines.back().starts_with("= ");
    const std::string status = failed ? lines.back().substr(2) : "0";
    lines.resize(lines.size() - (failed ? 1 : 0));
    Lines said = {status};
    for (const auto& line : lines) {
        line.starts_with('&') ? void(said.back() += " " + line)
                              : said.push_back(line.substr(std::min<size_t>(2, line.size())));
    }
    std::ranges::for_each(said, [&](const auto& line) { world.say(line); });
}

} // namespace scenarios::menu
