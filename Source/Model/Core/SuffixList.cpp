#include "Model/Core/SuffixList.h"

#include <algorithm>

SuffixList::SuffixList(const std::vector<std::string>& suffixes) {
    std::vector<Node> nodes;
    nodes.reserve(suffixes.size());
    for (size_t place = 0; place < suffixes.size(); ++place) {
        if (!suffixes[place].empty()) {
            nodes.push_back(
                {.reversed = {suffixes[place].rbegin(), suffixes[place].rend()}, .places = {place}});
        }
    }
    // Stable, so that equal texts keep the list's order.
    std::ranges::stable_sort(nodes, {}, &Node::reversed);
    for (auto& node : nodes) {
        if (!_nodes.empty() && _nodes.back().reversed == node.reversed) {
            _nodes.back().places.push_back(node.places.front());
        } else {
            _nodes.push_back(std::move(node));
        }
    }
    linkToShorter();
}

// In sorted order a text's shorter ones come before it, and what lies between ends in them, too.
void SuffixList::linkToShorter() {
    for (size_t index = 1; index < _nodes.size(); ++index) {
        size_t candidate = index - 1;
        while (candidate != none && !_nodes[index].reversed.starts_with(_nodes[candidate].reversed)) {
            candidate = _nodes[candidate].shorter;
        }
        _nodes[index].shorter = candidate;
    }
}

size_t SuffixList::lastNotAfter(std::string_view reversed) const {
    const auto after = std::ranges::upper_bound(
        _nodes, reversed, {}, [](const Node& node) { return std::string_view(node.reversed); });
    return after == _nodes.begin() ? none : static_cast<size_t>(after - _nodes.begin()) - 1;
}

std::optional<size_t> SuffixList::take(std::string_view text) {
    const std::string reversed(text.rbegin(), text.rend());
    Node* first = nullptr;
    // Once the text ends in one, it ends in all that are shorter, too.
    bool endsInNode = false;
    for (size_t index = lastNotAfter(reversed); index != none; index = _nodes[index].shorter) {
        Node& node = _nodes[index];
        endsInNode = endsInNode || reversed.starts_with(node.reversed);
        if (!endsInNode || node.used == node.places.size()) {
            continue;
        }
        if (first == nullptr || node.places[node.used] < first->places[first->used]) {
            first = &node;
        }
    }
    if (first == nullptr) {
        return std::nullopt;
    }
    return first->places[first->used++];
}
