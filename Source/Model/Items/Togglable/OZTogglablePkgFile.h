#pragma once

#include "Model/Items/Togglable/OZTogglableFile.h"

class OZPackage;

/// A file that belongs to a package. While it is disabled, its disabled path stands in the package's list of
/// files, too, so that the file goes when the package is removed.
class OZTogglablePkgFile : public OZTogglableFile {
  public:
    using OZTogglableFile::OZTogglableFile;

    /// Null until the owner is known.
    [[nodiscard]] const std::shared_ptr<OZPackage>& package() const { return _package; }
    void setPackage(std::shared_ptr<OZPackage> package) { _package = std::move(package); }

    /// True if the file was moved, whatever became of the package's list.
    bool applyChanges() override;

  private:
    std::shared_ptr<OZPackage> _package;
};
