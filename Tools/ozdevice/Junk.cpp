#include "Content.h"
#include "DeviceBuild.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

namespace ozdevice {
namespace {

struct JunkPlace {
    std::string_view folder;
    std::string_view prefix;
    std::string_view suffix;
    /// How many of every `allParts` files lie here.
    size_t parts;
};

constexpr JunkPlace junkPlaces[] = {
    {"/var/mobile/Library/Caches/ImageCache/Store", "image", ".cache", 24},
    {"/var/mobile/Library/Caches/com.apple.AppStore/fsCachedData", "", "", 14},
    {"/var/mobile/Library/Caches/Safari/Thumbnails/Store", "page", ".jpg", 12},
    {"/var/mobile/Library/Logs/CrashReporter/Retired", "Crash-", ".ips", 8},
    {"/var/log/asl/Store", "", ".asl", 6},
    {"/var/tmp/staging", "unpack-", "", 10},
    {"/var/mobile/Documents/Scratch", "scratch", ".tmp", 8},
    {"/var/mobile/Documents/Traces", "trace", ".log", 6},
    // Junk of no kind: the user's own.
    {"/var/mobile/Media/Recordings", "memo", ".m4a", 12},
};

constexpr size_t filesInFolder = 1000;

constexpr size_t allParts() {
    size_t sum = 0;
    for (const JunkPlace& place : junkPlaces) {
        sum += place.parts;
    }
    return sum;
}

void fill(DeviceBuild& build, const JunkPlace& place, size_t count, std::string_view content) {
    for (size_t first = 0; first < count; first += filesInFolder) {
        const std::string folder = fmt::format("{}/{:03}", place.folder, first / filesInFolder);
        build.tree.folder(folder, build.someAge());
        build.tree.series(folder,
                          {.prefix = place.prefix,
                           .suffix = place.suffix,
                           .first = first,
                           .count = std::min(filesInFolder, count - first)},
                          content);
    }
}

} // namespace

void addJunk(DeviceBuild& build) {
    const std::string content = words(build.random) + words(build.random);
    size_t left = build.options.junkFileCount;
    for (const JunkPlace& place : junkPlaces) {
        const bool isLast = &place == std::end(junkPlaces) - 1;
        const size_t count = isLast ? left : build.options.junkFileCount * place.parts / allParts();
        fill(build, place, count, content);
        left -= count;
    }
}

} // namespace ozdevice
