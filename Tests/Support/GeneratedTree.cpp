#include "Tests/Support/GeneratedTree.h"

#include "Tests/Support/TemporaryFolder.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fs.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view places[] = {
    "/private/var/tmp",
    "/private/var/log",
    "/private/var/logs/deeper",
    "/private/var/MobileSoftwareUpdate",
    "/private/var/MobileAsset/Assets",
    "/private/var/spool/mdt",
    "/private/var/lib/apt/lists/partial",
    "/private/var/mobile/Documents",
    "/private/var/mobile/Documents/Mine/Papers",
    "/private/var/mobile/Library",
    "/private/var/mobile/Library/Assets",
    "/private/var/mobile/Library/Auxo/Snapshots",
    "/private/var/mobile/Library/BatteryLife/Archives",
    "/private/var/mobile/Library/Caches",
    "/private/var/mobile/Library/Caches/ImageCache",
    "/private/var/mobile/Library/Caches/Snapshots",
    "/private/var/mobile/Library/Caches/com.apple.mobilesafari/Thumbnails",
    "/private/var/mobile/Library/Caches/com.saurik.Cydia/lists/partial",
    "/private/var/mobile/Library/Keyboard/Caches",
    "/private/var/mobile/Library/Logs/CrashReporter",
    "/private/var/mobile/Library/SMS/Attachments/aa",
    "/private/var/mobile/Library/SMS/Parts",
    "/private/var/mobile/Library/Safari",
    "/private/var/mobile/Library/WebKit/LocalStorage",
    "/private/var/mobile/Media",
    "/private/var/root/Library/Caches",
    "/private/var/containers/Shared/SystemGroup/A1/Library/BatteryLife/Archives",
    "/private/var/mobile/Containers/Data/Application/plain/Documents",
    "/private/var/mobile/Containers/Data/Application/plain/Library/Caches",
    "/private/var/mobile/Containers/Data/Application/plain/tmp",
    "/private/var/mobile/Containers/Data/Application/chrome/Library/Cookies",
    "/private/var/mobile/Containers/Data/Application/chrome/Library/Application "
    "Support/Google/Chrome/Default",
    "/private/var/mobile/Containers/Data/Application/box/Library/Preferences",
    "/private/var/mobile/Containers/Data/Application/stray/tmp",
    "/private/var/mobile/Containers/Shared/AppGroup/shared/Library/Caches",
    "/usr/share/misc",
};

// Parts of names that rules look for, and some that miss by little.
constexpr std::string_view beginnings[] = {"",
                                           "log",
                                           "http_",
                                           "https_",
                                           ".flurry",
                                           ".googleanalytics",
                                           "googleanalytics",
                                           "Cache.db",
                                           "Histor",
                                           "Top Site",
                                           "com_apple_MobileAsset_SoftwareUpdate",
                                           "com_apple_MobileAsset_Softwarex",
                                           "Cache.db-",
                                           "-",
                                           "."};
constexpr std::string_view middles[] = {"", "google", ".admob.", "blued", "x", " ", "*", "'", "(", "\\"};
constexpr std::string_view endings[] = {"",      "",     ".log",     ".tmp", ".temp",
                                        ".logs", ".LOG", ".log.txt", ".x-y", ".plist"};
constexpr std::string_view wholeNames[] = {
    "sock",           "sshstate",    "History.plist", "SuspendState.plist",
    "BarDialer",      "al",          "admob",         "Current Tabs",
    "Library",        "tmp",         "Thumbnails",    "net.box.BoxNet.plist",
    "jailbreakd.pid", "LocalStorage"};

constexpr int64_t now = 1'511'000'000;
constexpr int64_t dates[] = {-2'000'000'000,         -1,           0, 1, now, now - 10 * 86400,
                             (int64_t{1} << 31) + 5, 4'200'000'000};
constexpr uid_t owners[] = {0, 0, 501, 501, 12345};

void setFlags(const std::string& path, bool immutable, bool& done) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    int flags = 0;
    done = file >= 0 && ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
    if (done) {
        flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        done = ::ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
    }
    if (file >= 0) {
        ::close(file);
    }
}

} // namespace

GeneratedTree::GeneratedTree(uint64_t seed, std::string root, std::string outside)
    : _random(seed)
    , _root(std::move(root))
    , _outside(std::move(outside)) {
    _wantsBackups = chance(15);
    makeSkeleton();
    makeMessages();
    for (size_t left = 10 + below(60); left > 0; --left) {
        makeItem();
    }
}

GeneratedTree::~GeneratedTree() {
    // Cleared through the whole tree, as a run may have moved what carries the flag.
    if (_immutable.empty()) {
        return;
    }
    bool done = false;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(_root, error), end; entry != end; entry.increment(error)) {
        if (!entry->is_symlink() && (entry->is_directory() || entry->is_regular_file())) {
            setFlags(entry->path(), false, done);
        }
    }
}

void GeneratedTree::makeSkeleton() {
    fs::create_directories(hostPath("/private/var"));
    fs::create_symlink("private/var", hostPath("/var"));
    for (const auto place : places) {
        // A rule's folder may be missing, and may be a link to another one.
        if (chance(6)) {
            continue;
        }
        const fs::path path = hostPath(place);
        std::error_code error;
        fs::create_directories(path.parent_path(), error);
        if (chance(3) && !fs::exists(path)) {
            fs::create_directories(hostPath("/private/elsewhere"));
            // Relative, so that what is put into it stays in the tree.
            const auto target =
                fs::path("/private/elsewhere").lexically_relative(fs::path(place).parent_path());
            fs::create_directory_symlink(target, path, error);
            _folders.emplace_back("/private/elsewhere");
        } else {
            fs::create_directories(path, error);
            _folders.emplace_back(place);
        }
    }
}

// Half of the trees have a database, which knows one folder that is there and one that is not.
void GeneratedTree::makeMessages() {
    if (chance(50)) {
        return;
    }
    std::error_code error;
    fs::create_directories(hostPath("/private/var/mobile/Library/SMS/Attachments/known"), error);
    _folders.emplace_back("/private/var/mobile/Library/SMS/Attachments/known");
    sqlite3* database = nullptr;
    sqlite3_open(hostPath("/private/var/mobile/Library/SMS/sms.db").c_str(), &database);
    sqlite3_exec(database,
                 "CREATE TABLE attachment (a, b, c, d, filename); INSERT INTO attachment VALUES"
                 "(1, 1, 1, 1, '~/Library/SMS/Attachments/known/a.jpg'), (1, 1, 1, 1, NULL),"
                 "(1, 1, 1, 1, '/var/mobile/Library/SMS/Attachments/gone/b.jpg');",
                 nullptr, nullptr, nullptr);
    sqlite3_close(database);
}

std::string GeneratedTree::oddName() {
    std::string name;
    for (size_t left = 1 + below(chance(10) ? 250 : 20); left > 0; --left) {
        const char byte = static_cast<char>(1 + below(255));
        // Line breaks at an end, or two in a row, would read as the log's own.
        const bool ambiguous = byte == '\n' && (name.empty() || name.back() == '\n' || left == 1);
        name += byte == '/' || ambiguous ? '_' : byte;
    }
    return name == "." || name == ".." ? "dots" : name;
}

std::string GeneratedTree::newName() {
    if (_wantsBackups && chance(10)) {
        _hasBackups = true;
        return fmt::format("{}.OzvarineBackup", anyOf(wholeNames));
    }
    if (chance(15)) {
        return oddName();
    }
    if (chance(20)) {
        return std::string(anyOf(wholeNames));
    }
    const auto name = fmt::format("{}{}{}{}", anyOf(beginnings), anyOf(middles), chance(70) ? below(30) : 0,
                                  anyOf(endings));
    return name.size() > 200 ? "long" : name;
}

void GeneratedTree::makeItem() {
    const std::string path = anyOf(_folders) + "/" + newName();
    const std::string host = hostPath(path);
    struct stat status = {};
    if (::lstat(host.c_str(), &status) == 0 || ::lstat(fs::path(host).parent_path().c_str(), &status) < 0) {
        return;
    }
    const size_t kind = below(100);
    if (kind < 50) {
        makeFile(path);
    } else if (kind < 72) {
        if (::mkdir(host.c_str(), 0755) == 0 && host.size() < 2000) {
            _folders.push_back(path);
        }
    } else if (kind < 84) {
        makeLink(path);
    } else if (kind < 89 && !_files.empty()) {
        ::link(hostPath(anyOf(_files)).c_str(), host.c_str());
        return;
    } else if (kind < 92) {
        ::mkfifo(host.c_str(), 0644);
    } else if (kind < 94) {
        makeSocket(path);
    } else if (kind < 96) {
        makeSparseFile(path);
    } else if (kind < 98) {
        makeDeepFolder(path);
    } else {
        makeWideFolder(path);
    }
    decorate(path, kind >= 72 && kind < 84);
}

void GeneratedTree::makeFile(const std::string& path) {
    std::ofstream file(hostPath(path), std::ios::binary);
    file << std::string(below(300), static_cast<char>(below(256))) << below(1'000'000);
    if (file.good()) {
        _files.push_back(path);
    }
}

void GeneratedTree::makeSparseFile(const std::string& path) {
    const int file = ::open(hostPath(path).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file >= 0) {
        const auto end = static_cast<off_t>((uint64_t{4} << 30U) + below(5'000'000'000));
        if (::pwrite(file, "end", 3, end) != 3) {
            ::unlink(hostPath(path).c_str());
        }
        ::close(file);
    }
}

void GeneratedTree::makeLink(const std::string& path) {
    const std::string name = fs::path(path).filename();
    const std::string targets[] = {
        anyOf(_folders),
        _files.empty() ? "nothing" : anyOf(_files),
        _outside,
        _outside + "/file",
        "../../../../../../../../../.." + _outside,
        name,
        ".",
        "..",
        "/",
        "/var/mobile/no such thing",
        "/proc/self/root/" + _outside,
    };
    std::ignore = ::symlink(anyOf(targets).c_str(), hostPath(path).c_str());
}

// A socket's path must be short, so it is made beside the tree.
void GeneratedTree::makeSocket(const std::string& path) {
    const std::string made = _outside + ".s";
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, made.c_str(), sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::rename(made.c_str(), hostPath(path).c_str()) < 0) {
        ::unlink(made.c_str());
    }
    ::close(socket);
}

void GeneratedTree::makeDeepFolder(const std::string& path) {
    if (::mkdir(hostPath(path).c_str(), 0755) == 0) {
        const int folder = ::open(hostPath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        makeDeepFolders(folder, 20 + below(150));
        ::close(folder);
    }
}

void GeneratedTree::makeWideFolder(const std::string& path) {
    if (::mkdir(hostPath(path).c_str(), 0755) == 0) {
        for (size_t left = 20 + below(200); left > 0; --left) {
            std::ofstream(hostPath(fmt::format("{}/{}{}", path, left, anyOf(endings)))) << left;
        }
    }
}

void GeneratedTree::decorate(const std::string& path, bool isLink) {
    const std::string host = hostPath(path);
    const uid_t owner = anyOf(owners);
    std::ignore = ::lchown(host.c_str(), owner, owner);
    const timespec times[] = {{.tv_sec = anyOf(dates), .tv_nsec = static_cast<long>(below(1'000'000'000))},
                              {.tv_sec = anyOf(dates), .tv_nsec = static_cast<long>(below(1'000'000'000))}};
    if (!isLink) {
        constexpr mode_t modes[] = {0644, 0755, 0600, 0, 0444, 04755};
        ::chmod(host.c_str(), anyOf(modes));
    }
    ::utimensat(AT_FDCWD, host.c_str(), times, AT_SYMLINK_NOFOLLOW);
    if (!isLink && chance(2)) {
        makeImmutable(path);
    }
}

void GeneratedTree::makeImmutable(const std::string& path) {
    struct stat status = {};
    bool done = false;
    if (::lstat(hostPath(path).c_str(), &status) == 0 &&
        (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))) {
        setFlags(hostPath(path), true, done);
    }
    if (done) {
        _immutable.insert(path.substr(1));
    }
}

bool GeneratedTree::isImmutable(std::string_view path) const {
    const auto isBelow = [](std::string_view inner, std::string_view outer) {
        return inner == outer || (inner.starts_with(outer) && inner[outer.size()] == '/');
    };
    const fs::path asked = fs::path(_root) / path;
    std::error_code error;
    for (const auto& item : _immutable) {
        if (isBelow(path, item) || isBelow(item, path)) {
            return true;
        }
        // Other names of an immutable file are immutable, too, and a folder around it may have been named by
        // way of a link.
        for (fs::path around = fs::path(_root) / item; around != _root; around = around.parent_path()) {
            if (!fs::is_symlink(asked, error) && fs::equivalent(around, asked, error)) {
                return true;
            }
        }
    }
    return false;
}

platform::Dictionary GeneratedTree::settings() {
    platform::Dictionary settings{{"ATTACHMENTS", static_cast<int64_t>(below(3))}};
    for (const auto* key : {"SAFARI", "APPLICATIONS", "OTAUPDATES", "BATTERYDATA", "CYDIA", "CYDIASOURCES",
                            "LOGFILES", "CACHEFILES", "TEMPFILES", "FILETYPECLEANUP", "CUSTOMFILES"}) {
        settings[key] = chance(70);
    }
    return settings;
}

platform::Array GeneratedTree::customFiles() {
    platform::Array records;
    for (size_t left = below(5); left > 0; --left) {
        std::vector<std::string> paths = {"  ", "/no/such", "/private/var/mobile/Documents/Mine",
                                          "/var/mobile/Media/"};
        for (const auto* list : {&_folders, &_files}) {
            for (const auto& path : *list) {
                if (path.contains("/Documents/") || path.contains("/Media/")) {
                    paths.push_back(path);
                }
            }
        }
        platform::Dictionary record{{"filePath", anyOf(paths)},
                                    {"fileType", chance(70) ? "NSFileTypeDirectory" : "NSFileTypeRegular"},
                                    {"customFolderSetting", static_cast<int64_t>(below(3))},
                                    {"recursive", chance(50)}};
        for (const auto* key : {"startPattern", "middlePattern", "endPattern"}) {
            if (chance(40)) {
                record[key] = std::string(anyOf(middles));
            }
        }
        records.emplace_back(std::move(record));
    }
    return records;
}

std::vector<std::string> GeneratedTree::fileTypes() {
    std::vector<std::string> types;
    for (const auto* type : {"log", "tmp", "temp", "logs", "x-y"}) {
        if (chance(70)) {
            types.emplace_back(type);
        }
    }
    return types;
}

} // namespace tests
