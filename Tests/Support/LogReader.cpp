#include "Tests/Support/TreeSnapshot.h"

#include <deque>

namespace tests {

namespace {

constexpr std::string_view directoryMark = "##\nIn dir: ";
constexpr int mostLinks = 40;

using Components = std::deque<std::string>;

void pushFront(Components& components, std::string_view path) {
    Components names;
    for (size_t end = 0; !path.empty(); path.remove_prefix(std::min(end + 1, path.size()))) {
        end = std::min(path.find('/'), path.size());
        if (const auto name = path.substr(0, end); !name.empty() && name != ".") {
            names.emplace_back(name);
        }
    }
    components.insert(components.begin(), names.begin(), names.end());
}

// Follows the links before the last component, as the tree had them.
std::optional<std::string> resolve(const TreeSnapshot& tree, std::string_view path) {
    Components components;
    pushFront(components, path);
    Components reached;
    for (int links = 0; !components.empty() && links <= mostLinks;) {
        reached.push_back(std::move(components.front()));
        components.pop_front();
        if (reached.back() == "..") {
            reached.resize(std::max<size_t>(reached.size(), 2) - 2);
            continue;
        }
        const auto item = tree.find(fmt::format("{}", fmt::join(reached, "/")));
        if (item == tree.end()) {
            return std::nullopt;
        }
        if (item->second.isLink() && !components.empty()) {
            ++links;
            reached.resize(item->second.content.starts_with('/') ? 0 : reached.size() - 1);
            pushFront(components, item->second.content);
        }
    }
    return reached.empty() || !components.empty() ? std::nullopt
                                                  : std::optional(fmt::format("{}", fmt::join(reached, "/")));
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
        } else if (auto item =
                       resolve(tree, (entry.starts_with('/') ? "" : directory) + std::string(entry))) {
            items.push_back(std::move(*item));
        }
    }
    return items;
}

} // namespace tests
