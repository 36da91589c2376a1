#include "Platform/Files/Path.h"

namespace platform {

namespace {

std::string_view withoutSlashesAtEnd(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

} // namespace

std::string pathPrefix(std::string_view folder) {
    std::string prefix(folder);
    if (!prefix.empty() && !prefix.ends_with('/')) {
        prefix += '/';
    }
    return prefix;
}

std::string joinPath(std::string_view folder, std::string_view name) {
    return pathPrefix(folder).append(name);
}

std::string_view lastPathComponent(std::string_view path) {
    path = withoutSlashesAtEnd(path);
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

std::string_view deletingLastPathComponent(std::string_view path) {
    path = withoutSlashesAtEnd(path);
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view()
                                           : withoutSlashesAtEnd(path.substr(0, slash + 1));
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::string_view withoutPathExtension(std::string_view path) {
    const size_t length = pathExtension(path).size();
    return length == 0 ? path : path.substr(0, path.size() - length - 1);
}

std::string_view nameWithoutExtension(std::string_view path) {
    return withoutPathExtension(lastPathComponent(path));
}

bool isFileName(std::string_view text) {
    return !text.empty() && text != "." && text != ".." &&
           text.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

} // namespace platform
