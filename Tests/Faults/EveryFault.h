#pragma once

#include "Tests/Faults/SystemCalls.h"
#include "Tests/Support/TemporaryDevice.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tests {

/// All of a device's tree: a path to what is there, as text. Folders end in "/"; the log is left out, and
/// what names its folder.
using Tree = std::map<std::string, std::string>;
Tree treeOf(const TemporaryDevice& device);

/// The tree with all names as they were before a test run.
Tree withoutBackupNames(const Tree& tree);

/// The paths of the first tree that the second one lacks, or has with another content.
std::vector<std::string> missingFrom(const Tree& second, const Tree& first);

/// Descriptors that this process has open.
size_t openDescriptors();

/// One kind of run. `prepare` makes the device as it is before and may keep what `run` needs; `run` is what
/// the faults strike; `judge` says with what is wrong, or with nothing.
struct Trial {
    std::function<void()> prepare;
    std::function<void()> run;
    std::function<void()> judge;
    /// Gives up all that `prepare` has made; no descriptor stays open then.
    std::function<void()> release;
    /// For faults that a run has to overcome as if they had not been.
    std::function<void()> judgeWithoutFault;
};

/// Prepares and runs the trial once for every call that its run makes, with that call failing, and judges
/// each time. The errors change from call to call; with OZ_FAULT_ERRORS=all in the environment each call
/// fails with each of them. The figures are printed.
void everyFault(const std::string& name, const Trial& trial);

/// The same for every allocation. The exception may reach the caller.
void everyAllocation(const std::string& name, const Trial& trial);

} // namespace tests
