#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// The elements at `location` and after it, at most `length` of them. What lies beyond the array is left out;
/// it never fails.
template <class Element>
[[nodiscard]] std::vector<Element> OZSafety_subarrayWithRange(const std::vector<Element>& array,
                                                              size_t location, size_t length) {
    const size_t first = std::min(location, array.size());
    const size_t last = first + std::min(length, array.size() - first);
    return {array.begin() + static_cast<std::ptrdiff_t>(first),
            array.begin() + static_cast<std::ptrdiff_t>(last)};
}
