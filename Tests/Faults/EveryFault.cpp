#include "Tests/Faults/EveryFault.h"

#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/TemporaryFolder.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <set>
#include <span>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace tests {

namespace {

constexpr std::array errors = {EIO, ENOSPC, EACCES, EMFILE, EINTR};

/// Calls that are made again when a signal has interrupted them, so that nobody notices.
const std::set<std::string> restartable = {"read", "write", "writev", "pread64", "waitpid", "syscall"};

/// The errors to try after so many faults.
std::span<const int> errorsFor(size_t faults) {
    const char* const wanted = std::getenv("OZ_FAULT_ERRORS");
    if (wanted != nullptr && std::string_view(wanted) == "all") {
        return errors;
    }
    return std::span(errors).subspan(faults % errors.size(), 1);
}

/// The calls of an undisturbed run. What the process itself opens once is open after it.
std::map<std::string, size_t> rehearse(const Trial& trial) {
    // Thousands of small devices are made: on a disk that others keep busy each would wait.
    constexpr uint64_t roomForADevice = uint64_t{32} << 20U;
    ::setenv("TMPDIR", memoryFolder(roomForADevice).c_str(), 1);
    trial.prepare();
    const auto calls = countCalls(trial.run);
    trial.judge();
    if (trial.judgeWithoutFault) {
        trial.judgeWithoutFault();
    }
    trial.release();
    return calls;
}

void strike(const Trial& trial, const Fault& fault) {
    const size_t descriptors = openDescriptors();
    trial.prepare();
    try {
        runWithFault(fault, trial.run);
    } catch (const std::bad_alloc&) {
        // The caller's to deal with; what counts is what it leaves behind.
        EXPECT_EQ(fault.call, allocation);
    }
    // A tool that could not be waited for may still be at work.
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    trial.judge();
    if (fault.error == EINTR && restartable.contains(fault.call) && trial.judgeWithoutFault) {
        trial.judgeWithoutFault();
    }
    trial.release();
    EXPECT_EQ(openDescriptors(), descriptors) << "descriptors were left open";
}

std::string describe(const fs::directory_entry& entry) {
    if (entry.is_symlink()) {
        return "-> " + fs::read_symlink(entry).string();
    }
    if (!entry.is_regular_file()) {
        return "";
    }
    return tests::contentOf(entry.path());
}

} // namespace

Tree treeOf(const TemporaryDevice& device) {
    Tree tree;
    const std::string root = device.folder() / "Root";
    const std::string log(OZCleanupLogger::logFilePath);
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string path = entry.path().string().substr(root.size());
        if (entry.is_directory() && !entry.is_symlink()) {
            path += '/';
        }
        if (path != log && !log.starts_with(path)) {
            tree.emplace(path, describe(entry));
        }
    }
    return tree;
}

Tree withoutBackupNames(const Tree& tree) {
    Tree result;
    for (const auto& [backup, content] : tree) {
        std::string path = backup;
        for (size_t found = 0; (found = path.find(CleanupRun::backupExtension)) != std::string::npos;) {
            path.erase(found, CleanupRun::backupExtension.size());
        }
        result.emplace(std::move(path), content);
    }
    return result;
}

std::vector<std::string> missingFrom(const Tree& second, const Tree& first) {
    std::vector<std::string> missing;
    for (const auto& [path, content] : first) {
        const auto found = second.find(path);
        if (found == second.end() || found->second != content) {
            missing.push_back(path);
        }
    }
    return missing;
}

size_t openDescriptors() {
    const auto entries = fs::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

void everyFault(const std::string& name, const Trial& trial) {
    const auto calls = rehearse(trial);
    size_t faults = 0;
    for (const auto& [call, count] : calls) {
        for (size_t number = 1; call != allocation && number <= count; ++number) {
            for (const int error : errorsFor(faults)) {
                if (testing::Test::HasFailure()) {
                    return;
                }
                SCOPED_TRACE(fmt::format("{} {} of {}: {}", call, number, count, std::strerror(error)));
                strike(trial, {.call = call, .number = number, .error = error});
                ++faults;
            }
        }
    }
    fmt::print("{}: {} kinds of calls, {} faults\n", name, calls.size() - calls.count(allocation), faults);
}

void everyAllocation(const std::string& name, const Trial& trial) {
    auto calls = rehearse(trial);
    const size_t allocations = calls[allocation];
    for (size_t number = 1; number <= allocations && !testing::Test::HasFailure(); ++number) {
        SCOPED_TRACE(fmt::format("allocation {} of {}", number, allocations));
        strike(trial, {.call = allocation, .number = number, .error = ENOMEM});
    }
    fmt::print("{}: {} allocations\n", name, allocations);
}

} // namespace tests
