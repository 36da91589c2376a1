#include "Platform/Files/DeviceRoot.h"

#include "Platform/Files/PathWalk.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace platform {

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

struct TopLink {
    std::string_view name;
    std::string_view target;
};

// The first whose folder is there counts.
constexpr std::array topLinks = {
    TopLink{"var", "private/var"},
    TopLink{"etc", "private/etc"},
    TopLink{"tmp", "private/tmp"},
    TopLink{"tmp", "private/var/tmp"},
};

// Set once the kernel has said that it lacks the call or that a filter forbids it.
std::atomic<bool> kernelCannot = false;

Result<Descriptor> openWithKernel(int base, const char* path, uint64_t resolve) {
    struct open_how how {};
    how.flags = folderFlags;
    how.resolve = resolve | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    // EAGAIN: something was renamed while ".." was looked at.
    for (int attempt = 0;; ++attempt) {
        const long number = ::syscall(SYS_openat2, base, path, &how, sizeof how);
        if (number >= 0) {
            return Descriptor(static_cast<int>(number));
        }
        if ((errno != EAGAIN && errno != EINTR) || attempt == 100) {
            break;
        }
    }
    if (errno == ENOSYS || errno == EPERM || errno == E2BIG) {
        kernelCannot = true;
        errno = ENOSYS;
    }
    return lastError();
}

// The longest piece of a path that ends at a component's end and that one system call takes.
std::string_view leadingPiece(std::string_view path) {
    if (path.size() < PATH_MAX) {
        return path;
    }
    return path.substr(0, path.rfind('/', PATH_MAX - 1));
}

void skipSlashes(std::string_view& path) {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
}

std::vector<std::string> normalized(std::vector<std::string> names, std::string_view path) {
    if (path.starts_with('/')) {
        names.clear();
    }
    while (!path.empty()) {
        const size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (name == ".." && !names.empty()) {
            names.pop_back();
        } else if (!name.empty() && name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    return names;
}

bool hasParentComponent(std::string_view path) {
    while (!path.empty()) {
        const size_t end = std::min(path.find('/'), path.size());
        if (path.substr(0, end) == "..") {
            return true;
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return false;
}

// A byte 0 would end the path early for the system, and another item would be meant.
bool namesNothing(std::string_view path) {
    return path.empty() || path.contains('\0');
}

} // namespace

DeviceRoot::DeviceRoot(Descriptor root, Descriptor current, PathResolution resolution)
    : _root(std::make_shared<Folder>(std::move(root)))
    , _current(std::make_shared<Place>(Folder(std::move(current)), std::vector<std::string>{}))
    , _resolution(resolution) {}

Result<std::shared_ptr<DeviceRoot>> DeviceRoot::open(const std::string& hostFolder,
                                                     PathResolution resolution) {
    Descriptor root(::open(hostFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!root) {
        return lastError();
    }
    Descriptor current(::openat(root.get(), ".", folderFlags));
    if (!current) {
        return lastError();
    }
    return std::shared_ptr<DeviceRoot>(new DeviceRoot(std::move(root), std::move(current), resolution));
}

std::shared_ptr<const DeviceRoot::Place> DeviceRoot::current() const {
    const std::lock_guard lock(_currentMutex);
    return _current;
}

std::shared_ptr<const Folder> DeviceRoot::currentFolder() const {
    auto place = current();
    return {place, &place->folder};
}

Result<void> DeviceRoot::lookOnly() {
    _access = Access::lookOnly;
    // The current directory is opened anew, and so are all others.
    return changeCurrentDirectory(".");
}

Result<void> DeviceRoot::changeCurrentDirectory(std::string_view path) {
    auto target = follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    if (!target->leaf.empty()) {
        return failure(ENOTDIR);
    }
    auto place =
        std::make_shared<const Place>(Folder(std::move(target->folder), _access), std::move(target->names));
    {
        const std::lock_guard lock(_currentMutex);
        _current.swap(place);
    }
    foldersChanged();
    return {};
}

std::optional<Result<Descriptor>> DeviceRoot::openInOneCall(const Place& place, std::string_view path) const {
    if (_resolution != PathResolution::kernel || kernelCannot || path.size() >= PATH_MAX) {
        return std::nullopt;
    }
    const bool absolute = path.starts_with('/');
    return openWithKernel(absolute ? rootDescriptor() : place.folder.descriptor(), std::string(path).c_str(),
                          absolute ? RESOLVE_IN_ROOT : RESOLVE_BENEATH);
}

Result<Descriptor> DeviceRoot::openFolder(std::string_view path) const {
    if (namesNothing(path)) {
        return failure(ENOENT);
    }
    const auto place = current();
    if (auto folder = openInOneCall(*place, path)) {
        // A link on the way, a missing one, or a way out of the current directory: look closer.
        const int error = *folder ? 0 : folder->error().value();
        if (error != ELOOP && error != EXDEV && !(error == ENOENT && lacksLinks()) && !kernelCannot) {
            return std::move(*folder);
        }
    }
    auto target = PathWalk(*this, place->folder.descriptor(), place->names).follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    if (!target->leaf.empty()) {
        return failure(ENOTDIR);
    }
    return std::move(target->folder);
}

Result<Descriptor> DeviceRoot::openBelow(int base, std::string_view relativePath) const {
    if (relativePath.contains('\0')) {
        return failure(ENOENT);
    }
    if (hasParentComponent(relativePath)) {
        return failure(EINVAL);
    }
    Descriptor here(::openat(base, ".", folderFlags));
    while (here && !relativePath.empty()) {
        skipSlashes(relativePath);
        const bool whole = _resolution == PathResolution::kernel && !kernelCannot;
        const std::string_view piece =
            whole ? leadingPiece(relativePath) : relativePath.substr(0, relativePath.find('/'));
        if (whole) {
            auto next =
                openWithKernel(here.get(), std::string(piece.empty() ? "." : piece).c_str(), RESOLVE_BENEATH);
            if (!next && kernelCannot) {
                continue;
            }
            if (!next) {
                return next;
            }
            here = std::move(*next);
        } else if (!piece.empty()) {
            here.reset(::openat(here.get(), std::string(piece).c_str(), folderFlags | O_NOFOLLOW));
        }
        relativePath.remove_prefix(piece.size());
    }
    if (!here) {
        return lastError();
    }
    return here;
}

Result<DeviceRoot::Target> DeviceRoot::follow(std::string_view path) const {
    if (namesNothing(path)) {
        return failure(ENOENT);
    }
    const auto place = current();
    if (auto folder = openInOneCall(*place, path); folder && *folder) {
        return Target{std::move(**folder), normalized(place->names, path), {}};
    }
    return PathWalk(*this, place->folder.descriptor(), place->names).follow(path);
}

std::optional<std::string_view> DeviceRoot::targetOfMissingLink(std::string_view topName) const {
    for (const TopLink& link : topLinks) {
        struct stat status = {};
        if (link.name != topName ||
            ::fstatat(rootDescriptor(), std::string(topName).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ||
            errno != ENOENT) {
            continue;
        }
        if (openBelow(rootDescriptor(), link.target)) {
            return link.target;
        }
    }
    return std::nullopt;
}

bool DeviceRoot::lacksLinks() const {
    return std::ranges::any_of(
        topLinks, [&](const TopLink& link) { return targetOfMissingLink(link.name).has_value(); });
}

} // namespace platform
