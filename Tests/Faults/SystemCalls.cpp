// Stands between the libraries under test and the system: the linker gives each call listed in CMakeLists.txt
// to its wrapper here. What the tests themselves do through the C++ library is not seen.
#include "Tests/Faults/SystemCalls.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>

#include <dirent.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>
#include <sys/uio.h>

namespace tests {

namespace {

// Work that threads share is struck on each of them.
std::atomic<bool> counting = false;
thread_local bool isCounted = false;
std::mutex countsMutex;
std::map<std::string, size_t, std::less<>> counts;
std::optional<Fault> planned;
std::optional<Fault> standing;

/// The error that the call has to fail with; 0 if it is to be made.
int errorFor(std::string_view call) {
    if (!counting || isCounted) {
        return 0;
    }
    // What is counted here does allocate.
    isCounted = true;
    const std::lock_guard lock(countsMutex);
    auto found = counts.find(call);
    if (found == counts.end()) {
        found = counts.emplace(call, 0).first;
    }
    const size_t number = ++found->second;
    isCounted = false;
    if (standing && standing->call == call) {
        return standing->error;
    }
    return planned && planned->call == call && planned->number == number ? planned->error : 0;
}

} // namespace

std::map<std::string, size_t> countCalls(const std::function<void()>& work) {
    counts.clear();
    counting = true;
    work();
    counting = false;
    return {counts.begin(), counts.end()};
}

void runWithFault(const Fault& fault, const std::function<void()>& work) {
    planned = fault;
    try {
        std::ignore = countCalls(work);
    } catch (...) {
        counting = false;
        planned.reset();
        throw;
    }
    planned.reset();
}

StandingFault::StandingFault(std::string call, int error) {
    standing = Fault{.call = std::move(call), .number = 0, .error = error};
}

StandingFault::~StandingFault() {
    standing.reset();
}

} // namespace tests

[[gnu::noinline]] void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return tests::errorFor(tests::allocation) != 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
}

[[gnu::noinline]] void* operator new(size_t size) {
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}

// NOLINTBEGIN: the linker chooses these names
#define WRAP(Result, name, parameters, arguments)                                                            \
    Result __real_##name parameters;                                                                         \
    Result __wrap_##name parameters {                                                                        \
        if (const int error = tests::errorFor(#name)) {                                                      \
            errno = error;                                                                                   \
            return static_cast<Result>(-1);                                                                  \
        }                                                                                                    \
        return __real_##name arguments;                                                                      \
    }

extern "C" {
WRAP(int, faccessat, (int folder, const char* path, int mode, int flags), (folder, path, mode, flags))
WRAP(int, fchmod, (int file, mode_t mode), (file, mode))
WRAP(int, fchmodat, (int folder, const char* path, mode_t mode, int flags), (folder, path, mode, flags))
WRAP(int, fchown, (int file, uid_t owner, gid_t group), (file, owner, group))
WRAP(int, fchownat, (int folder, const char* path, uid_t owner, gid_t group, int flags),
     (folder, path, owner, group, flags))
WRAP(ssize_t, fgetxattr, (int file, const char* name, void* value, size_t size), (file, name, value, size))
WRAP(ssize_t, flistxattr, (int file, char* list, size_t size), (file, list, size))
WRAP(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags),
     (file, name, value, size, flags))
WRAP(int, fstat64, (int file, struct stat* status), (file, status))
WRAP(int, fstatat64, (int folder, const char* path, struct stat* status, int flags),
     (folder, path, status, flags))
WRAP(int, fstatvfs64, (int file, struct statvfs* status), (file, status))
WRAP(int, fsync, (int file), (file))
WRAP(int, ftruncate64, (int file, off_t size), (file, size))
WRAP(int, futimens, (int file, const timespec* times), (file, times))
WRAP(ssize_t, getdents64, (int folder, void* buffer, size_t size), (folder, buffer, size))
WRAP(off_t, lseek64, (int file, off_t offset, int whence), (file, offset, whence))
WRAP(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode))
WRAP(int, mknodat, (int folder, const char* path, mode_t mode, dev_t device), (folder, path, mode, device))
WRAP(int, pipe2, (int* ends, int flags), (ends, flags))
WRAP(ssize_t, pread64, (int file, void* bytes, size_t size, off_t offset), (file, bytes, size, offset))
WRAP(ssize_t, read, (int file, void* bytes, size_t size), (file, bytes, size))
WRAP(ssize_t, readlinkat, (int folder, const char* path, char* target, size_t size),
     (folder, path, target, size))
WRAP(int, renameat, (int folder, const char* path, int toFolder, const char* to),
     (folder, path, toFolder, to))
WRAP(int, stat64, (const char* path, struct stat* status), (path, status))
WRAP(int, symlinkat, (const char* target, int folder, const char* path), (target, folder, path))
WRAP(int, syncfs, (int file), (file))
WRAP(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))
WRAP(int, utimensat, (int folder, const char* path, const timespec* times, int flags),
     (folder, path, times, flags))
WRAP(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options))
WRAP(ssize_t, write, (int file, const void* bytes, size_t size), (file, bytes, size))
WRAP(ssize_t, writev, (int file, const iovec* pieces, int count), (file, pieces, count))

// A move may be refused between folders and still be possible inside of one.
int __real_renameat2(int folder, const char* path, int toFolder, const char* to, unsigned flags);
int __wrap_renameat2(int folder, const char* path, int toFolder, const char* to, unsigned flags) {
    if (const int error = tests::errorFor(folder == toFolder ? "renameat2" : "renameat2 to another folder")) {
        errno = error;
        return -1;
    }
    return __real_renameat2(folder, path, toFolder, to, flags);
}

// These have no -1, or arguments that vary.
char* __real_realpath(const char* path, char* resolved);
char* __wrap_realpath(const char* path, char* resolved) {
    if (const int error = tests::errorFor("realpath")) {
        errno = error;
        return nullptr;
    }
    return __real_realpath(path, resolved);
}

int __real_posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment);
int __wrap_posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments,
                       char* const* environment) {
    const int error = tests::errorFor("posix_spawn");
    return error != 0 ? error : __real_posix_spawn(child, path, actions, attributes, arguments, environment);
}

int __real_openat64(int folder, const char* path, int flags, mode_t mode);
int __wrap_openat64(int folder, const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const auto mode = va_arg(more, mode_t);
    va_end(more);
    if (const int error = tests::errorFor("openat64")) {
        errno = error;
        return -1;
    }
    return __real_openat64(folder, path, flags, mode);
}

int __real_fcntl64(int file, int command, long argument);
int __wrap_fcntl64(int file, int command, ...) {
    va_list more;
    va_start(more, command);
    const long argument = va_arg(more, long);
    va_end(more);
    if (const int error = tests::errorFor("fcntl64")) {
        errno = error;
        return -1;
    }
    return __real_fcntl64(file, command, argument);
}

// The file manager's openat2 has no other name than its number.
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);
long __wrap_syscall(long number, ...) {
    long arguments[6];
    va_list more;
    va_start(more, number);
    for (long& argument : arguments) {
        argument = va_arg(more, long);
    }
    va_end(more);
    if (const int error = tests::errorFor("syscall")) {
        errno = error;
        return -1;
    }
    return __real_syscall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                          arguments[5]);
}
}
// NOLINTEND
