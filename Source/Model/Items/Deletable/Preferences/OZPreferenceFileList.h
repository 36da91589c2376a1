#pragma once

#include "Model/Items/Deletable/OZSortedItemList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFile.h"
#include "Platform/Threads/NotificationCenter.h"
#include "Platform/Threads/Queue.h"

#include <atomic>
#include <functional>
#include <string_view>

class OZAppList;
class OZTask;

/// Is told of the restarts of the preference daemon, on the main thread.
class OZPrefDaemonReloadDelegate {
  public:
    virtual void prefDaemonReloadStarted() = 0;
    virtual void prefDaemonReloadEnded() = 0;

  protected:
    ~OZPrefDaemonReloadDelegate() = default;
};

/// What a list shows of an installed package.
struct OZPackageLabel {
    std::string name;
    /// A URL's text.
    std::optional<std::string> iconURL;
};

/// The preference files of applications and packages, under the names of these. Where the platform's
/// preference daemon keeps files in memory, it is restarted two seconds after the last deletion.
class OZPreferenceFileList : public OZSortedItemList {
  public:
    /// None for a package that is not installed. May block until the packages are known.
    using PackageLabels = std::function<std::optional<OZPackageLabel>(std::string_view identifier)>;

    /// Throws AssertionFailure if one of the two is missing. Device and applications outlive the list.
    OZPreferenceFileList(platform::Device& device, const OZAppList* appList, PackageLabels packageWorkspace);
    ~OZPreferenceFileList() override;

    [[nodiscard]] const Items& preferenceFiles() { return items(); }
    /// Gives a file its owner's name and icon. A file of nobody keeps its title and has no icon.
    void configurePreferenceFile(OZPreferenceFile& file) const;
    void addPreferenceFile(std::shared_ptr<OZPreferenceFile> file) { addItem(std::move(file)); }
    /// The package of a file that does not have its package's name; none for other files.
    [[nodiscard]] static std::optional<std::string_view> knownPreferenceFile(std::string_view fileName);
    [[nodiscard]] static bool isExcludedPreferenceFile(std::string_view fileName);

    // The preference daemon.
    /// Whether this platform's daemon has to be restarted for a deletion to come into force.
    [[nodiscard]] bool shouldReloadPrefDaemon() const;
    /// Restarts the daemon; returns at once. Does nothing where that is no use, without the tool, and until
    /// two seconds after the end of the last restart.
    void reloadPrefDaemon();
    /// Null unless a restart runs or has just ended.
    [[nodiscard]] std::shared_ptr<OZTask> prefDaemonReloadTask() const {
        return _prefDaemonReloadTask.load();
    }
    [[nodiscard]] OZPrefDaemonReloadDelegate* prefDaemonReloadDelegate() const {
        return _prefDaemonReloadDelegate;
    }
    /// The delegate outlives the list or is taken away before; null takes it away.
    void setPrefDaemonReloadDelegate(OZPrefDaemonReloadDelegate* delegate) {
        _prefDaemonReloadDelegate = delegate;
    }

  protected:
    void findItems() override;
    void removeFromDevice(const OZDeletableItem& item) override;

  private:
    void addFileAtPath(const std::string& path, std::string_view titleSuffix = {});
    void schedulePrefDaemonReload();
    void prefDaemonReloadComplete();
    void endPrefDaemonReload();

    platform::Device& _device;
    const OZAppList& _appList;
    PackageLabels _packageLabels;
    OZPrefDaemonReloadDelegate* _prefDaemonReloadDelegate = nullptr;
    std::atomic<std::shared_ptr<OZTask>> _prefDaemonReloadTask;
    platform::Observation _termination;
    platform::MainQueue::Token _scheduledReload = 0;
    platform::MainQueue::Token _endOfReload = 0;
};
