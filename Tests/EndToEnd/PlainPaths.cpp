#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// Takes the place of the system's calls on descriptors in one build of the race tests: each acts on the path
// that the descriptor was opened by, as a file manager without descriptors would. That build must fail.

namespace {

std::mutex mutex;
std::map<int, std::string> paths;

std::string pathOf(int folder) {
    const std::lock_guard lock(mutex);
    const auto found = paths.find(folder);
    if (found != paths.end()) {
        return found->second;
    }
    char path[4096];
    const ssize_t length = ::readlink(("/proc/self/fd/" + std::to_string(folder)).c_str(), path, sizeof path);
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

std::string plain(int folder, const char* name) {
    if (folder == AT_FDCWD || *name == '/' || *name == '\0') {
        return name;
    }
    return std::strcmp(name, ".") == 0 ? pathOf(folder) : pathOf(folder) + "/" + name;
}

int remember(int file, const std::string& path) {
    if (file >= 0) {
        const std::lock_guard lock(mutex);
        paths[file] = path;
    }
    return file;
}

} // namespace

extern "C" {

int __real_openat64(int folder, const char* name, int flags, mode_t mode);
int __real_fstatat64(int folder, const char* name, struct stat64* status, int flags);
int __real_unlinkat(int folder, const char* name, int flags);
int __real_renameat2(int from, const char* name, int to, const char* newName, unsigned flags);
int __real_close(int file);
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);

int __wrap_openat64(int folder, const char* name, int flags, mode_t mode) {
    const std::string path = plain(folder, name);
    const bool follows = (flags & O_DIRECTORY) != 0;
    return remember(__real_openat64(AT_FDCWD, path.c_str(), follows ? flags & ~O_NOFOLLOW : flags, mode),
                    path);
}

int __wrap_fstatat64(int folder, const char* name, struct stat64* status, int flags) {
    return *name == '\0' ? __real_fstatat64(folder, name, status, flags)
                         : __real_fstatat64(AT_FDCWD, plain(folder, name).c_str(), status, flags);
}

int __wrap_unlinkat(int folder, const char* name, int flags) {
    return __real_unlinkat(AT_FDCWD, plain(folder, name).c_str(), flags);
}

int __wrap_renameat2(int from, const char* name, int to, const char* newName, unsigned flags) {
    return __real_renameat2(AT_FDCWD, plain(from, name).c_str(), AT_FDCWD, plain(to, newName).c_str(), flags);
}

int __wrap_close(int file) {
    {
        const std::lock_guard lock(mutex);
        paths.erase(file);
    }
    return __real_close(file);
}

long __wrap_syscall(long number, long a, long b, long c, long d, long e, long f) {
    if (number != SYS_openat2) {
        return __real_syscall(number, a, b, c, d, e, f);
    }
    const int base = static_cast<int>(a);
    const auto* name = reinterpret_cast<const char*>(b);
    const auto* how = reinterpret_cast<const open_how*>(c);
    const std::string path = *name == '/' ? pathOf(base) + name : plain(base, name);
    return remember(__real_openat64(AT_FDCWD, path.c_str(), static_cast<int>(how->flags), 0), path);
}
}
