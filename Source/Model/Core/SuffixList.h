#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A list of texts, each of which a longer text may end in; each can be taken once. A look-up costs about as
/// much as reading the longer text, however many texts the list holds.
class SuffixList {
  public:
    explicit SuffixList(const std::vector<std::string>& suffixes);

    /// Takes the first text of the list, in the list's order, that is still there and that the given text
    /// ends in; gives its place in the list. Empty texts are never taken.
    std::optional<size_t> take(std::string_view text);

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    /// All equal texts of the list.
    struct Node {
        /// Written backwards, so that the suffixes of a text sort before it and next to each other.
        std::string reversed;
        /// Places in the list, ascending; those before `used` are taken.
        std::vector<size_t> places;
        size_t used = 0;
        /// The longest of the other texts that this one ends in.
        size_t shorter = none;
    };

    [[nodiscard]] size_t lastNotAfter(std::string_view reversed) const;
    void linkToShorter();

    /// Sorted by `reversed`.
    std::vector<Node> _nodes;
};
