#include "Model/Core/ReadOnlyDatabase.h"

#include <climits>
#include <cstring>
#include <new>
#include <optional>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

// A file system of SQLite's over the file manager. A copy of the database would do as well, but message
// databases grow to gigabytes, and this reads only the pages that a query needs.

namespace {

using platform::FileHandle;
using platform::FileManager;

struct OpenFile : sqlite3_file {
    // Absent for a write-ahead log that does not exist: it reads as an empty one.
    std::optional<FileHandle> handle;
};

const FileHandle* handleOf(sqlite3_file* file) {
    const auto& handle = static_cast<OpenFile*>(file)->handle;
    return handle ? &*handle : nullptr;
}

int closeFile(sqlite3_file* file) {
    static_cast<OpenFile*>(file)->~OpenFile();
    return SQLITE_OK;
}

int readFile(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
    const auto* handle = handleOf(file);
    auto* bytes = static_cast<char*>(buffer);
    size_t done = 0;
    const auto wanted = static_cast<size_t>(amount);
    while (handle != nullptr && done < wanted) {
        const ssize_t count = ::pread(handle->descriptor(), bytes + done, wanted - done,
                                      offset + static_cast<sqlite3_int64>(done));
        if (count < 0 && errno != EINTR) {
            return SQLITE_IOERR_READ;
        }
        if (count == 0) {
            break;
        }
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    // SQLite counts on zeros behind a file's end.
    std::memset(bytes + done, 0, wanted - done);
    return done == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
}

int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    const auto* handle = handleOf(file);
    struct stat status = {};
    if (handle != nullptr && ::fstat(handle->descriptor(), &status) < 0) {
        return SQLITE_IOERR_FSTAT;
    }
    *size = status.st_size;
    return SQLITE_OK;
}

constexpr sqlite3_io_methods methods{
    // The first version of the interface has no shared memory: SQLite then keeps a log's index to itself.
    .iVersion = 1,
    .xClose = closeFile,
    .xRead = readFile,
    .xWrite = [](sqlite3_file*, const void*, int, sqlite3_int64) { return SQLITE_READONLY; },
    .xTruncate = [](sqlite3_file*, sqlite3_int64) { return SQLITE_READONLY; },
    .xSync = [](sqlite3_file*, int) { return SQLITE_OK; },
    .xFileSize = fileSize,
    .xLock = [](sqlite3_file*, int) { return SQLITE_OK; },
    .xUnlock = [](sqlite3_file*, int) { return SQLITE_OK; },
    .xCheckReservedLock =
        [](sqlite3_file*, int* reserved) {
            *reserved = 0;
            return SQLITE_OK;
        },
    .xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; },
    .xSectorSize = [](sqlite3_file*) { return 0; },
    .xDeviceCharacteristics = [](sqlite3_file*) { return 0; },
};

FileManager& fileManagerOf(sqlite3_vfs* fileSystem) {
    return *static_cast<FileManager*>(fileSystem->pAppData);
}

int openFile(sqlite3_vfs* fileSystem, const char* path, sqlite3_file* place, int flags, int* openedFlags) {
    place->pMethods = nullptr;
    if (path == nullptr) {
        return SQLITE_CANTOPEN;
    }
    auto handle = fileManagerOf(fileSystem).openForReading(path);
    const bool isMissingLog = (flags & SQLITE_OPEN_WAL) != 0 && !handle && handle.error().value() == ENOENT;
    if (!handle && !isMissingLog) {
        return SQLITE_CANTOPEN;
    }
    auto* file = new (place) OpenFile;
    file->pMethods = &methods;
    if (handle) {
        file->handle = std::move(*handle);
    }
    if (openedFlags != nullptr) {
        *openedFlags = SQLITE_OPEN_READONLY;
    }
    return SQLITE_OK;
}

int accessFile(sqlite3_vfs* fileSystem, const char* path, int /*flags*/, int* isThere) {
    const auto attributes = fileManagerOf(fileSystem).attributesOfTargetAtPath(path);
    *isThere = attributes ? 1 : 0;
    // A journal that nobody can look at may hold what the database lacks.
    return attributes || platform::meansAbsence(attributes.error()) ? SQLITE_OK : SQLITE_IOERR_ACCESS;
}

int copyFullPath(sqlite3_vfs* /*fileSystem*/, const char* path, int room, char* fullPath) {
    sqlite3_snprintf(room, fullPath, "%s", path);
    return SQLITE_OK;
}

sqlite3_vfs* hostFileSystem() {
    return sqlite3_vfs_find(nullptr);
}

sqlite3_vfs makeFileSystem(const char* name, FileManager& fileManager) {
    return {
        .iVersion = 1,
        .szOsFile = sizeof(OpenFile),
        .mxPathname = PATH_MAX,
        .zName = name,
        .pAppData = &fileManager,
        .xOpen = openFile,
        .xDelete = [](sqlite3_vfs*, const char*, int) { return SQLITE_READONLY; },
        .xAccess = accessFile,
        .xFullPathname = copyFullPath,
        .xRandomness =
            [](sqlite3_vfs*, int size, char* bytes) {
                return hostFileSystem()->xRandomness(hostFileSystem(), size, bytes);
            },
        .xSleep = [](sqlite3_vfs*,
                     int microseconds) { return hostFileSystem()->xSleep(hostFileSystem(), microseconds); },
        .xCurrentTime = [](sqlite3_vfs*,
                           double* now) { return hostFileSystem()->xCurrentTime(hostFileSystem(), now); },
    };
}

} // namespace

ReadOnlyDatabase::ReadOnlyDatabase(FileManager fileManager, const std::string& path)
    : _fileManager(std::move(fileManager))
    , _fileSystemName(fmt::format("device tree {}", fmt::ptr(this)))
    , _fileSystem(makeFileSystem(_fileSystemName.c_str(), _fileManager)) {
    if (hostFileSystem() == nullptr || sqlite3_vfs_register(&_fileSystem, 0) != SQLITE_OK) {
        return;
    }
    if (!open(path)) {
        close();
    }
}

bool ReadOnlyDatabase::open(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &_handle, SQLITE_OPEN_READONLY | SQLITE_OPEN_PRIVATECACHE,
                        _fileSystemName.c_str()) != SQLITE_OK) {
        return false;
    }
    // The schema belongs to whoever wrote the file: no code of its own is run.
    for (const int option :
         {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_ENABLE_TRIGGER}) {
        sqlite3_db_config(_handle, option, 0, nullptr);
    }
    sqlite3_db_config(_handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // A sole owner of a write-ahead log needs no shared memory.
    return sqlite3_exec(_handle, "pragma locking_mode = exclusive", nullptr, nullptr, nullptr) == SQLITE_OK;
}

void ReadOnlyDatabase::close() {
    sqlite3_close(_handle);
    _handle = nullptr;
}

ReadOnlyDatabase::~ReadOnlyDatabase() {
    close();
    sqlite3_vfs_unregister(&_fileSystem);
}
