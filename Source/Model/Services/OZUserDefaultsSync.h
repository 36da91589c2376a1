#pragma once

#include "Platform/Device/UserDefaults.h"

/// An object whose state is stored in the user defaults. It holds the state in memory and is told when to
/// load and when to write it.
class OZUserDefaultsSync {
  public:
    virtual ~OZUserDefaultsSync() = default;

    /// Registers the values that serve where nothing is stored.
    virtual void registerDefaults() {}
    virtual void loadDefaults() = 0;
    /// Puts the current state into the defaults, which are about to be saved.
    virtual void writeDefaults() = 0;
};

/// Registers what belongs to no object: warnings are shown unless the user switched them off. To be called
/// where the defaults of a device are first obtained.
void registerDefaultSettings(platform::UserDefaults& defaults);

/// Lets the object register its defaults and load its state, and from then on write it before every save. The
/// object outlives the last save.
void registerObject(platform::UserDefaults& defaults, OZUserDefaultsSync& object);
