#include "Model/Tasks/OZTask.h"

#include "Platform/Device/Device.h"
#include "Platform/Files/Error.h"
#include "Platform/Formats/UTF8.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int firstInheritedDescriptor = 3;
/// What the system allows to everybody.
constexpr int pipeSize = 1024 * 1024;
constexpr size_t smallPart = 32768;
/// A short answer is read as it comes.
constexpr size_t smallPartsAtOnce = 4;
constexpr std::chrono::microseconds gatheringTime(200);

/// An end of a pipe, never in the place of a standard stream: the child's copies go there.
platform::Descriptor aboveStandardStreams(int end) {
    platform::Descriptor original(end);
    if (end > STDERR_FILENO) {
        return original;
    }
    return platform::Descriptor(::fcntl(end, F_DUPFD_CLOEXEC, firstInheritedDescriptor));
}

/// The null-terminated array of pointers that a spawn takes; lives no longer than the strings.
std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (const std::string& string : strings) {
        pointers.push_back(const_cast<char*>(string.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentFor(const platform::Command& command) {
    std::vector<std::string> environment = command.environment;
    for (char** entry = environ; !command.replacesEnvironment && *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::string_view start = variable.substr(0, variable.find('=') + 1);
        bool overridden = false;
        for (const std::string& own : command.environment) {
            overridden = overridden || own.starts_with(start);
        }
        if (!overridden) {
            environment.emplace_back(variable);
        }
    }
    return environment;
}

/// A child starts with the usual handling of signals, whatever this process has made of it.
class SpawnAttributes {
  public:
    SpawnAttributes() {
        posix_spawnattr_init(&_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&_attributes, &signals);
        sigaddset(&signals, SIGPIPE);
        sigaddset(&signals, SIGCHLD);
        posix_spawnattr_setsigdefault(&_attributes, &signals);
        posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&_attributes); }

    [[nodiscard]] const posix_spawnattr_t* get() const { return &_attributes; }

  private:
    posix_spawnattr_t _attributes{};
};

std::string failureText(long status) {
    switch (status) {
    case OZTaskStatusWaitError:
        return "Error during waitpid.";
    case OZTaskStatusSignaled:
        return "Task exited after being signaled.";
    case OZTaskStatusReadError:
        return "Error while reading the task output.";
    default:
        return fmt::format("Unknown error: {}", status);
    }
}

} // namespace

/// What happens to the child's descriptors between fork and execution.
class OZTask::FileActions {
  public:
    FileActions() { posix_spawn_file_actions_init(&_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&_actions); }

    void duplicate(int from, int to) { note(posix_spawn_file_actions_adddup2(&_actions, from, to)); }
    void close(int number) { note(posix_spawn_file_actions_addclose(&_actions, number)); }
    void closeFrom(int number) { note(posix_spawn_file_actions_addclosefrom_np(&_actions, number)); }
    void openForWriting(int number, const char* path) {
        note(posix_spawn_file_actions_addopen(&_actions, number, path, O_WRONLY, 0));
    }
    /// The first error of the above, or 0. A child that lacks one of them could take another's descriptor for
    /// its own.
    [[nodiscard]] int error() const { return _error; }
    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &_actions; }

  private:
    void note(int error) { _error = _error == 0 ? error : _error; }

    posix_spawn_file_actions_t _actions{};
    int _error = 0;
};

std::shared_ptr<OZTask> OZTask::make(platform::Device& device, std::string_view launchPath,
                                     std::vector<std::string> arguments) {
    return std::shared_ptr<OZTask>(new OZTask(device, launchPath, std::move(arguments)));
}

OZTask::OZTask(platform::Device& device, std::string_view launchPath, std::vector<std::string> arguments)
    : _device(device)
    , _argv(std::move(arguments))
    , _launchPath(launchPath) {
    if (!launchPath.starts_with('/')) {
        throw platform::Exception(platform::invalidArgumentException, "[OZTask: invalid launch path]");
    }
    _argv.insert(_argv.begin(), std::string(platform::lastPathComponent(_launchPath)));
}

OZTask::~OZTask() = default;

std::optional<std::string> OZTask::launchPathForExecutable(platform::Device& device, std::string_view name) {
    for (const std::string_view directory : platform::ToolTable::searchDirectories()) {
        std::string path = fmt::format("{}/{}", directory, name);
        if (device.tools().isExecutable(path)) {
            return path;
        }
    }
    return std::nullopt;
}

bool OZTask::launchSyncTask(platform::Device& device, std::string_view launchPath,
                            std::vector<std::string> arguments, bool quiet) {
    const auto task = make(device, launchPath, std::move(arguments));
    if (quiet) {
        task->setStdErrAction(OZTaskStreamAction::discard);
        task->setStdOutAction(OZTaskStreamAction::discard);
    }
    return task->launchSynchronously();
}

bool OZTask::launch() {
    if (_launched) {
        throw platform::Exception(platform::invalidArgumentException,
                                  "[OZTask: attempted to launch or modify instance after launch]");
    }
    configureStreams();
    const int result = spawn();
    if (result != 0) {
        terminatedWithStatus(result, true, "-[OZTask launch]");
        return false;
    }
    if (_pipe) {
        // Otherwise the reader would never see the end.
        _pipe->writeEnd.reset();
    }
    _launched = true;
    return true;
}

bool OZTask::launchSynchronously() {
    return launch() && getOutput() && waitAndGetExitStatus();
}

bool OZTask::launchAsynchronously() {
    if (!launch()) {
        return false;
    }
    _device.highPriorityQueue().async([self = shared_from_this()] {
        if (self->getOutput()) {
            self->waitAndGetExitStatus();
        }
    });
    return true;
}

void OZTask::configureStreams() {
    _fileActions.reset();
    _pipe.reset();
    if (_stdOutAction == OZTaskStreamAction::inherit && _stdErrAction == OZTaskStreamAction::inherit) {
        return;
    }
    _fileActions = std::make_unique<FileActions>();
    if (_stdOutAction == OZTaskStreamAction::capture || _stdErrAction == OZTaskStreamAction::capture) {
        captureStreams();
    }
    if (_stdOutAction == OZTaskStreamAction::discard) {
        discardStream(STDOUT_FILENO);
    }
    if (_stdErrAction == OZTaskStreamAction::discard) {
        discardStream(STDERR_FILENO);
    }
}

void OZTask::captureStreams() {
    std::array<int, 2> ends = {-1, -1};
    // Without a pipe the actions name descriptor -1, which is refused, and so is the spawn.
    std::ignore = ::pipe2(ends.data(), O_CLOEXEC);
    _pipe.emplace(aboveStandardStreams(ends[0]), aboveStandardStreams(ends[1]));
    // A tool that need not wait for its reader is done sooner; without the room it only takes longer.
    std::ignore = ::fcntl(_pipe->readEnd.get(), F_SETPIPE_SZ, pipeSize);
    const int writeEnd = _pipe->writeEnd.get();
    if (_stdOutAction == OZTaskStreamAction::capture) {
        _fileActions->duplicate(writeEnd, STDOUT_FILENO);
    }
    if (_stdErrAction == OZTaskStreamAction::capture) {
        _fileActions->duplicate(writeEnd, STDERR_FILENO);
    }
    _fileActions->close(_pipe->readEnd.get());
    _fileActions->close(writeEnd);
}

void OZTask::discardStream(int stream) {
    _fileActions->close(stream);
    _fileActions->openForWriting(stream, "/dev/null");
}

int OZTask::spawn() {
    const auto tool = _device.tools().toolAt(_launchPath);
    if (!tool) {
        return ENOENT;
    }
    const auto made = tool->command(_argv, _device.fileManager());
    if (!made) {
        return made.error().value();
    }
    const platform::Command& command = *made;
    if (!_fileActions) {
        _fileActions = std::make_unique<FileActions>();
    }
    int number = firstInheritedDescriptor;
    for (const platform::Descriptor& descriptor : command.descriptors) {
        _fileActions->duplicate(descriptor.get(), number++);
    }
    // Not all descriptors of this process are its own: it may have inherited some itself.
    _fileActions->closeFrom(number);
    if (_fileActions->error() != 0) {
        return _fileActions->error();
    }
    const SpawnAttributes attributes;
    const auto environment = environmentFor(command);
    return posix_spawn(&_pid, command.path.c_str(), _fileActions->get(), attributes.get(),
                       pointersTo(command.arguments).data(), pointersTo(environment).data());
}

bool OZTask::getOutput() {
    if (!_pipe) {
        return true;
    }
    std::string bytes;
    const std::function<void(std::string_view)> keep = [&bytes](std::string_view part) { bytes += part; };
    const auto& take = _outputHandler ? _outputHandler : keep;
    std::array<char, 65536> chunk{};
    ssize_t count = 0;
    size_t smallParts = 0;
    while ((count = ::read(_pipe->readEnd.get(), chunk.data(), chunk.size())) != 0) {
        if (count > 0) {
            take({chunk.data(), static_cast<size_t>(count)});
            // A tool with much to say writes a little at a time. To be woken for each of them costs both
            // sides more than to let some of them gather in the pipe.
            if (static_cast<size_t>(count) < smallPart && ++smallParts > smallPartsAtOnce) {
                std::this_thread::sleep_for(gatheringTime);
            }
        } else if (errno != EINTR) {
            const std::string reason = std::strerror(errno);
            terminatedWithStatus(
                OZTaskStatusReadError, true,
                fmt::format("-[OZTask getOutput] [{} Reason: {}]", "NSFileHandleOperationException", reason));
            _output = "";
            return false;
        }
    }
    if (_outputHandler) {
        return true;
    }
    if (platform::isUTF8(bytes)) {
        _output = std::move(bytes);
    } else {
        _undecodableBytes = std::move(bytes);
    }
    return true;
}

bool OZTask::waitAndGetExitStatus() {
    int status = 0;
    pid_t waited = -1;
    do {
        waited = ::waitpid(_pid, &status, 0);
    } while (waited < 0 && errno == EINTR);
    if (waited >= 0 && WIFEXITED(status)) {
        terminatedWithStatus(WEXITSTATUS(status), false, std::nullopt);
        return true;
    }
    terminatedWithStatus(waited < 0 ? OZTaskStatusWaitError : OZTaskStatusSignaled, true,
                         "-[OZTask waitAndGetExitStatus]");
    return false;
}

void OZTask::terminatedWithStatus(long status, bool error, const std::optional<std::string>& additionalInfo) {
    if (error) {
        const std::string start = additionalInfo ? *additionalInfo + " " : "";
        _error = OZTaskError{.code = status, .localizedDescription = start + failureText(status)};
        _terminationStatus = OZTaskStatusInvalid;
    } else {
        _terminationStatus = status;
    }
    _terminated = true;
    announceEnd();
}

// Whoever observes the task finds it alive. Where nobody does, the announcement alone does not keep it: a
// program without an event loop would hold each task, with all it has read, until its own end.
void OZTask::announceEnd() {
    auto& center = _device.notificationCenter();
    const bool isObserved = center.isObserved(OZTaskDidTerminateNotification, this);
    _device.mainQueue().post(
        [&center, kept = isObserved ? shared_from_this() : nullptr, task = weak_from_this()] {
            if (const auto ended = task.lock()) {
                center.post(OZTaskDidTerminateNotification, ended.get());
            }
        });
}
