#include "Tests/Model/Core/GeneratedTree.h"

#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fs.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

Texts listOf(const std::string& text) {
    Texts list;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, ',');) {
        list.push_back(word);
    }
    return list;
}

const std::string mobile = "/private/var/mobile/";
const Texts places = [] {
    Texts paths = listOf("tmp,log,logs/deeper,MobileSoftwareUpdate,MobileAsset/Assets,spool/mdt,"
                         "lib/apt/lists/partial");
    for (const auto& name : listOf(
             "Documents,Documents/Mine/Papers,Library,Library/Assets,Library/Auxo/Snapshots,"
             "Library/BatteryLife/Archives,Library/Caches,Library/Caches/ImageCache,Library/Caches/Snapshots,"
             "Library/Caches/com.apple.mobilesafari/Thumbnails,Library/Caches/com.saurik.Cydia/lists/partial,"
             "Library/Keyboard/Caches,Library/Logs/CrashReporter,Library/SMS/Attachments/aa,Library/SMS/"
             "Parts,"
             "Library/Safari,Library/WebKit/LocalStorage,Media,../root/Library/Caches,"
             "../containers/Shared/SystemGroup/A1/Library/BatteryLife/Archives")) {
        paths.push_back("mobile/" + name);
    }
    for (const auto& name :
         listOf("plain/Documents,plain/Library/Caches,plain/tmp,chrome/Library/Cookies,"
                "chrome/Library/Application Support/Google/Chrome/Default,box/Library/Preferences,stray/tmp,"
                "../../Shared/AppGroup/shared/Library/Caches,../../../../../../usr/share/misc")) {
        paths.push_back("mobile/Containers/Data/Application/" + name);
    }
    for (auto& path : paths) {
        path = fs::path("/private/var/" + path).lexically_normal();
    }
    return paths;
}();

// Parts of names that rules look for, and some that miss by little.
const Texts beginnings =
    listOf(",log,http_,https_,.flurry,.googleanalytics,googleanalytics,Cache.db,Histor,Top Site,"
           "com_apple_MobileAsset_SoftwareUpdate,com_apple_MobileAsset_Softwarex,Cache.db-,-,.");
const Texts middles = listOf(",google,.admob.,blued,x, ,*,',(,\\");
const Texts endings = listOf(",,.log,.tmp,.temp,.logs,.LOG,.log.txt,.x-y,.plist");
const Texts wholeNames =
    listOf("sock,sshstate,History.plist,SuspendState.plist,BarDialer,al,admob,Current Tabs,Library,tmp,"
           "Thumbnails,net.box.BoxNet.plist,jailbreakd.pid,LocalStorage");
constexpr int64_t now = 1'511'000'000;
constexpr int64_t dates[] = {-2'000'000'000,         -1,           0, 1, now, now - 10 * 86400,
                             (int64_t{1} << 31) + 5, 4'200'000'000};
constexpr uid_t owners[] = {0, 0, 501, 501, 12345};
constexpr mode_t modes[] = {0644, 0755, 0600, 0, 0444, 04755};

bool setImmutable(const std::string& path, bool immutable) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    int flags = 0;
    bool done = ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    done = done && ::ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
    ::close(file);
    return done;
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

} // namespace

GeneratedTree::GeneratedTree(uint64_t seed, std::string root, std::string outside)
    : _random(seed)
    , _root(std::move(root))
    , _outside(std::move(outside)) {
    _wantsBackups = chance(15);
    makeFolders();
    makeMessages();
    for (size_t left = 10 + below(60); left > 0; --left) {
        makeItem();
    }
}

GeneratedTree::~GeneratedTree() {
    // Cleared through the whole tree, as a run may have moved what carries the flag.
    std::error_code error;
    for (fs::recursive_directory_iterator item(_root, error), end; item != end; item.increment(error)) {
        if (!_immutable.empty() && !item->is_symlink() && (item->is_directory() || item->is_regular_file())) {
            setImmutable(item->path(), false);
        }
    }
}

void GeneratedTree::makeFolders() {
    fs::create_directories(_root + "/private/var");
    fs::create_symlink("private/var", _root + "/var");
    for (const fs::path place : places) {
        // A rule's folder may be missing, and may be a link to another one.
        if (chance(6)) {
            continue;
        }
        const fs::path path = _root + place.string();
        std::error_code error;
        fs::create_directories(path.parent_path(), error);
        const bool isLink = chance(3) && !fs::exists(path);
        fs::create_directories(isLink ? fs::path(_root + "/private/elsewhere") : path, error);
        if (isLink) {
            // Relative, so that what is put into it stays in the tree.
            fs::create_directory_symlink(
                fs::path("/private/elsewhere").lexically_relative(place.parent_path()), path, error);
        }
        _folders.push_back(isLink ? "/private/elsewhere" : place.string());
    }
}

// Half of the trees have a database, which knows one folder that is there and one that is not.
void GeneratedTree::makeMessages() {
    if (chance(50)) {
        return;
    }
    _folders.push_back(mobile + "Library/SMS/Attachments/known");
    std::error_code error;
    fs::create_directories(_root + _folders.back(), error);
    sqlite3* database = nullptr;
    sqlite3_open((_root + mobile + "Library/SMS/sms.db").c_str(), &database);
    sqlite3_exec(database,
                 "CREATE TABLE attachment (a, b, c, d, filename); INSERT INTO attachment VALUES"
                 "(1, 1, 1, 1, '~/Library/SMS/Attachments/known/a.jpg'), (1, 1, 1, 1, NULL),"
                 "(1, 1, 1, 1, '/var/mobile/Library/SMS/Attachments/gone/b.jpg');",
                 nullptr, nullptr, nullptr);
    sqlite3_close(database);
}

std::string GeneratedTree::newName() {
    if (_wantsBackups && chance(10)) {
        _hasBackups = true;
        return anyOf(wholeNames) + ".OzvarineBackup";
    }
    if (chance(15)) {
        std::string odd;
        for (size_t left = 1 + below(chance(10) ? 250 : 20); left > 0; --left) {
            const char byte = static_cast<char>(1 + below(255));
            // Line breaks at an end, or two in a row, would read as the log's own.
            const bool ambiguous = byte == '\n' && (odd.empty() || odd.back() == '\n' || left == 1);
            odd += byte == '/' || ambiguous ? '_' : byte;
        }
        return odd == "." || odd == ".." ? "dots" : odd;
    }
    if (chance(20)) {
        return anyOf(wholeNames);
    }
    const std::string end = std::to_string(chance(70) ? below(30) : 0) + anyOf(endings);
    return anyOf(beginnings) + anyOf(middles) + end;
}

void GeneratedTree::makeItem() {
    const std::string path = anyOf(_folders) + "/" + newName();
    const std::string host = _root + path;
    if (isThere(host) || !isThere(fs::path(host).parent_path())) {
        return;
    }
    const size_t kind = below(100);
    if (kind >= 84 && kind < 89 && !_files.empty()) {
        ::link((_root + anyOf(_files)).c_str(), host.c_str());
    } else {
        makeItem(kind, path, host);
        decorate(path, host, kind >= 72 && kind < 84);
    }
}

void GeneratedTree::makeItem(size_t kind, const std::string& path, const std::string& host) {
    if (kind < 50) {
        std::ofstream(host) << std::string(below(300), static_cast<char>(below(256))) << below(1'000'000);
        _files.push_back(path);
    } else if (kind < 72) {
        if (::mkdir(host.c_str(), 0755) == 0 && host.size() < 2000) {
            _folders.push_back(path);
        }
    } else if (kind < 84) {
        const Texts targets = {anyOf(_folders),
                               _files.empty() ? "nothing" : anyOf(_files),
                               _outside,
                               _outside + "/file",
                               "../../../../../../../../../.." + _outside,
                               ".",
                               "..",
                               "/",
                               fs::path(path).filename(),
                               "/var/mobile/no such thing",
                               "/proc/self/root/" + _outside};
        std::ignore = ::symlink(anyOf(targets).c_str(), host.c_str());
    } else if (kind < 92) {
        ::mkfifo(host.c_str(), 0644);
    } else if (kind < 94) {
        makeSocket(host);
    } else if (kind < 96) {
        std::ofstream(host).seekp(static_cast<off_t>((uint64_t{4} << 30U) + below(5'000'000'000))) << "end";
    } else if (::mkdir(host.c_str(), 0755) == 0 && kind < 98) {
        const int folder = ::open(host.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        tests::makeDeepFolders(folder, 20 + below(150));
        ::close(folder);
    } else if (kind >= 98) {
        for (size_t left = 20 + below(200); left > 0; --left) {
            std::ofstream(fmt::format("{}/{}{}", host, left, anyOf(endings))) << left;
        }
    }
}

// A socket's path must be short, so it is made beside the tree.
void GeneratedTree::makeSocket(const std::string& host) const {
    const std::string made = _outside + ".s";
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, made.c_str(), sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::ignore = ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (::rename(made.c_str(), host.c_str()) != 0) {
        ::unlink(made.c_str());
    }
    ::close(socket);
}

void GeneratedTree::decorate(const std::string& path, const std::string& host, bool isLink) {
    const uid_t owner = anyOf(owners);
    std::ignore = ::lchown(host.c_str(), owner, owner);
    const timespec times[] = {{.tv_sec = anyOf(dates), .tv_nsec = static_cast<long>(below(1'000'000'000))},
                              {.tv_sec = anyOf(dates), .tv_nsec = static_cast<long>(below(1'000'000'000))}};
    if (!isLink) {
        ::chmod(host.c_str(), anyOf(modes));
    }
    ::utimensat(AT_FDCWD, host.c_str(), times, AT_SYMLINK_NOFOLLOW);
    std::error_code error;
    const auto type = fs::symlink_status(host, error).type();
    if (!isLink && chance(2) && (type == fs::file_type::regular || type == fs::file_type::directory) &&
        setImmutable(host, true)) {
        _immutable.insert(path.substr(1));
    }
}

bool GeneratedTree::isImmutable(const std::string& path) const {
    const fs::path asked = _root + "/" + path;
    std::error_code error;
    return std::ranges::any_of(_immutable, [&](const std::string& item) {
        bool isInTheWay = (path + "/").starts_with(item + "/");
        // Other names of an immutable file are immutable, too, and a folder around it may have been named by
        // way of a link.
        for (fs::path around = _root + "/" + item; around != _root; around = around.parent_path()) {
            isInTheWay |= around == asked;
            isInTheWay |= !fs::is_symlink(asked, error) && fs::equivalent(around, asked, error);
        }
        return isInTheWay;
    });
}

platform::Dictionary GeneratedTree::settings() {
    platform::Dictionary settings{{"ATTACHMENTS", static_cast<int64_t>(below(3))}};
    for (const auto& key : listOf("SAFARI,APPLICATIONS,OTAUPDATES,BATTERYDATA,CYDIA,CYDIASOURCES,LOGFILES,"
                                  "CACHEFILES,TEMPFILES,FILETYPECLEANUP,CUSTOMFILES")) {
        settings[key] = chance(70);
    }
    return settings;
}

platform::Array GeneratedTree::customFiles() {
    Texts paths = {"  ", "/no/such", mobile + "Documents/Mine", "/var/mobile/Media/"};
    for (const auto* list : {&_folders, &_files}) {
        std::ranges::copy_if(*list, std::back_inserter(paths), [](const auto& path) {
            return path.contains("/Documents/") || path.contains("/Media/");
        });
    }
    platform::Array records;
    for (size_t left = below(5); left > 0; --left) {
        platform::Dictionary record{{"filePath", anyOf(paths)},
                                    {"fileType", chance(70) ? "NSFileTypeDirectory" : "NSFileTypeRegular"},
                                    {"customFolderSetting", static_cast<int64_t>(below(3))},
                                    {"recursive", chance(50)}};
        for (const auto* key : {"startPattern", "middlePattern", "endPattern"}) {
            if (chance(40)) {
                record[key] = anyOf(middles);
            }
        }
        records.emplace_back(std::move(record));
    }
    return records;
}

std::vector<std::string> GeneratedTree::fileTypes() {
    auto types = listOf("log,tmp,temp,logs,x-y");
    std::erase_if(types, [this](const auto& /*type*/) { return !chance(70); });
    return types;
}
