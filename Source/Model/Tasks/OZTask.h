#pragma once

#include "Platform/Files/Descriptor.h"

#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <spawn.h>
#include <sys/types.h>

namespace platform {
class Device;
struct Command;
} // namespace platform

/// What becomes of one of the child's standard streams.
enum class OZTaskStreamAction : long {
    /// The child keeps the parent's stream.
    inherit = 0,
    /// The stream goes into the task's output.
    capture = 1,
    /// The stream goes to "/dev/null".
    discard = 2,
};

/// Statuses beside those of an exit (0 to 255).
inline constexpr long OZTaskStatusInvalid = std::numeric_limits<long>::min();
inline constexpr long OZTaskStatusReadError = OZTaskStatusInvalid + 1;
inline constexpr long OZTaskStatusSignaled = OZTaskStatusInvalid + 2;
inline constexpr long OZTaskStatusWaitError = OZTaskStatusInvalid + 3;

/// Posted on the main queue when a task has ended, in whatever way; the object is the task (`OZTask*`), which
/// lives until then if it is observed when it ends.
inline constexpr std::string_view OZTaskDidTerminateNotification = "OZTaskDidTerminateNotification";
inline constexpr std::string_view OZTaskErrorDomain = "com.ozlabs.OZTask";

/// Why a task failed.
struct OZTaskError {
    std::string_view domain = OZTaskErrorDomain;
    /// One of the reserved statuses, or the error number of a spawn that failed.
    long code = 0;
    std::string localizedDescription;
};

/// Runs one of the device's tools, once: create, set the stream actions, launch, read what came of it. No
/// shell stands between; arguments reach the tool as they are. `output`, `error` and `terminationStatus` are
/// to be read after the notification or after a synchronous launch. The device outlives its tasks.
class OZTask : public std::enable_shared_from_this<OZTask> {
  public:
    /// Throws `NSInvalidArgumentException` unless the path begins with "/".
    static std::shared_ptr<OZTask> make(platform::Device& device, std::string_view launchPath,
                                        std::vector<std::string> arguments = {});
    OZTask(const OZTask&) = delete;
    OZTask& operator=(const OZTask&) = delete;
    ~OZTask();

    /// The device path of the tool with this name in the first directory that has it, or none. No environment
    /// variable is looked at.
    static std::optional<std::string> launchPathForExecutable(platform::Device& device,
                                                              std::string_view name);

    /// Runs a tool and waits for it; `quiet` discards both streams, otherwise they are inherited. True means
    /// that the tool ran and exited by itself, with whatever status.
    static bool launchSyncTask(platform::Device& device, std::string_view launchPath,
                               std::vector<std::string> arguments, bool quiet);

    /// Starts the tool. False if it could not be started. Throws `NSInvalidArgumentException` after a launch
    /// that has succeeded.
    bool launch();
    /// Launches, reads the output, waits. True means that the tool exited by itself, with whatever status.
    bool launchSynchronously();
    /// Launches, and leaves reading and waiting to the high-priority queue. False if it could not be started.
    bool launchAsynchronously();

    /// The steps of a run, for those that go them one by one.
    void configureStreams();
    /// Reads the captured streams to their end; true at once if nothing is captured.
    bool getOutput();
    bool waitAndGetExitStatus();
    void terminatedWithStatus(long status, bool error, const std::optional<std::string>& additionalInfo);

    [[nodiscard]] std::string launchPath() const { return _launchPath; }
    /// Without the tool's own name.
    [[nodiscard]] std::vector<std::string> arguments() const { return {_argv.begin() + 1, _argv.end()}; }
    /// The process while it runs, else `OZTaskStatusInvalid`.
    [[nodiscard]] long processIdentifier() const { return running() ? _pid : OZTaskStatusInvalid; }
    [[nodiscard]] bool running() const { return _launched && !_terminated; }
    [[nodiscard]] bool launched() const { return _launched; }
    [[nodiscard]] bool terminated() const { return _terminated; }
    /// The exit status; `OZTaskStatusInvalid` before the end and after an error.
    [[nodiscard]] long terminationStatus() const {
        return _terminated ? _terminationStatus : OZTaskStatusInvalid;
    }
    /// Absent unless the task failed.
    [[nodiscard]] const std::optional<OZTaskError>& error() const { return _error; }
    /// The captured text; absent until read, without a captured stream, and where the bytes are not UTF-8.
    [[nodiscard]] const std::optional<std::string>& output() const { return _output; }
    /// The captured bytes, whether they are UTF-8 or not; empty where nothing was read. Valid as long as the
    /// task.
    [[nodiscard]] std::string_view outputBytes() const { return _output ? *_output : _undecodableBytes; }

    [[nodiscard]] OZTaskStreamAction stdErrAction() const { return _stdErrAction; }
    [[nodiscard]] OZTaskStreamAction stdOutAction() const { return _stdOutAction; }
    /// A change after the launch has no effect.
    void setStdErrAction(OZTaskStreamAction action) { _stdErrAction = action; }
    void setStdOutAction(OZTaskStreamAction action) { _stdOutAction = action; }
    /// Is given each part of the captured bytes as soon as it is read, on the thread that reads; the part is
    /// valid during the call. The task then keeps no output itself.
    void setOutputHandler(std::function<void(std::string_view part)> handler) {
        _outputHandler = std::move(handler);
    }

  private:
    class FileActions;
    struct Pipe {
        platform::Descriptor readEnd;
        platform::Descriptor writeEnd;
    };

    OZTask(platform::Device& device, std::string_view launchPath, std::vector<std::string> arguments);

    void captureStreams();
    void discardStream(int stream);
    [[nodiscard]] int spawn();
    void announceEnd();

    platform::Device& _device;
    std::vector<std::string> _argv;
    std::unique_ptr<FileActions> _fileActions;
    std::string _launchPath;
    pid_t _pid = 0;
    std::optional<Pipe> _pipe;
    std::atomic<bool> _launched = false;
    std::atomic<bool> _terminated = false;
    std::optional<OZTaskError> _error;
    std::optional<std::string> _output;
    std::string _undecodableBytes;
    std::function<void(std::string_view part)> _outputHandler;
    OZTaskStreamAction _stdErrAction = OZTaskStreamAction::inherit;
    OZTaskStreamAction _stdOutAction = OZTaskStreamAction::inherit;
    long _terminationStatus = OZTaskStatusInvalid;
};
