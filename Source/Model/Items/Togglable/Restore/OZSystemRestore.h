#pragma once

class OZDaemonList;
class OZPackageWorkspace;

/// The way back for a device that no longer behaves: enables again all that can be disabled.
class OZSystemRestore {
  public:
    /// Both outlive the restore.
    OZSystemRestore(OZPackageWorkspace& packageWorkspace, OZDaemonList& daemonList);

    /// Enables every add-on, then every preference bundle, then every daemon. Waits for the workspace. What
    /// cannot be changed stays as it is. To make the device notice is the caller's.
    void restore();

    [[nodiscard]] OZPackageWorkspace& packageWorkspace() const { return _packageWorkspace; }
    [[nodiscard]] OZDaemonList& daemonList() const { return _daemonList; }

  private:
    OZDaemonList& _daemonList;
    OZPackageWorkspace& _packageWorkspace;
};
