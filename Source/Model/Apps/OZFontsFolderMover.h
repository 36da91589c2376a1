#pragma once

#include "Platform/Files/FileManager.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace platform {
class Device;
}

/// The partition that holds the fonts folder.
enum class OZFontsFolderLocation : unsigned {
    /// There is no folder that could be moved.
    unknown = 0,
    system = 1,
    data = 2,
};

/// Why a move did not come to its end.
struct OZFontsFolderError {
    /// The domain, "Ozvarine", of errors that are the mover's own; the others are the system's.
    static const std::error_category& domain();
    /// In that domain: there is no folder to move.
    static constexpr int noFolder = -1;

    std::error_code code;
    /// What was being done, such as "move /var/Fonts to /System/Library/Fonts"; empty for the domain's own.
    std::string operation;

    /// For people: what could not be done, and why.
    [[nodiscard]] std::string localizedDescription() const;
};

/// Moves the system's fonts folder to the data partition, where a link at its old place leads, and back. It
/// reads the tree anew at each call and keeps nothing between calls. One thread at a time.
class OZFontsFolderMover {
  public:
    static constexpr std::string_view systemPath = "/System/Library/Fonts";
    static constexpr std::string_view dataPath = "/var/Fonts";

    explicit OZFontsFolderMover(platform::Device& device);

    /// The real path of the folder, free of links; none if there is no such folder.
    [[nodiscard]] std::optional<std::string> currentFolderPath();
    [[nodiscard]] OZFontsFolderLocation folderLocation();
    /// None, for no path, is an unknown location.
    [[nodiscard]] static OZFontsFolderLocation locationForFolder(const std::optional<std::string>& path);
    /// Bytes of everything in the folder; 0 if there is none.
    [[nodiscard]] uint64_t folderSize();
    /// The same for people, without fraction digits.
    [[nodiscard]] std::string humanReadableFolderSize();

    /// Moves the folder to the other partition; false where that failed. A failure leaves everything as it
    /// stands at that point: the fonts are in one of the two places, and `error` says what to look at. What
    /// stood in the way is kept beside the new place, with "OLD" behind its name. Without `error` only a
    /// missing folder stops a move: failures of single steps go unseen, and the answer is true.
    bool moveFolder(std::optional<OZFontsFolderError>* error);

  private:
    class Move;

    platform::FileManager _fileManager;
};
