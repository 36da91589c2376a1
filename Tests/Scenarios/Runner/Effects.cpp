#include "Tests/Scenarios/Runner/Effects.h"

namespace scenarios {

using tests::ItemState;
using tests::TreeSnapshot;

namespace {

std::string nameIn(const TreeSnapshot& tree, const std::string& path) {
    return escaped("/" + path + (tree.at(path).isFolder() ? "/" : ""));
}

std::string changeOf(const ItemState& before, const ItemState& after) {
    std::string text;
    if (before.mode != after.mode) {
        text += fmt::format(" mode {:o} -> {:o}", before.mode, after.mode);
    }
    if (before.owner != after.owner || before.group != after.group) {
        text += fmt::format(" owner {}:{} -> {}:{}", before.owner, before.group, after.owner, after.group);
    }
    if (before.content != after.content || before.size != after.size) {
        text += " content";
    }
    return text;
}

/// Paths of the first tree that are not in the other, without those below another one.
Lines topsMissing(const TreeSnapshot& tree, const TreeSnapshot& other) {
    Lines tops;
    for (const auto& [path, state] : tree) {
        if (!other.contains(path) && (tops.empty() || !isBelow(path, tops.back()))) {
            tops.push_back(path);
        }
    }
    return tops;
}

} // namespace

bool isBelow(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

TreeSnapshot branchOf(const TreeSnapshot& tree, const std::string& path) {
    TreeSnapshot branch;
    for (auto item = tree.find(path); item != tree.end() && item->first.starts_with(path); ++item) {
        if (item->first == path || isBelow(item->first, path)) {
            branch[item->first.substr(path.size())] = item->second;
        }
    }
    return branch;
}

Lines effectsOn(const TreeSnapshot& before, const TreeSnapshot& after) {
    Lines lines;
    Lines added = topsMissing(after, before);
    for (const auto& path : topsMissing(before, after)) {
        const auto isSame = [&](const std::string& other) {
            return branchOf(before, path) == branchOf(after, other);
        };
        if (const auto moved = std::ranges::find_if(added, isSame);
            moved != added.end() && !before.at(path).isFolder()) {
            lines.push_back("@ " + nameIn(before, path) + " -> " + nameIn(after, *moved));
            added.erase(moved);
        } else {
            lines.push_back("- " + nameIn(before, path));
        }
    }
    for (const auto& [path, state] : before) {
        const auto now = after.find(path);
        if (now != after.end() && now->second != state) {
            lines.push_back("~ " + nameIn(after, path) + changeOf(state, now->second));
        }
    }
    for (const auto& top : added) {
        for (const auto& [rest, state] : branchOf(after, top)) {
            const std::string path = top + rest;
            if (const auto next = std::next(after.find(path));
                next == after.end() || !isBelow(next->first, path)) {
                lines.push_back("+ " + nameIn(after, path) + (state.isLink() ? " -> " + state.content : ""));
            }
        }
    }
    return lines;
}

} // namespace scenarios
