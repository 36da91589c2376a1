#pragma once

#include "Platform/Device/DeviceFacts.h"
#include "Platform/Device/DeviceLock.h"
#include "Platform/Device/ToolTable.h"
#include "Platform/Device/UserDefaults.h"
#include "Platform/Device/Volumes.h"
#include "Platform/Device/Warnings.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Threads/NotificationCenter.h"
#include "Platform/Threads/Queue.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace platform {

/// The device that a process works on: its file tree, what is known about it, the tools behind its paths, and
/// the queues and the notification centre of the process. Several devices may live in one process.
class Device {
  public:
    /// Opens a plain tree or a device folder. The error is one line for the user that says what is wrong with
    /// the directory; nothing has been touched then.
    static std::expected<std::unique_ptr<Device>, std::string> open(const std::string& directory,
                                                                    const GivenFacts& given = {});

    /// True for a folder that has the tree in a folder of its own, beside the facts; a plain tree is itself
    /// the device's "/".
    static bool isDeviceFolder(const std::string& directory);

    /// A device over an opened root with given facts and no tools but `tools`; for those that know better
    /// than the tree.
    Device(FileManager fileManager, DeviceFacts facts, ToolTable tools);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    ~Device();

    /// Takes the sole right to change the tree and keeps it as long as this object lives. Fails at once, with
    /// EWOULDBLOCK where another process has the right; DeviceLock tells of that process and of errors.
    Result<void> lock();
    /// Refuses every change of the tree from now on, as FileManager::lookOnly tells.
    Result<void> lookOnly() { return _fileManager.lookOnly(); }

    /// A handle on the device root. All handles of one device share its current directory; one handle serves
    /// one thread.
    [[nodiscard]] FileManager fileManager() const { return _fileManager; }
    [[nodiscard]] const DeviceFacts& facts() const { return _facts; }
    [[nodiscard]] const ToolTable& tools() const { return _tools; }
    [[nodiscard]] const Volumes& volumes() const { return _volumes; }

    [[nodiscard]] MainQueue& mainQueue() { return *_mainQueue; }
    /// Puts another queue, such as that of a toolkit's event loop, in the place of the device's own. To be
    /// called before anything is posted; the queue outlives the device.
    void useMainQueue(MainQueue& queue) { _mainQueue = &queue; }
    /// Concurrent queues for work beside the main thread: what waits for a tool, or for a whole list, and
    /// small pieces of a run (`BackgroundWork`), which wait for nobody.
    [[nodiscard]] Queue& highPriorityQueue() { return _highPriorityQueue; }
    [[nodiscard]] Queue& backgroundQueue() { return _backgroundQueue; }
    [[nodiscard]] NotificationCenter& notificationCenter() { return _notificationCenter; }
    [[nodiscard]] Warnings& warnings() { return _warnings; }
    /// The program's stored choices; they are read from the tree at first use.
    [[nodiscard]] UserDefaults& standardUserDefaults() { return _standardUserDefaults; }

    /// Blocks the calling thread; seconds. Replaceable, so that a test of long waits takes none.
    void sleep(double seconds) const { _sleep(seconds); }
    void setSleep(std::function<void(double)> sleep) { _sleep = std::move(sleep); }

  private:
    FileManager _fileManager;
    std::optional<DeviceLock> _lock;
    DeviceFacts _facts;
    ToolTable _tools;
    Volumes _volumes;
    NotificationCenter _notificationCenter;
    Warnings _warnings;
    UserDefaults _standardUserDefaults;
    MainQueue _ownMainQueue;
    MainQueue* _mainQueue = &_ownMainQueue;
    std::function<void(double)> _sleep;
    // Last, so that their threads have ended before what they use is gone.
    Queue _highPriorityQueue;
    Queue _backgroundQueue;
};

} // namespace platform
