#pragma once

#include "Model/Apps/InstalledApps.h"
#include "Model/Apps/OZApp.h"
#include "Model/Services/OZUserDefaultsSync.h"

#include <concepts>
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
concept OZMask = std::same_as<Mask, OZAppTypeMask> || std::same_as<Mask, OZAppFilterMask> ||
    std::same_as<Mask, OZExclusionMask>;
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
/// Nothing else reads installation data. Exclusions belong to the main thread; the rest may be read anywhere.
class OZAppList : public OZUserDefaultsSync {
  public:
    using Apps = std::vector<std::shared_ptr<const OZApp>>;
    using Exclusions = std::map<std::string, OZExclusionMask, std::less<>>;

    /// Loads the applications; the stored exclusions are left to `loadDefaults`. The device outlives the
    /// list.
    explicit OZAppList(platform::Device& device);

    /// Whether the device tells its applications itself, by a list of its own or by the metadata in their
    /// containers. Older ones are asked for their installer's cache file.
    static bool appLoadSupportedAPI(const platform::Device& device);
    /// What is installed on a device, from the source that its generation has.
    static InstalledApps loadSystemAppInfo(platform::Device& device);
    /// Loads the applications anew; tells on standard error where some cannot be looked at. An entry without
    /// an executable that is there is passed over. Not to be called while another thread reads the list.
    void loadApps();

    /// Whether all could be looked at, and none that tells no name may be an excluded one. Else nobody knows
    /// whose the rest of the device is, and the stored exclusions are left as they are.
    [[nodiscard]] bool isComplete() const { return _isComplete; }

    /// Sorted by display name without regard to case. The icon filter looks into bundles that have not been
    /// checked yet.
    [[nodiscard]] Apps appList(const OZAppQuery& query) const;
    /// Null if there is none. User applications come first.
    [[nodiscard]] std::shared_ptr<const OZApp> appWithIdentifier(std::string_view identifier) const;
    /// Paths that the excluded applications occupy; callers take their last components.
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

    /// Checks the icons of the system applications beside the calling thread, so that a later query need not.
    /// Returns at once; the list may go before the check ends. For front ends that will show the
    /// applications: a one-shot switch has no use for the work, which is why no list starts it by itself.
    void checkSystemAppIconValidityInBackground() const;

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

    void loadDefaults() override;
    void writeDefaults() override;

  private:
    using AppsByIdentifier = std::map<std::string, std::shared_ptr<const OZApp>, std::less<>>;
    using Selection = std::map<std::string_view, std::shared_ptr<const OZApp>>;

    [[nodiscard]] Selection appsOfTypes(OZAppTypeMask typeMask, OZAppFilterMask filterMask) const;
    [[nodiscard]] bool isInstalled(std::string_view identifier) const;
    void noteIncomplete();

    platform::Device& _device;
    Exclusions _excludedApps;
    AppsByIdentifier _userApps;
    AppsByIdentifier _systemApps;
    bool _isComplete = true;
    bool _hasNameless = false;
};
