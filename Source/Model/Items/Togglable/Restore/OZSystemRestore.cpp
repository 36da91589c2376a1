#include "Model/Items/Togglable/Restore/OZSystemRestore.h"

#include "Model/Items/Togglable/Daemons/OZDaemonList.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Packages/OZPackageWorkspace.h"

#include <tuple>

namespace {

void enableAll(OZTogglableItemList& list) {
    list.setEnabledState(true);
    std::ignore = list.applyChanges();
}

} // namespace

OZSystemRestore::OZSystemRestore(OZPackageWorkspace& packageWorkspace, OZDaemonList& daemonList)
    : _daemonList(daemonList)
    , _packageWorkspace(packageWorkspace) {}

void OZSystemRestore::restore() {
    enableAll(_packageWorkspace.CSAddonList());
    enableAll(_packageWorkspace.prefBundleList());
    enableAll(_daemonList);
}
