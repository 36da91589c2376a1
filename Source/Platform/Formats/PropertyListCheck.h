#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace platform {

// What a property list may cost. The largest ones of a device stay below 8 MB; twice that leaves room, and
// the copies that reading makes still fit in 64 MiB with the input itself.
inline constexpr size_t maximumPropertyListSize = size_t{16} << 20;
// The estimate of all memory that a list takes while it is read, input included. Lists above it are refused.
inline constexpr size_t maximumPropertyListMemory = size_t{60} << 20;
// The largest file that is text of another encoding than UTF-8, or of the text format: a character is held in
// as many as eight bytes while it is read.
inline constexpr size_t maximumTextListSize = maximumPropertyListMemory / 8;
// What one value or key costs as the library's node and as our own value together, without its text, in
// bytes.
inline constexpr size_t propertyListNodeMemory = 240;
// Deeper lists could exhaust the stack of the recursive code that reads and frees them; real ones stay
// below 30.
inline constexpr size_t maximumPropertyListDepth = 256;

/// What is to be known about a binary property list that may be handed to the library.
struct CheckedBinaryPropertyList {
    /// Offsets of UTF-16 units that are half a surrogate pair. The library would drop them together with
    /// their neighbours.
    std::vector<size_t> loneSurrogates;
};

/// Checks the bytes of a binary property list: trailer, offsets, sizes, kinds, depth, cycles, and the memory
/// that it takes once every reference is an object of its own. None if the library must not see it.
[[nodiscard]] std::optional<CheckedBinaryPropertyList> checkBinaryPropertyList(std::string_view bytes);

/// Checks the bytes of an XML property list: complete, well-formed text, no entities of its own, depth,
/// memory, and scalars that the library would silently take for 0. The result is the part up to the end of
/// the root element; none if the library must not see it. `heldMemory` is what the caller holds beside the
/// bytes.
[[nodiscard]] std::optional<std::string_view> checkXmlPropertyList(std::string_view bytes,
                                                                   size_t heldMemory = 0);

} // namespace platform
