#pragma once

#include "Platform/Threads/NotificationCenter.h"

#include <memory>

namespace platform {
class Bundle;
class Device;
class HostOutput;
class UserDefaults;
} // namespace platform
class OZAppList;
class OZCleanupLogger;
class OZCore;
class OZDaemonList;
class OZDeviceActions;
class OZDictionaryList;
class OZFontsFolderMover;
class OZLocalizationManager;
class OZPackageWorkspace;
class OZPluginLoader;
class OZPreferenceFileList;
class OZSystemRestore;

/// Builds the model's objects, each when it is first asked for, so that a one-shot switch builds only what it
/// needs. Shared objects live as long as the builder, which owns them; a fresh one is the caller's. To be
/// used on the main thread. Objects with stored choices have loaded them when they are given, and write them
/// whenever the device's defaults are saved; the builder must outlive the last save.
class OZModelBuilder {
  public:
    /// The device outlives the builder.
    explicit OZModelBuilder(platform::Device& device);
    OZModelBuilder(const OZModelBuilder&) = delete;
    OZModelBuilder& operator=(const OZModelBuilder&) = delete;
    ~OZModelBuilder();

    [[nodiscard]] platform::Device& device() const { return _device; }
    /// Where the logs of runs go, too. To be set before a logger is asked for.
    void setHostOutput(std::shared_ptr<platform::HostOutput> output) { _hostOutput = std::move(output); }

    /// Puts what is stored into force in all that was built, in place of choices that were never saved.
    void reloadDefaults();

    /// The program's own resources.
    const platform::Bundle& bundle();

    OZAppList& appList();
    OZLocalizationManager& localizationManager();
    OZCore& core();
    OZDaemonList& daemonList();
    OZDeviceActions& deviceActions();
    OZDictionaryList& dictionaryList();
    OZPackageWorkspace& packageWorkspace();
    OZPluginLoader& pluginLoader();
    OZPreferenceFileList& preferenceFileList();
    [[nodiscard]] std::unique_ptr<OZCleanupLogger> cleanupLogger() const;
    [[nodiscard]] std::unique_ptr<OZFontsFolderMover> fontsFolderMover() const;
    [[nodiscard]] std::unique_ptr<OZSystemRestore> systemRestore();

  private:
    platform::UserDefaults& standardUserDefaults();

    platform::Device& _device;
    std::shared_ptr<platform::HostOutput> _hostOutput;
    std::unique_ptr<platform::Bundle> _bundle;
    std::unique_ptr<OZAppList> _appList;
    std::unique_ptr<OZLocalizationManager> _localizationManager;
    std::unique_ptr<OZCore> _core;
    platform::Observation _languageChange;
    std::unique_ptr<OZDaemonList> _daemonList;
    platform::Observation _daemonListLanguageChange;
    std::unique_ptr<OZDeviceActions> _deviceActions;
    std::unique_ptr<OZDictionaryList> _dictionaryList;
    std::unique_ptr<OZPackageWorkspace> _packageWorkspace;
    std::unique_ptr<OZPluginLoader> _pluginLoader;
    std::unique_ptr<OZPreferenceFileList> _preferenceFileList;
};
