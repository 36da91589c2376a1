// Stands between the libraries under test and the system: the linker gives each call listed in CMakeLists.txt
// to its wrapper here. What the tests themselves do through the C++ library is not seen.
#include "Tests/Faults/Trial.h"

#include <mutex>
#include <new>

#include <execinfo.h>

namespace tests {

namespace {

enum class Watch { nothing, calls, allocations };

// Work that threads share is struck on each of them.
std::mutex mutex;
std::atomic<Watch> watch = Watch::nothing;
thread_local bool isNoting = false;
std::map<std::string_view, size_t> counts;
std::vector<Call>* notes = nullptr;
Fault planned;
Fault standing;

std::string itemOf(std::string_view call, size_t number, const long (&words)[4]) {
    static const std::set<std::string_view> readOrWrite = {"getdents64", "lseek64", "pread64",
                                                           "read",       "write",   "writev"};
    static const std::set<std::string_view> outside = {"operator new", "pipe2",  "posix_spawn",
                                                       "realpath",     "stat64", "waitpid"};
    static const std::set<std::string_view> inFolder = {"faccessat", "fchmodat", "fchownat",   "fstatat64",
                                                        "mkdirat",   "mknodat",  "openat64",   "renameat",
                                                        "renameat2", "unlinkat", "readlinkat", "utimensat"};
    call = call.substr(0, call.find(' ') == 9 ? 9 : call.npos);
    if (outside.contains(call)) {
        return "";
    }
    if (readOrWrite.contains(call)) {
        return fmt::format("{}", number);
    }
    const int folder = call == "syscall" || call == "symlinkat" ? 1 : 0;
    const bool isNamed = folder == 1 || inFolder.contains(call);
    char path[4096];
    const auto link = fmt::format("/proc/self/fd/{}", static_cast<int>(words[folder]));
    const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
    return std::string(path, length > 0 ? static_cast<size_t>(length) : 0) +
           (isNamed ? std::string("/") + reinterpret_cast<const char*>(words[folder + 1]) : "");
}

std::string placeOf(std::string_view call) {
    void* frames[128];
    const int depth = ::backtrace(frames, 128);
    return std::string(call) +
           std::string(reinterpret_cast<const char*>(frames), static_cast<size_t>(depth) * sizeof(void*));
}

/// The error that the call has to fail with; 0 if it is to be made.
int errorFor(std::string_view call, const long (&words)[4]) {
    if (isNoting || watch == Watch::nothing) {
        return 0;
    }
    if (standing.call == call) {
        return standing.error;
    }
    if (watch != (call == allocation ? Watch::allocations : Watch::calls)) {
        return 0;
    }
    // What is noted here does allocate and look at the tree.
    isNoting = true;
    const std::lock_guard lock(mutex);
    const size_t number = ++counts[call];
    if (notes != nullptr) {
        notes->push_back({std::string(call), number, placeOf(call), itemOf(call, number, words)});
    }
    isNoting = false;
    return planned.call == call && planned.number == number ? planned.error : 0;
}

void watched(const std::function<void()>& work, Watch what) {
    struct End {
        ~End() { watch = Watch::nothing; }
    } end;
    counts.clear();
    watch = what;
    work();
}

} // namespace

std::vector<Call> callsOf(const std::function<void()>& work, bool allocations) {
    std::vector<Call> calls;
    notes = &calls;
    planned = {};
    watched(work, allocations ? Watch::allocations : Watch::calls);
    notes = nullptr;
    return calls;
}

void runWithFault(const Fault& fault, const std::function<void()>& work) {
    planned = fault;
    watched(work, fault.call == allocation ? Watch::allocations : Watch::calls);
}

void setStandingFault(Fault fault) {
    standing = std::move(fault);
}

/// All calls take their arguments in up to six registers, and nobody reads more of a result than its type.
using Function = long(long, long, long, long, long, long);

static long made(std::string_view call, Function* real, long a, long b, long c, long d, long e, long f) {
    // A move may be refused between folders and still be possible inside of one.
    const bool leavesFolder = call == "renameat2" && static_cast<int>(a) != static_cast<int>(c);
    const int error = errorFor(leavesFolder ? "renameat2 to another folder" : call, {a, b, c, d});
    if (error == 0) {
        return real(a, b, c, d, e, f);
    }
    errno = error;
    return call == "realpath" ? 0 : call == "posix_spawn" ? error : -1;
}

} // namespace tests

// NOLINTBEGIN: the linker chooses these names
#define CALL(name)                                                                                           \
    extern "C" tests::Function __real_##name;                                                                \
    extern "C" long __wrap_##name(long a, long b, long c, long d, long e, long f) {                          \
        return tests::made(#name, __real_##name, a, b, c, d, e, f);                                          \
    }
OZ_SYSTEM_CALLS
// NOLINTEND

[[gnu::noinline]] void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return tests::errorFor(tests::allocation, {}) != 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
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
