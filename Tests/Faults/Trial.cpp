#include "Tests/Faults/Trial.h"

#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Support/TemporaryFolder.h"

#include <array>
#include <new>

namespace tests {

namespace {

constexpr std::array errors = {EIO, ENOSPC, EACCES, EMFILE, EINTR};

/// Calls that are made again when a signal has interrupted them, so that nobody notices.
const std::set<std::string> restartable = {"read", "write", "writev", "pread64", "waitpid", "syscall"};

size_t openDescriptors() {
    const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

/// Devices differ in their times.
TreeSnapshot withoutTimes(TreeSnapshot tree) {
    for (auto& [path, state] : tree) {
        state.modified = {};
    }
    return tree;
}

/// What a run comes to that nothing strikes.
struct Whole {
    std::vector<Call> calls;
    TreeSnapshot tree;
    uint64_t count = 0;
};

/// One run; the first makes the whole.
void attempt(const Trial& trial, const Fault* fault, Whole& whole) {
    Subject subject;
    for (const auto& line : scenarios::linesOf(trial.device)) {
        subject.world.give(line);
    }
    if (trial.prepare) {
        trial.prepare(subject);
    }
    std::ignore = subject.world.device();
    Aftermath aftermath{.subject = subject,
                        .before = subject.world.tree(),
                        .after = {},
                        .isUndisturbed =
                            fault == nullptr || (fault->error == EINTR && restartable.contains(fault->call))};
    const auto run = [&] { trial.run(subject); };
    try {
        if (fault != nullptr) {
            runWithFault(*fault, run);
        } else {
            whole.calls = callsOf(run, trial.strikes == allocation);
        }
    } catch (const std::bad_alloc&) {
        // The caller's to deal with; what counts is what it leaves behind.
        EXPECT_EQ(trial.strikes, allocation);
    }
    // A tool that could not be waited for may still be at work.
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    aftermath.after = subject.world.tree();
    for (const auto promise : trial.promises) {
        promise(aftermath);
    }
    if (fault == nullptr) {
        whole.tree = aftermath.after;
        whole.count = subject.count;
    } else if (aftermath.isUndisturbed) {
        EXPECT_THAT(scenarios::effectsOn(withoutTimes(whole.tree), withoutTimes(aftermath.after)),
                    testing::IsEmpty());
        EXPECT_EQ(subject.count, whole.count);
        EXPECT_TRUE(!subject.done || subject.done->has_value());
    }
}

/// The faults that show all that can be shown.
std::vector<Fault> faultsOf(const std::vector<Call>& calls) {
    const char* const wanted = std::getenv("OZ_FAULT_ERRORS");
    const bool wantsAll = wanted != nullptr && std::string_view(wanted) == "all";
    struct Place {
        size_t firstError = 0;
        size_t strikes = 0;
        std::set<std::string> items;
    };
    std::map<std::string, Place> places;
    std::vector<Fault> faults;
    for (const auto& call : calls) {
        const auto add = [&](int error) { faults.push_back({call.name, call.number, error}); };
        auto& place = places.try_emplace(call.place, Place{.firstError = places.size()}).first->second;
        const bool isNew = place.items.insert(call.item).second;
        if (call.name == allocation) {
            add(ENOMEM);
        } else if (wantsAll) {
            std::ranges::for_each(errors, add);
        } else if (isNew || place.strikes < errors.size()) {
            if (place.strikes == 0 && restartable.contains(call.name)) {
                add(EINTR);
            }
            add(errors[(place.firstError + place.strikes++) % errors.size()]);
        }
    }
    return faults;
}

} // namespace

void tryEveryFault(const Trial& trial) {
    // Thousands of small devices are made: on a disk that others keep busy each would wait.
    ::setenv("TMPDIR", memoryFolder(uint64_t{32} << 20U).c_str(), 1);
    setStandingFault(trial.standing);
    // What the process itself opens once is open after the first run.
    Whole whole;
    attempt(trial, nullptr, whole);
    const size_t descriptors = openDescriptors();
    if (!trial.strikes.empty()) {
        std::erase_if(whole.calls, [&](const auto& call) { return call.name != trial.strikes; });
    }
    const auto faults = faultsOf(whole.calls);
    for (const auto& fault : faults) {
        if (testing::Test::HasFailure()) {
            break;
        }
        SCOPED_TRACE(fmt::format("{} {}: {}", fault.call, fault.number, std::strerror(fault.error)));
        attempt(trial, &fault, whole);
        EXPECT_EQ(openDescriptors(), descriptors) << "descriptors were left open";
    }
    setStandingFault({});
    fmt::print("{}: {} calls, {} faults\n", trial.name, whole.calls.size(), faults.size());
}

} // namespace tests
