#pragma once

#include "Platform/Files/FileManager.h"

#include <memory>
#include <string>

#include <sqlite3.h>

/// A database of the device's tree, opened so that reading changes nothing: SQLite gets at the database and
/// its companions through the file manager alone, for reading alone, and takes no locks. What a write-ahead
/// log holds is seen. A database with a transaction to be rolled back cannot be read, since that would be
/// writing.
class ReadOnlyDatabase {
  public:
    /// The path must stay valid as a device path while the database is open.
    ReadOnlyDatabase(platform::FileManager fileManager, const std::string& path);
    ReadOnlyDatabase(const ReadOnlyDatabase&) = delete;
    ReadOnlyDatabase& operator=(const ReadOnlyDatabase&) = delete;
    ~ReadOnlyDatabase();

    /// Null if the database could not be opened. Owned by this object.
    [[nodiscard]] sqlite3* handle() const { return _handle; }

  private:
    [[nodiscard]] bool open(const std::string& path);
    void close();

    platform::FileManager _fileManager;
    std::string _fileSystemName;
    sqlite3_vfs _fileSystem{};
    sqlite3* _handle = nullptr;
};
