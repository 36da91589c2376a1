#pragma once

#include "Platform/Device/DeviceFacts.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <linux/fs.h>
#include <sys/ioctl.h>

/// Trees that no test thought of, each of which follows from a number.
namespace generated {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

inline Texts listOf(const std::string& text) {
    Texts list;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, ',');) {
        list.push_back(word);
    }
    return list;
}

inline const std::string mobile = "/private/var/mobile/";
inline const Texts places = [] {
    Texts paths = listOf("tmp,log,logs/deeper,MobileSoftwareUpdate,MobileAsset/Assets,spool/mdt,"
                         "lib/apt/lists/partial");
    for (const auto& name : listOf(
             "Documents,Documents/Mine/Papers,Library,Library/Assets,Library/Auxo/Snapshots,"
             "Library/BatteryLife/Archives,Library/Caches,Library/Caches/ImageCache,Library/Caches/Snapshots,"
             "Library/Caches/com.apple.mobilesafari/Thumbnails,Library/Caches/com.saurik.Cydia/lists/partial,"
             "Library/Keyboard/Caches,Library/Logs/CrashReporter,Library/SMS/Attachments/aa,"
             "Library/SMS/Parts,Library/Safari,Library/WebKit/LocalStorage,Media,../root/Library/Caches,"
             "../containers/Shared/SystemGroup/A1/Library/BatteryLife/Archives")) {
        paths.push_back("mobile/" + name);
    }
    for (const auto& name : listOf(
             "plain/Documents,plain/Library/Caches,plain/tmp,chrome/Library/Cookies,"
             "chrome/Library/Application Support/Google/Chrome/Default,box/Library/Preferences,stray/tmp,"
             "../../../Containers/Shared/AppGroup/shared/Library/Caches,../../../../../../usr/share/misc")) {
        paths.push_back("mobile/Containers/Data/Application/" + name);
    }
    for (auto& path : paths) {
        path = fs::path("/private/var/" + path).lexically_normal();
    }
    return paths;
}();

// Parts of names that rules look for, and some that miss by little.
inline const Texts beginnings =
    listOf(",log,http_,https_,.flurry,.googleanalytics,googleanalytics,Cache.db,Histor,Top Site,"
           "com_apple_MobileAsset_SoftwareUpdate,com_apple_MobileAsset_Softwarex,Cache.db-,-,.");
inline const Texts middles = listOf(",google,.admob.,blued,x, ,*,',(,\\");
inline const Texts endings = listOf(",,.log,.tmp,.temp,.logs,.LOG,.log.txt,.x-y,.plist");
inline const Texts wholeNames =
    listOf("sock,sshstate,History.plist,SuspendState.plist,BarDialer,al,admob,Current Tabs,Library,tmp,"
           "Thumbnails,net.box.BoxNet.plist,jailbreakd.pid,LocalStorage");
inline constexpr int64_t now = 1'511'000'000;
inline constexpr int64_t dates[] = {-2'000'000'000,         -1,           0, 1, now, now - 10 * 86400,
                                    (int64_t{1} << 31) + 5, 4'200'000'000};
inline constexpr uid_t owners[] = {0, 0, 501, 501, 12345};
inline constexpr mode_t modes[] = {0644, 0755, 0600, 0, 0444, 04755};

/// A hostile device tree that follows from its seed: deep, wide, with odd names, kinds, owners, dates and
/// permissions, and with links that lead everywhere, out of the tree as well. It lies where the steps of a
/// cleanup look, and beside that. It comes with settings for a run.
class GeneratedTree {
    size_t below(size_t end) { return _random() % end; }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class List>
    const auto& anyOf(const List& list) {
        return list[below(std::size(list))];
    }

  public:
    /// Fills the folder of the host that is the device's "/". Links may lead to the folder `outside`.
    GeneratedTree(uint64_t seed, std::string root, std::string outside)
        : _random(seed)
        , _root(std::move(root))
        , _outside(std::move(outside))
        , _wantsBackups(chance(15)) {
        makeFolders();
        for (size_t left = 10 + below(60); left > 0; --left) {
            makeItem();
        }
    }
    GeneratedTree(const GeneratedTree&) = delete;
    GeneratedTree& operator=(const GeneratedTree&) = delete;
    // Flags are cleared through the whole tree, as a run may have moved what carries one.
    ~GeneratedTree() {
        std::error_code error;
        for (fs::recursive_directory_iterator item(_root, error), end; item != end; item.increment(error)) {
            if (!_immutable.empty() && isPlain(item->path())) {
                setImmutable(item->path(), false);
            }
        }
    }

    /// Step by step, on or off.
    platform::Dictionary settings() {
        platform::Dictionary settings{{"ATTACHMENTS", static_cast<int64_t>(below(3))}};
        for (const auto& key :
             listOf("SAFARI,APPLICATIONS,OTAUPDATES,BATTERYDATA,CYDIA,CYDIASOURCES,LOGFILES,"
                    "CACHEFILES,TEMPFILES,FILETYPECLEANUP,CUSTOMFILES")) {
            settings[key] = chance(70);
        }
        return settings;
    }
    platform::Array customFiles() {
        Texts paths = {"  ", "/no/such", mobile + "Documents/Mine", "/var/mobile/Media/"};
        for (const auto* list : {&_folders, &_files}) {
            std::ranges::copy_if(*list, std::back_inserter(paths), [](const auto& path) {
                return path.contains("/Documents/") || path.contains("/Media/");
            });
        }
        platform::Array records(below(5));
        for (auto& record : records) {
            platform::Dictionary values{
                {"filePath", anyOf(paths)},
                {"fileType", chance(70) ? "NSFileTypeDirectory" : "NSFileTypeRegular"},
                {"customFolderSetting", static_cast<int64_t>(below(3))},
                {"recursive", chance(50)}};
            for (const auto* key : {"startPattern", "middlePattern", "endPattern"}) {
                if (chance(40)) {
                    values[key] = anyOf(middles);
                }
            }
            record = std::move(values);
        }
        return records;
    }
    Texts fileTypes() {
        auto types = listOf("log,tmp,temp,logs,x-y");
        std::erase_if(types, [this](const auto& /*type*/) { return !chance(70); });
        return types;
    }
    /// Whether there are names that look like a test run's backups.
    [[nodiscard]] bool hasBackups() const { return _hasBackups; }
    /// Whether a path below the root is in the way of its own removal: immutable, or around or below what is.
    [[nodiscard]] bool isImmutable(const std::string& path) const {
        const fs::path asked = _root + "/" + path;
        std::error_code error;
        return std::ranges::any_of(_immutable, [&](const std::string& item) {
            bool isInTheWay = (path + "/").starts_with(item + "/");
            // Other names of an immutable file are immutable, too, and a folder around it may have been named
            // by way of a link.
            for (fs::path around = _root + "/" + item; around != _root; around = around.parent_path()) {
                isInTheWay |= around == asked ||
                              (!fs::is_symlink(asked, error) && fs::equivalent(around, asked, error));
            }
            return isInTheWay;
        });
    }

  private:
    static bool isPlain(const fs::path& path) {
        std::error_code error;
        const auto type = fs::symlink_status(path, error).type();
        return type == fs::file_type::regular || type == fs::file_type::directory;
    }
    static bool setImmutable(const std::string& path, bool immutable) {
        const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        int flags = 0;
        bool done = ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
        flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        done = done && ::ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
        ::close(file);
        return done;
    }
    // A rule's folder may be missing, and may be a link to another one. Half of the trees have a message
    // database, which knows one folder that is there and one that is not.
    void makeFolders() {
        fs::create_directories(_root + "/private/var");
        fs::create_symlink("private/var", _root + "/var");
        const std::string elsewhere = "/private/elsewhere";
        for (const fs::path place : places) {
            const fs::path path = _root + place.string();
            std::error_code error;
            const size_t luck = below(100);
            if (luck > 5) {
                fs::create_directories(path.parent_path(), error);
                const bool isLink = luck > 96 && !fs::exists(path);
                fs::create_directories(isLink ? fs::path(_root + elsewhere) : path, error);
                _folders.push_back(isLink ? elsewhere : place.string());
                if (isLink) {
                    // Relative, so that what is put into it stays in the tree.
                    fs::create_directory_symlink(fs::path(elsewhere).lexically_relative(place.parent_path()),
                                                 path);
                }
            }
        }
        if (chance(50)) {
            _folders.push_back(mobile + "Library/SMS/Attachments/known");
            tests::shell(
                "mkdir -p '" + _root + _folders.back() + "'; sqlite3 '" + _root + mobile +
                "Library/SMS/sms.db' \"CREATE TABLE attachment (a, b, c, d, filename); INSERT INTO attachment"
                "(filename) VALUES ('~/Library/SMS/Attachments/known/a.jpg'), (NULL),"
                "('/var/mobile/Library/SMS/Attachments/gone/b.jpg')\"");
        }
    }

    std::string newName() {
        if (_wantsBackups && chance(10)) {
            _hasBackups = true;
            return anyOf(wholeNames) + ".OzvarineBackup";
        }
        const size_t kind = below(100);
        if (kind < 15) {
            std::string odd;
            for (size_t left = 1 + below(chance(10) ? 250 : 20); left > 0; --left) {
                const char byte = static_cast<char>(1 + below(255));
                // Line breaks at an end, or two in a row, would read as the log's own.
                const bool ambiguous = byte == '\n' && (odd.empty() || odd.back() == '\n' || left == 1);
                odd += byte == '/' || ambiguous ? '_' : byte;
            }
            return odd == "." || odd == ".." ? "dots" : odd;
        }
        const std::string end = std::to_string(chance(70) ? below(30) : 0) + anyOf(endings);
        return kind < 32 ? anyOf(wholeNames) : anyOf(beginnings) + anyOf(middles) + end;
    }

    void makeItem() {
        const std::string path = anyOf(_folders) + "/" + newName();
        const std::string host = _root + path;
        const char* name = host.c_str();
        std::error_code error;
        if (fs::exists(fs::symlink_status(host, error)) || !fs::exists(fs::path(host).parent_path(), error)) {
            return;
        }
        const size_t kind = below(100);
        if (kind < 50) {
            std::ofstream(host) << std::string(below(300), static_cast<char>(below(256))) << below(1'000'000);
            _files.push_back(path);
        } else if (kind < 72) {
            if (::mkdir(name, 0755) == 0 && host.size() < 2000) {
                _folders.push_back(path);
            }
        } else if (kind < 84) {
            const Texts targets = {anyOf(_folders),
                                   _files.empty() ? "nothing" : anyOf(_files),
                                   ".",
                                   "..",
                                   "/",
                                   fs::path(path).filename(),
                                   "/var/mobile/no such thing",
                                   _outside,
                                   _outside + "/file",
                                   "../../../../../../../../../.." + _outside,
                                   "/proc/self/root/" + _outside};
            fs::create_symlink(anyOf(targets), host, error);
        } else if (kind < 89 && !_files.empty()) {
            fs::create_hard_link(_root + anyOf(_files), host, error);
            return;
        } else if (kind < 94) {
            ::mknod(name, 0644 | (kind < 92 ? S_IFIFO : S_IFSOCK), 0);
        } else if (kind < 96) {
            std::ofstream(host).seekp(static_cast<off_t>((uint64_t{4} << 30U) + below(5'000'000'000)))
                << "end";
        } else if (::mkdir(name, 0755) == 0) {
            const int folder = ::open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            for (size_t left = kind < 98 ? 0 : 20 + below(200); left > 0; --left) {
                std::ofstream(fmt::format("{}/{}{}", host, left, anyOf(endings))) << left;
            }
            tests::makeDeepFolders(folder, kind < 98 ? 20 + below(150) : 0);
            ::close(folder);
        }
        decorate(path, host, kind >= 72 && kind < 84);
    }

    void decorate(const std::string& path, const std::string& host, bool isLink) {
        const uid_t owner = anyOf(owners);
        std::ignore = ::lchown(host.c_str(), owner, owner);
        if (!isLink) {
            ::chmod(host.c_str(), anyOf(modes));
        }
        const auto nanoseconds = static_cast<long>(below(1'000'000'000));
        const timespec times[] = {{.tv_sec = anyOf(dates), .tv_nsec = nanoseconds},
                                  {.tv_sec = anyOf(dates), .tv_nsec = nanoseconds}};
        ::utimensat(AT_FDCWD, host.c_str(), times, AT_SYMLINK_NOFOLLOW);
        if (chance(2) && isPlain(host) && setImmutable(host, true)) {
            _immutable.insert(path.substr(1));
        }
    }

    std::mt19937_64 _random;
    std::string _root, _outside;
    // Paths below the root: folders to put more into, files to link to.
    Texts _folders, _files;
    std::set<std::string> _immutable;
    bool _wantsBackups, _hasBackups = false;
};

inline constexpr double generations[] = {751.32, 881.0, 993.0, 1047.25, 1140.11, 1242.12, 1349.13, 1445.32};

inline platform::DeviceFacts factsFor(uint64_t seed) {
    const std::string containers = "/var/mobile/Containers/";
    platform::Array apps;
    for (const auto& [identifier, name] : {std::pair("org.example.plain", "plain"),
                                           {"com.google.chrome.ios", "chrome"},
                                           {"net.box.BoxNet", "box"}}) {
        apps.emplace_back(platform::Dictionary{{"Path", std::string("/Applications/") + identifier + ".app"},
                                               {"CFBundleExecutable", name},
                                               {"CFBundleIdentifier", identifier},
                                               {"ApplicationType", "User"},
                                               {"Container", containers + "Data/Application/" + name}});
    }
    (*apps[0].as<platform::Dictionary>())["GroupDataContainers"] =
        platform::Dictionary{{"group.org.example.plain", containers + "Shared/AppGroup/shared"}};
    return {.foundationVersion = generations[seed % std::size(generations)], .applications = apps};
}

} // namespace generated
