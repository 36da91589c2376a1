#pragma once

#include "Model/Apps/OZApp.h"
#include "Platform/PropertyList.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class Device;
}

/// Bits; several may be joined by "|".
enum class OZAppTypeMask : unsigned { none = 0, system = 1, user = 2, all = 3 };
enum class OZAppFilterMask : unsigned {
    none = 0,
    /// Drops identifiers that begin with "com.apple".
    noApple = 1,
    /// Keeps of the system applications only those with an icon of their own.
    validIcon = 2,
};
/// What an application is excluded from.
enum class OZExclusionMask : unsigned { none = 0, cleanup = 1, images = 2, languages = 4, all = 7 };

template <class Mask>
concept OZMask = std::is_same_v<Mask, OZAppTypeMask> || std::is_same_v<Mask, OZAppFilterMask> ||
                 std::is_same_v<Mask, OZExclusionMask>;
template <OZMask Mask>
constexpr Mask operator|(Mask left, Mask right) {
    return static_cast<Mask>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}
template <OZMask Mask>
constexpr Mask operator^(Mask left, Mask right) {
    return static_cast<Mask>(static_cast<unsigned>(left) ^ static_cast<unsigned>(right));
}
/// Whether two masks share a bit.
template <OZMask Mask>
constexpr bool shareBit(Mask left, Mask right) {
    return (static_cast<unsigned>(left) & static_cast<unsigned>(right)) != 0;
}

/// What a caller asks the inventory for.
struct OZAppQuery {
    OZAppTypeMask typeMask = OZAppTypeMask::none;
    /// Added whatever the type mask and the icon filter say.
    std::vector<std::string> includingIdentifiers{};
    std::vector<std::string> excludingIdentifiers{};
    OZAppFilterMask filterMask = OZAppFilterMask::none;
    /// Applications whose exclusion shares a bit are left out.
    OZExclusionMask exclusionMask = OZExclusionMask::none;
};

/// The installed applications, as they were when the list was made, and what the user has excluded them from.
/// Nothing else reads installation data.
class OZAppList {
  public:
    using Apps = std::vector<std::shared_ptr<const OZApp>>;
    using Exclusions = std::map<std::string, OZExclusionMask, std::less<>>;

    /// The device outlives the list.
    explicit OZAppList(platform::Device& device);
    ~OZAppList();

    /// Sorted by display name without regard to case.
    [[nodiscard]] Apps appList(const OZAppQuery& query) const;
    /// Null if there is none. User applications come first.
    [[nodiscard]] std::shared_ptr<const OZApp> appWithIdentifier(std::string_view identifier) const;
    [[nodiscard]] std::vector<std::string> pathsForExcludedApps(OZExclusionMask exclusionMask,
                                                                OZAppTypeMask typeMask) const;

    // The platform's container directories; none where this generation has none.
    [[nodiscard]] std::optional<std::string> userAppBundleContainerDir() const;
    [[nodiscard]] std::optional<std::string> userAppDataContainerDir() const;
    [[nodiscard]] std::optional<std::string> systemAppBundleContainerDir() const;
    [[nodiscard]] std::optional<std::string> systemAppDataContainerDir() const;
    [[nodiscard]] std::optional<std::string> userGroupDataContainerDir() const;
    [[nodiscard]] std::optional<std::string> systemGroupDataContainerDir() const;
    [[nodiscard]] std::optional<std::string> pluginDataContainerDir() const;

    // Exclusions. Only installed applications have one; a mask of none takes it away.
    [[nodiscard]] const Exclusions& allExcludedApps() const { return _excludedApps; }
    [[nodiscard]] std::vector<std::string> excludedAppsIdentifiers() const;
    [[nodiscard]] Exclusions excludedAppsWithExclusionMask(OZExclusionMask mask) const;
    [[nodiscard]] OZExclusionMask exclusionMaskForApp(std::string_view identifier) const;
    [[nodiscard]] bool isAppExcluded(std::string_view identifier) const;
    [[nodiscard]] bool isAppExcluded(std::string_view identifier, OZExclusionMask mask) const;
    void removeAllExcludedApps();
    void removeExclusionMaskForApp(std::string_view identifier);
    void setExclusionMask(OZExclusionMask mask, std::string_view identifier);
    void toggleExclusionMask(OZExclusionMask mask, std::string_view identifier);

  private:
    platform::Device& _device;
    Exclusions _excludedApps;
    std::map<std::string, std::shared_ptr<const OZApp>, std::less<>> _userApps;
    std::map<std::string, std::shared_ptr<const OZApp>, std::less<>> _systemApps;
};
