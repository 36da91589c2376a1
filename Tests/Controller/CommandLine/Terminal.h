#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>
#include <termios.h>

namespace tests {

/// Becomes one of the built programs; returns only where that fails.
int execute(const std::string& program, const std::vector<std::string>& arguments);

/// A program at a pseudo-terminal of 80 by 24 characters, and the person in front of it.
class Terminal {
  public:
    /// Runs one of the built programs by its name.
    Terminal(const std::string& program, const std::vector<std::string>& arguments);
    /// Runs a function in a process of its own, which ends with the function's status.
    explicit Terminal(const std::function<int()>& program);
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    /// Hangs up and waits for the program's end.
    ~Terminal();

    /// Types a line.
    void enter(std::string_view line);
    /// Sends bytes as they are, such as a control character.
    void type(std::string_view bytes);
    /// Everything printed since the last call up to the next prompt, echo of the input included, as a
    /// picture: escapes by their name ("<clear>", "<yellow>"), and "<cursor>" at the end. Sizes and counts of
    /// results are "SIZE" and "COUNT", and of a waiting line only its text is left. Throws if no prompt
    /// comes.
    std::string screen();
    /// The number that the last picture shows as "COUNT".
    [[nodiscard]] uint64_t count() const { return _count; }
    /// The text of the waiting lines before the last picture; empty where the work was done before the first.
    [[nodiscard]] const std::string& waitMessage() const { return _waitMessage; }

    /// Closes the terminal, as a dropped connection does.
    void hangUp();
    [[nodiscard]] pid_t process() const { return _process; }
    [[nodiscard]] termios settings() const;
    /// How the program ended, as `waitpid` tells it; none if it does not end in time.
    std::optional<int> end();
    /// Processor time that the program has taken so far, in seconds.
    [[nodiscard]] double processorTime() const;

  private:
    bool readMore(int milliseconds);

    int _master = -1;
    pid_t _process = -1;
    std::string _output;
    uint64_t _count = 0;
    std::string _waitMessage;
};

} // namespace tests
