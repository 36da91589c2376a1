#pragma once

#include <cerrno>
#include <expected>
#include <stdexcept>
#include <string>
#include <system_error>

namespace platform {

/// What a platform operation that may fail gives back.
template <class T>
using Result = std::expected<T, std::error_code>;

/// The error that the last failed system call left in `errno`.
inline std::unexpected<std::error_code> lastError() {
    return std::unexpected(std::error_code(errno, std::system_category()));
}

inline std::unexpected<std::error_code> failure(int number) {
    return std::unexpected(std::error_code(number, std::system_category()));
}

/// What a system call that gives -1 on failure has come to.
inline Result<void> checked(int outcome) {
    if (outcome < 0) {
        return lastError();
    }
    return {};
}

/// Whether an error says that nothing is there. Any other only says that nobody can tell.
inline bool meansAbsence(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

/// A programmer's error with a name and a reason. Nobody catches it outside of tests: it ends the process
/// with its text on standard error.
class Exception : public std::runtime_error {
  public:
    Exception(std::string name, const std::string& reason)
        : std::runtime_error(reason)
        , _name(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return _name; }

  private:
    std::string _name;
};

/// A broken precondition; its text is "Invalid parameter not satisfying: " and the condition.
class AssertionFailure : public std::logic_error {
  public:
    explicit AssertionFailure(const std::string& condition)
        : std::logic_error("Invalid parameter not satisfying: " + condition) {}
};

/// Throws AssertionFailure with the condition's own text if it does not hold.
#define OZ_REQUIRE(condition)                                                                                \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            throw ::platform::AssertionFailure(#condition);                                                  \
        }                                                                                                    \
    } while (false)

inline constexpr const char* invalidArgumentException = "NSInvalidArgumentException";

} // namespace platform
