#pragma once

#include <string>
#include <vector>

/// A device that was opened before.
struct RecentDevice {
    std::string folder;
    /// The version of its system, such as "9.3.5".
    std::string systemVersion;
    /// When it was last cleaned from here, in seconds since 1970; 0 for never.
    int64_t lastCleanup = 0;

    bool operator==(const RecentDevice&) const = default;
};

/// The devices that were opened before, the last one first, in one small file of this machine. A file that
/// cannot be read means none; one that cannot be written is passed over, since nothing depends on it.
class RecentDevices {
  public:
    static constexpr size_t mostKept = 8;

    explicit RecentDevices(std::string file)
        : _file(std::move(file)) {}

    /// "devices.plist" below `$XDG_STATE_HOME/ozvarine`, or below `~/.local/state/ozvarine`; an empty path
    /// where the environment names no home.
    [[nodiscard]] static std::string defaultFile();

    /// Those whose folder is still there by its name.
    [[nodiscard]] std::vector<RecentDevice> devices() const;
    /// Puts the device in front, in place of an earlier entry of the folder, whose last cleanup stays.
    void noteOpened(const std::string& folder, const std::string& systemVersion) const;
    void noteCleaned(const std::string& folder, int64_t time) const;

  private:
    [[nodiscard]] std::vector<RecentDevice> stored() const;
    void store(const std::vector<RecentDevice>& devices) const;

    std::string _file;
};
