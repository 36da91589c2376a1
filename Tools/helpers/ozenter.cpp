// Runs one of the host's programs for a device: ozenter MODE PROGRAM ARGV0 [ARGUMENT…], with the device's
// root as descriptor 3.
//
// enter: the program sees the device's tree as its whole world, at the current directory that descriptor 4
// is. The tree must not steer the loader, so the loader is started in an empty root, finds the host's
// libraries by paths relative to a working directory outside, and the preloaded libozenter.so goes into the
// tree when all is loaded. Should that fail, the program is left in the empty root, without a right to write
// anything but the tree.
//
// list, search: the same for a package query, whose output is put right (see PackageNames.h).
//
// guard: the program stays in the host's world and is told the tree by its arguments, but writes nowhere but
// into the tree and executes nothing that lies in it. Descriptor 4 is the tree's package database, if any.

#include "Entrance.h"
#include "Landlock.h"
#include "Launch/UserNamespace.h"
#include "PackageNames.h"
#include "PackageScripts.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::array programFolders = {"/usr", "/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"};
constexpr std::array libraryFolders = {"/usr/lib64", "/lib64", "/usr/lib", "/lib"};
constexpr std::array hostSettings = {"/etc/ld.so.cache", "/etc/nsswitch.conf", "/etc/passwd", "/etc/group",
                                     "/etc/dpkg",        "/dev/urandom",       "/proc"};
constexpr std::array bitBuckets = {"/dev/null"};
constexpr std::array temporaryFolders = {"/dev/shm", "/run", "/tmp", "/var/tmp"};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "ozenter: %s: %s\n", what, std::strerror(errno));
    std::exit(notEnteredStatus);
}

[[noreturn]] void refuse(const std::string& reason) {
    std::fprintf(stderr, "ozenter: %s\n", reason.c_str());
    std::exit(notEnteredStatus);
}

std::string realPath(const std::string& path) {
    char* const real = ::realpath(path.c_str(), nullptr);
    if (real == nullptr) {
        fail(path.c_str());
    }
    std::string result = real;
    std::free(real);
    return result;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

int openFolder(const char* path) {
    const int folder = ::open(path, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        fail(path);
    }
    return folder;
}

/// Where the host keeps its loader and its C library: this program has been started with both.
struct Runtime {
    std::string loader;
    std::string library;
};

int noteObject(dl_phdr_info* object, size_t /*size*/, void* context) {
    auto& runtime = *static_cast<Runtime*>(context);
    for (int index = 0; index < object->dlpi_phnum; ++index) {
        const auto& header = object->dlpi_phdr[index];
        if (header.p_type == PT_INTERP && runtime.loader.empty()) {
            runtime.loader = reinterpret_cast<const char*>(object->dlpi_addr + header.p_vaddr);
        }
    }
    if (std::string_view(object->dlpi_name).find("/libc.so") != std::string_view::npos) {
        runtime.library = object->dlpi_name;
    }
    return 0;
}

/// Paths from one folder to the rest of the host that go up to the real root by "..", which an own root
/// outside of that folder does not stop.
class PathsFrom {
  public:
    explicit PathsFrom(const std::string& folder) {
        for (const char character : folder) {
            _up += character == '/' ? "../" : "";
        }
    }
    /// A path without links, since absolute links would lead into the own root.
    [[nodiscard]] std::string to(const std::string& path) const { return _up + realPath(path).substr(1); }

  private:
    std::string _up;
};

std::string libraryPath(const PathsFrom& paths, const std::string& library) {
    std::string list = paths.to(folderOf(realPath(library)));
    for (const char* folder : libraryFolders) {
        if (::access(folder, X_OK) == 0) {
            list += ":" + paths.to(folder);
        }
    }
    return list;
}

/// A folder that is empty for ever: it has no name any more, so nothing can be made in it.
int openEmptyFolder() {
    for (const char* parent : temporaryFolders) {
        std::string path = std::string(parent) + "/ozenter.XXXXXX";
        if (::mkdtemp(path.data()) != nullptr) {
            const int folder = openFolder(path.c_str());
            if (::rmdir(path.c_str()) != 0) {
                fail(path.c_str());
            }
            return folder;
        }
    }
    fail("no empty folder can be made");
}

/// Takes the folder as the root; the working directory becomes another one outside.
void changeRoot(int root, int workingDirectory) {
    if (::fchdir(root) != 0 || ::chroot(".") != 0 || ::fchdir(workingDirectory) != 0) {
        fail("the root cannot be changed");
    }
}

std::vector<char*> vectorOf(std::vector<std::string>& strings) {
    std::vector<char*> vector;
    for (std::string& string : strings) {
        vector.push_back(string.data());
    }
    vector.push_back(nullptr);
    return vector;
}

/// Where the kernel has such rules, even a program that was not taken into the tree writes nowhere else.
void confineToTree(const std::string& helpers) {
    Landlock rules;
    if (!rules.isAvailable()) {
        return;
    }
    const std::array own = {helpers.c_str()};
    rules.allowAllButExecution(rootDescriptor);
    rules.allowReadingAndExecuting(programFolders);
    rules.allowReadingAndExecuting(own);
    if (!rules.enforce()) {
        fail("the rules of access cannot be enforced");
    }
}

[[noreturn]] void enterAndExecute(const std::string& program, const std::vector<std::string>& arguments) {
    Runtime runtime;
    ::dl_iterate_phdr(noteObject, &runtime);
    const std::string helpers = folderOf(realPath("/proc/self/exe"));
    if (::access((helpers + "/libozenter.so").c_str(), R_OK) != 0) {
        fail("libozenter.so");
    }
    const PathsFrom paths(helpers);
    std::vector<std::string> vector = {
        "ozenter",        "--inhibit-cache", "--library-path", libraryPath(paths, runtime.library),
        "--preload",      "./libozenter.so", "--argv0",        arguments.at(0),
        paths.to(program)};
    vector.insert(vector.end(), arguments.begin() + 1, arguments.end());
    const int loader = ::open(realPath(runtime.loader).c_str(), O_RDONLY | O_CLOEXEC);
    const int helpersFolder = openFolder(helpers.c_str());
    const int empty = openEmptyFolder();
    confineToTree(helpers);
    changeRoot(empty, helpersFolder);
    ::syscall(SYS_execveat, loader, "", vectorOf(vector).data(), environ, AT_EMPTY_PATH);
    fail("the tool cannot be executed");
}

int statusOf(int waitStatus) {
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : notEnteredStatus;
}

[[noreturn]] void query(QueryOutput output, const std::string& program,
                        const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("no pipe can be made");
    }
    const pid_t child = ::fork();
    if (child < 0) {
        fail("no process can be made");
    }
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        enterAndExecute(program, arguments);
    }
    ::close(ends[1]);
    const bool copied = copyWithPlainNames(ends[0], output);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    std::exit(copied ? statusOf(status) : EXIT_FAILURE);
}

bool isSameFolder(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// True if the folder or one above it is one of those that programs are executed from.
bool isBelowProgramFolders(int folder) {
    struct stat current = {};
    struct stat above = {};
    for (std::string path = "."; ::fstatat(folder, path.c_str(), &current, 0) == 0; path += "/..") {
        for (const char* programs : programFolders) {
            struct stat status = {};
            if (::stat(programs, &status) == 0 && isSameFolder(status, current)) {
                return true;
            }
        }
        if (::fstatat(folder, (path + "/..").c_str(), &above, 0) != 0 || isSameFolder(current, above)) {
            return false;
        }
    }
    return true;
}

/// Keeps a package tool from a removal that it could not finish.
void keepPackagesWithScripts(const std::string& program, std::vector<std::string>& arguments) {
    const PackageScripts scripts(packageDatabaseDescriptor);
    if (program.ends_with("/dpkg")) {
        const std::string package = scripts.removedBy(arguments);
        if (!package.empty()) {
            refuse("package " + package + " has a removal script, which only the device itself can run; " +
                   "nothing was removed");
        }
        return;
    }
    if (!scripts.names().empty()) {
        std::fprintf(stderr, "Kept, since only the device itself can run their removal scripts: %s\n",
                     scripts.names().c_str());
    }
    const auto options = scripts.keepingOptions();
    arguments.insert(arguments.begin() + 1, options.begin(), options.end());
}

[[noreturn]] void guardAndExecute(const std::string& program, std::vector<std::string> arguments) {
    if (::fcntl(rootDescriptor, F_GETFD) < 0) {
        fail("no device root was passed");
    }
    if (isBelowProgramFolders(rootDescriptor)) {
        refuse("the device's tree lies among the host's own programs; move it elsewhere");
    }
    Landlock rules;
    if (!rules.isAvailable()) {
        refuse(
            "this kernel cannot keep package tools inside a tree (it has no Landlock); nothing was changed");
    }
    const std::string helpers = folderOf(realPath("/proc/self/exe"));
    const std::array own = {helpers.c_str()};
    rules.allowAllButExecution(rootDescriptor);
    rules.allowReadingAndExecuting(programFolders);
    rules.allowReading(hostSettings);
    rules.allowReading(own);
    rules.allowReadingAndWriting(bitBuckets);
    if (::chdir("/") != 0 || !rules.enforce()) {
        fail("the rules of access cannot be enforced");
    }
    keepPackagesWithScripts(program, arguments);
    ::close(rootDescriptor);
    ::close(packageDatabaseDescriptor);
    ::execv(program.c_str(), vectorOf(arguments).data());
    fail(program.c_str());
}

} // namespace

int main(int count, char** vector) {
    if (count < 4) {
        refuse("this program is run by others; it is of no use by itself");
    }
    const std::string_view mode = vector[1];
    const std::string program = vector[2];
    const std::vector<std::string> arguments(vector + 3, vector + count);
    ::syscall(SYS_close_range, firstFreeDescriptor, ~0U, 0);
    // The window of an ordinary user runs by their own number, and its rights end with each execution.
    enterUserNamespaceUnlessRoot(SeenAs::root);
    if (mode == "enter") {
        enterAndExecute(program, arguments);
    }
    if (mode == "list" || mode == "search") {
        query(mode == "list" ? QueryOutput::list : QueryOutput::search, program, arguments);
    }
    if (mode == "guard") {
        guardAndExecute(program, arguments);
    }
    refuse("unknown mode");
}
