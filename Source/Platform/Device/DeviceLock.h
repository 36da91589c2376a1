#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/Error.h"

#include <string>

namespace platform {

/// The sole right to change a device's tree, among processes that ask for it, whoever runs them. It ends with
/// this object, and with the process however that ends. It rests on the top folder itself: nothing is written
/// into the tree, and a tree that cannot be written can be locked as well.
class DeviceLock {
  public:
    /// Takes the right or fails at once, with EWOULDBLOCK where another process has it. `rootFolder` is a
    /// descriptor of the tree's top folder.
    static Result<DeviceLock> take(int rootFolder);
    /// Whether an error says that the file system of the tree has no such locks.
    static bool meansNoLocks(const std::error_code& error);
    /// Who has the right, in words: "process 1234 of user anna, running since 2026-11-23 09:26:10", in the
    /// host's time; less where the host does not tell it all, and "another process" where it tells nothing.
    static std::string describeHolder(int rootFolder);

  private:
    explicit DeviceLock(Descriptor folder)
        : _folder(std::move(folder)) {}

    // Opened for the lock alone: a copy of another descriptor would share its lock.
    Descriptor _folder;
};

} // namespace platform
