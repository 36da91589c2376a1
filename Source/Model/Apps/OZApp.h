#pragma once

#include "Platform/Formats/PropertyList.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class FileManager;
}

enum class OZAppType : unsigned {
    /// Installed by the system or by a package under "/Applications".
    system = 0,
    /// Installed in containers of its own.
    user = 1,
};

/// One installed application. Nothing of it changes but the cached icon check, which may come from any
/// thread.
class OZApp {
  public:
    using Containers = std::map<std::string, std::string>;

    /// None unless the dictionary has the path of the bundle, the executable and the identifier, and for a
    /// user application the data container. Empty texts, paths that are not absolute and identifiers that
    /// could lead out of a folder count as missing.
    static std::shared_ptr<const OZApp> make(OZAppType type, const platform::Dictionary& infoDictionary);

    [[nodiscard]] OZAppType type() const { return _type; }
    [[nodiscard]] const std::string& identifier() const { return _identifier; }
    [[nodiscard]] const std::string& displayName() const { return _displayName; }
    /// The display name as it is sorted, without regard to case.
    [[nodiscard]] const std::string& foldedDisplayName() const { return _foldedDisplayName; }
    [[nodiscard]] const std::string& executableFileName() const { return _executableFileName; }
    [[nodiscard]] const std::string& bundlePath() const { return _bundlePath; }
    /// The directory that holds the bundle; system applications may have none.
    [[nodiscard]] const std::optional<std::string>& bundleContainer() const { return _bundleContainer; }
    /// System applications may have none.
    [[nodiscard]] const std::optional<std::string>& dataContainer() const { return _dataContainer; }
    /// By group identifier and by plug-in identifier; empty where there are none.
    [[nodiscard]] const Containers& groupDataContainers() const { return _groupDataContainers; }
    [[nodiscard]] const Containers& pluginDataContainers() const { return _pluginDataContainers; }

    /// Whether the application shows an icon of its own. The first call looks into the bundle, the others
    /// remember. Any thread may call it, with a handle of its own.
    [[nodiscard]] bool hasValidIcon(platform::FileManager& fileManager) const;

  private:
    OZApp() = default;

    enum class IconState : uint8_t { unchecked, invalid, valid };

    OZAppType _type = OZAppType::system;
    std::string _identifier;
    std::string _displayName;
    std::string _foldedDisplayName;
    std::string _executableFileName;
    std::string _bundlePath;
    std::optional<std::string> _bundleContainer;
    std::optional<std::string> _dataContainer;
    Containers _groupDataContainers;
    Containers _pluginDataContainers;
    mutable std::atomic<IconState> _hasValidIcon = IconState::unchecked;
};
