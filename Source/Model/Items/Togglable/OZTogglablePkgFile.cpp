#include "Model/Items/Togglable/OZTogglablePkgFile.h"

#include "Model/Packages/OZPackage.h"

bool OZTogglablePkgFile::applyChanges() {
    const bool changed = OZTogglableFile::applyChanges();
    if (changed && _package) {
        std::ignore = currentEnabledState() ? _package->removeFilePath(disabledPath())
                                            : _package->addFilePath(disabledPath());
    }
    return changed;
}
