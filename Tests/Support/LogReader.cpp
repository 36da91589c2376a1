#include "Tests/Support/LogReader.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace tests {

namespace {

constexpr std::string_view directoryMark = "##\nIn dir: ";
constexpr int mostLinks = 40;

std::string joined(const std::vector<std::string>& names) {
    std::string path;
    for (const auto& name : names) {
        path += (path.empty() ? "" : "/") + name;
    }
    return path;
}

void pushFront(std::deque<std::string>& components, std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const size_t end = std::min(path.find('/'), path.size());
        if (end > 0) {
            names.emplace_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    components.insert(components.begin(), names.begin(), names.end());
}

// Follows the links before the last component, as the tree had them.
std::optional<std::string> resolve(const TreeSnapshot& tree, std::string_view path) {
    std::deque<std::string> components;
    pushFront(components, path);
    std::vector<std::string> reached;
    for (int links = 0; !components.empty();) {
        const std::string name = std::move(components.front());
        components.pop_front();
        if (name == "..") {
            if (!reached.empty()) {
                reached.pop_back();
            }
            continue;
        }
        if (name == ".") {
            continue;
        }
        reached.push_back(name);
        const auto item = tree.find(joined(reached));
        if (item == tree.end()) {
            return std::nullopt;
        }
        if (item->second.isLink() && !components.empty()) {
            if (++links > mostLinks) {
                return std::nullopt;
            }
            reached.pop_back();
            if (item->second.content.starts_with('/')) {
                reached.clear();
            }
            pushFront(components, item->second.content);
        }
    }
    return reached.empty() ? std::nullopt : std::optional(joined(reached));
}

} // namespace

std::vector<std::string> itemsNamedByLog(std::string_view log, const TreeSnapshot& tree) {
    std::vector<std::string> items;
    std::string directory = "/";
    while (!log.empty()) {
        log.remove_prefix(std::min(log.find_first_not_of('\n'), log.size()));
        const size_t end = std::min(log.find("\n\n"), log.size());
        std::string_view entry = log.substr(0, end);
        log.remove_prefix(std::min(end + 2, log.size()));
        if (entry.starts_with(directoryMark)) {
            entry.remove_prefix(directoryMark.size());
            directory = std::string(entry.substr(0, entry.rfind("\n##"))) + "/";
        } else if (auto item = resolve(tree, entry.starts_with('/') ? std::string(entry)
                                                                    : directory + std::string(entry))) {
            items.push_back(std::move(*item));
        }
    }
    return items;
}

} // namespace tests
