#include "Model/Packages/OZPackageWorkspace.h"

#include "Categories/FileURLs.h"
#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Packages/OZPackageList.h"

namespace {

template <class Object, class... Arguments>
Object& madeOnFirstUse(std::unique_ptr<Object>& field, Arguments&&... arguments) {
    if (!field) {
        field = std::make_unique<Object>(std::forward<Arguments>(arguments)...);
    }
    return *field;
}

/// The small icon of the image that a URL names.
std::optional<std::string> smallIconOf(const std::optional<std::string>& url) {
    const auto path = url ? pathOfURL(*url) : std::nullopt;
    return path ? iconURLWithPath(*path) : std::nullopt;
}

} // namespace

/// The work itself.
class OZPackageWorkspace::Aggregation {
  public:
    explicit Aggregation(OZPackageWorkspace& workspace)
        : _workspace(workspace)
        , _addons(workspace.CSAddonList_noLock().addons())
        , _bundles(workspace.prefBundleList_noLock().bundles()) {}

    void run() {
        findOwners();
        for (const auto& bundle : _bundles) {
            join(bundle);
        }
        for (const auto& addon : _addons) {
            join(addon);
        }
        summarize();
    }

  private:
    /// Asks for all owners at once. The packages know their files by the enabled names.
    void findOwners() {
        std::vector<std::string> paths;
        for (const auto& addon : _addons) {
            paths.push_back(addon->enabledPath());
        }
        for (const auto& bundle : _bundles) {
            paths.push_back(bundle->enabledPath());
        }
        _owners = _workspace.packageList_noLock().packagesForFilesAtPaths(paths).value_or(
            OZPackageList::PackagesByPath());
    }

    [[nodiscard]] std::shared_ptr<OZPackage> ownerOf(const OZTogglablePkgFile& file) const {
        const auto found = _owners.find(file.enabledPath());
        return found == _owners.end() || found->second.empty() ? nullptr : found->second.front();
    }

    void join(const std::shared_ptr<OZPreferenceBundle>& bundle) {
        if (auto icon = smallIconOf(bundle->iconURL())) {
            bundle->setIconURL(std::move(icon));
        }
        const auto owner = ownerOf(*bundle);
        if (!owner) {
            return;
        }
        bundle->setPackage(owner);
        if (bundle->isForCurrentiOSVersion()) {
            _bundleByPkgId.insert_or_assign(owner->identifier(), bundle);
        }
    }

    void join(const std::shared_ptr<OZCSAddon>& addon) {
        const auto owner = ownerOf(*addon);
        if (!owner) {
            return;
        }
        if (owner->name() && !owner->name()->empty()) {
            addon->setTitle(*owner->name());
        }
        addon->setPackage(owner);
        const auto bundle = bundleOf(*owner);
        auto icon = bundle ? bundle->iconURL() : std::nullopt;
        if (!icon) {
            icon = smallIconOf(owner->iconURL());
        }
        if (icon) {
            addon->setIconURL(std::move(icon));
        }
        _addonsByPkgId[owner->identifier()].push_back(addon);
    }

    [[nodiscard]] std::shared_ptr<OZPreferenceBundle> bundleOf(const OZPackage& package) const {
        const auto found = _bundleByPkgId.find(package.identifier());
        return found == _bundleByPkgId.end() ? nullptr : found->second;
    }

    void summarize() {
        auto& summaries = _workspace.packageInfoByPkgId_noLock();
        for (const auto& [identifier, package] : _workspace.packageList_noLock().allPackages()) {
            summaries.insert_or_assign(
                identifier,
                std::make_shared<OZPackageInfo>(package, _addonsByPkgId[identifier], bundleOf(*package)));
        }
    }

    OZPackageWorkspace& _workspace;
    OZPackageInfo::CSAddonArray _addons;
    std::vector<std::shared_ptr<OZPreferenceBundle>> _bundles;
    OZPackageList::PackagesByPath _owners;
    std::map<std::string, std::shared_ptr<OZPreferenceBundle>> _bundleByPkgId;
    std::map<std::string, OZPackageInfo::CSAddonArray> _addonsByPkgId;
};

/// Waits for the lists to be free, and takes them.
class OZPackageWorkspace::Turn {
  public:
    explicit Turn(std::binary_semaphore& free)
        : _free(free) {
        _free.acquire();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { _free.release(); }

  private:
    std::binary_semaphore& _free;
};

OZPackageWorkspace::OZPackageWorkspace(platform::Device& device)
    : _device(device)
    , _queue(platform::Queue::serial("packages")) {
    aggregateInBackground();
}

OZPackageWorkspace::~OZPackageWorkspace() = default;

void OZPackageWorkspace::aggregateInBackground() {
    _free.acquire();
    _queue.async([this] {
        Aggregation(*this).run();
        _finishedLoading = true;
        _free.release();
    });
}

OZCSAddonList& OZPackageWorkspace::CSAddonList_noLock() {
    return madeOnFirstUse(_CSAddonList, _device);
}

OZPreferenceBundleList& OZPackageWorkspace::prefBundleList_noLock() {
    return madeOnFirstUse(_prefBundleList, _device);
}

OZPackageList& OZPackageWorkspace::packageList_noLock() {
    return madeOnFirstUse(_packageList, _device);
}

OZPackageWorkspace::PackageInfoByIdentifier& OZPackageWorkspace::packageInfoByPkgId_noLock() {
    return madeOnFirstUse(_packageInfoByPkgId);
}

OZCSAddonList& OZPackageWorkspace::CSAddonList() {
    const Turn turn(_free);
    return CSAddonList_noLock();
}

OZPreferenceBundleList& OZPackageWorkspace::prefBundleList() {
    const Turn turn(_free);
    return prefBundleList_noLock();
}

OZPackageList& OZPackageWorkspace::packageList() {
    const Turn turn(_free);
    return packageList_noLock();
}

const OZPackageWorkspace::PackageInfoByIdentifier& OZPackageWorkspace::packageInfoByPkgId() {
    const Turn turn(_free);
    return packageInfoByPkgId_noLock();
}

std::shared_ptr<OZPackageInfo> OZPackageWorkspace::infoForPackageWithIdentifier(std::string_view identifier) {
    const auto& summaries = packageInfoByPkgId();
    const auto found = summaries.find(identifier);
    return found == summaries.end() ? nullptr : found->second;
}

OZPackageInfo::CSAddonArray OZPackageWorkspace::CSAddonDependenciesForPkgId(std::string_view identifier) {
    return addonsOfLinkedPackages(identifier, &OZPackage::recursiveDependencies);
}

OZPackageInfo::CSAddonArray OZPackageWorkspace::CSAddonDependantsForPkgId(std::string_view identifier) {
    return addonsOfLinkedPackages(identifier, &OZPackage::recursiveDependants);
}

OZPackageInfo::CSAddonArray
OZPackageWorkspace::addonsOfLinkedPackages(std::string_view identifier,
                                           std::vector<OZPackage*> (OZPackage::*linked)() const) {
    OZPackageInfo::CSAddonArray addons;
    const auto package = packageList().packageWithIdentifier(identifier);
    if (!package) {
        return addons;
    }
    for (const OZPackage* other : ((*package).*linked)()) {
        if (const auto info = infoForPackageWithIdentifier(other->identifier())) {
            addons.insert(addons.end(), info->CSAddons().begin(), info->CSAddons().end());
        }
    }
    return addons;
}
