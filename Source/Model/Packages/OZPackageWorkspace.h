#pragma once

#include "Model/Packages/OZPackageInfo.h"
#include "Platform/Threads/Queue.h"

#include <atomic>
#include <map>
#include <memory>
#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class Device;
}
class OZCSAddonList;
class OZPackageList;
class OZPreferenceBundleList;

/// Joins the device's add-ons, its preference bundles and its packages: whose each of them is, and under
/// which name and icon it is shown. That takes tools and many files, so it is done in the background, from
/// the workspace's creation on, and once: what is installed later stays unknown.
///
/// Every operation waits for the end of that work; any thread may call it. What it gives lives as long as the
/// workspace and is not locked any more.
class OZPackageWorkspace {
  public:
    using PackageInfoByIdentifier = std::map<std::string, std::shared_ptr<OZPackageInfo>, std::less<>>;

    /// Returns at once. The device outlives the workspace.
    explicit OZPackageWorkspace(platform::Device& device);
    OZPackageWorkspace(const OZPackageWorkspace&) = delete;
    OZPackageWorkspace& operator=(const OZPackageWorkspace&) = delete;
    /// Waits for work that has begun.
    ~OZPackageWorkspace();

    [[nodiscard]] OZCSAddonList& CSAddonList();
    [[nodiscard]] OZPreferenceBundleList& prefBundleList();
    [[nodiscard]] OZPackageList& packageList();
    /// All installed packages, also those that bring nothing along; empty if they cannot be told.
    [[nodiscard]] const PackageInfoByIdentifier& packageInfoByPkgId();

    /// Null for an unknown package.
    [[nodiscard]] std::shared_ptr<OZPackageInfo> infoForPackageWithIdentifier(std::string_view identifier);
    /// The add-ons of all packages that a package needs, and of all that need it; in no particular order. Its
    /// own are among them only if its dependencies lead back to it.
    [[nodiscard]] OZPackageInfo::CSAddonArray CSAddonDependenciesForPkgId(std::string_view identifier);
    [[nodiscard]] OZPackageInfo::CSAddonArray CSAddonDependantsForPkgId(std::string_view identifier);

    /// Whether the others would answer at once.
    [[nodiscard]] bool finishedLoading() const { return _finishedLoading; }

  private:
    class Aggregation;
    class Turn;

    void aggregateInBackground();
    // For the background work alone, which holds the lock already.
    OZCSAddonList& CSAddonList_noLock();
    OZPreferenceBundleList& prefBundleList_noLock();
    OZPackageList& packageList_noLock();
    PackageInfoByIdentifier& packageInfoByPkgId_noLock();

    [[nodiscard]] OZPackageInfo::CSAddonArray
    addonsOfLinkedPackages(std::string_view identifier, std::vector<OZPackage*> (OZPackage::*linked)() const);

    platform::Device& _device;
    // Taken while the work goes on: by the creating thread, and given back by that of the work.
    std::binary_semaphore _free{1};
    std::atomic<bool> _finishedLoading = false;
    std::unique_ptr<OZCSAddonList> _CSAddonList;
    std::unique_ptr<OZPreferenceBundleList> _prefBundleList;
    std::unique_ptr<OZPackageList> _packageList;
    std::unique_ptr<PackageInfoByIdentifier> _packageInfoByPkgId;
    // A thread of its own, since those of the shared queues may all be waiting for this work. Last, so that
    // it has ended before anything else does.
    platform::Queue _queue;
};
