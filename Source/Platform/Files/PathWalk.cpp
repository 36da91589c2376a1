#include "Platform/Files/PathWalk.h"

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

// As many as the kernel follows.
constexpr int mostLinks = 40;

std::string joined(const std::vector<std::string>& names) {
    std::string path;
    for (const auto& name : names) {
        path += path.empty() ? "" : "/";
        path += name;
    }
    return path;
}

} // namespace

PathWalk::PathWalk(const DeviceRoot& root, int start, std::vector<std::string> startNames)
    : _root(root)
    , _start(start)
    , _names(std::move(startNames)) {}

Result<DeviceRoot::Target> PathWalk::follow(std::string_view path) {
    if (path.starts_with('/')) {
        goToRoot();
    }
    push(path);
    while (!_remaining.empty()) {
        const std::string name = std::move(_remaining.back());
        _remaining.pop_back();
        if (!_leaf.empty()) {
            return failure(ENOTDIR);
        }
        if (name != ".") {
            if (auto done = name == ".." ? goUp() : step(name); !done) {
                return std::unexpected(done.error());
            }
        }
        if (auto allowed = checkLinksThatEndHere(); !allowed) {
            return std::unexpected(allowed.error());
        }
    }
    Descriptor folder = std::move(_here);
    if (!folder) {
        folder.reset(::openat(_start, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder) {
            return lastError();
        }
    }
    return DeviceRoot::Target{std::move(folder), std::move(_names), std::move(_leaf)};
}

void PathWalk::push(std::string_view path) {
    while (!path.empty()) {
        const size_t slash = path.rfind('/');
        const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
        if (!name.empty()) {
            _remaining.emplace_back(name);
        }
        path = slash == std::string_view::npos ? std::string_view{} : path.substr(0, slash);
    }
}

void PathWalk::goToRoot() {
    _here.reset();
    _start = _root.rootDescriptor();
    _names.clear();
}

Result<void> PathWalk::step(const std::string& name) {
    Descriptor next(::openat(here(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!next) {
        const std::error_code error = lastError().error();
        return error.value() == ENOENT && _names.empty() ? followMissingLink(name) : std::unexpected(error);
    }
    struct stat status = {};
    if (::fstat(next.get(), &status) < 0) {
        return lastError();
    }
    if (S_ISLNK(status.st_mode)) {
        return followLink(next.get(), status.st_uid);
    }
    if (S_ISDIR(status.st_mode)) {
        _here = std::move(next);
        _names.push_back(name);
    } else {
        _leaf = name;
        _leafOwner = status.st_uid;
    }
    return {};
}

Result<void> PathWalk::followMissingLink(const std::string& name) {
    const auto target = _root.targetOfMissingLink(name);
    if (!target) {
        return failure(ENOENT);
    }
    if (++_linksFollowed > mostLinks) {
        return failure(ELOOP);
    }
    push(*target);
    return {};
}

Result<void> PathWalk::goUp() {
    if (!_names.empty()) {
        _names.pop_back();
    }
    // Of several steps up in a row only the last one has to be opened.
    if (!_remaining.empty() && _remaining.back() == ".." && !linkEndsHere()) {
        return {};
    }
    auto parent = _root.openBelow(_root.rootDescriptor(), joined(_names));
    if (!parent) {
        return std::unexpected(parent.error());
    }
    _here = std::move(*parent);
    return {};
}

Result<void> PathWalk::followLink(int link, uid_t owner) {
    if (++_linksFollowed > mostLinks) {
        return failure(ELOOP);
    }
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(link, "", target.data(), target.size());
    if (length < 0) {
        return lastError();
    }
    target.resize(static_cast<size_t>(length));
    if (owner != 0 && owner != ::geteuid()) {
        _untrusted.push_back({_remaining.size(), owner});
    }
    if (target.starts_with('/')) {
        goToRoot();
    }
    push(target);
    return {};
}

Result<uid_t> PathWalk::ownerOfReached() const {
    if (!_leaf.empty()) {
        return _leafOwner;
    }
    struct stat status = {};
    if (::fstat(here(), &status) < 0) {
        return lastError();
    }
    return status.st_uid;
}

// What counts is where the whole of a link's text has led, be its last word a name, "..", "." or just "/".
Result<void> PathWalk::checkLinksThatEndHere() {
    while (linkEndsHere()) {
        const auto reachedOwner = ownerOfReached();
        if (!reachedOwner) {
            return std::unexpected(reachedOwner.error());
        }
        if (_untrusted.back().owner != *reachedOwner) {
            return failure(EPERM);
        }
        _untrusted.pop_back();
    }
    return {};
}

} // namespace platform
