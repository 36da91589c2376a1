#pragma once

#include <string>

namespace platform {
class Device;
}

/// An optional connection to another party's library: whether that library is installed, and whether the user
/// wants the connection.
class OZPlugin {
  public:
    /// The dependency is the identifier of the library's package. Throws AssertionFailure if a text is empty.
    /// Nothing but `available` needs the device, and that is found out here, once.
    OZPlugin(const platform::Device& device, std::string identifier, std::string dependency,
             std::string dependencyDylibPath, bool requiresRespring);

    /// Whether a file that is no folder stands at the library's path.
    [[nodiscard]] bool available() const { return _available; }
    [[nodiscard]] bool enabled() const { return _enabled; }
    void setEnabled(bool enabled) { _enabled = enabled; }
    /// Whether a change comes into force with a restart of the home screen only.
    [[nodiscard]] bool requiresRespring() const { return _requiresRespring; }
    void setRequiresRespring(bool requiresRespring) { _requiresRespring = requiresRespring; }
    [[nodiscard]] const std::string& dependency() const { return _dependency; }
    [[nodiscard]] const std::string& dependencyDylibPath() const { return _dependencyDylibPath; }
    [[nodiscard]] const std::string& identifier() const { return _identifier; }
    [[nodiscard]] const std::string& title() const { return _title; }
    void setTitle(std::string title) { _title = std::move(title); }

  private:
    bool _available = false;
    bool _enabled = false;
    bool _requiresRespring;
    std::string _dependency;
    std::string _dependencyDylibPath;
    std::string _identifier;
    std::string _title;
};
