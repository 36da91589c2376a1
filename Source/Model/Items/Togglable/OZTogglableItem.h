#pragma once

#include "Model/Items/OZItem.h"

/// Something that can be switched off and on again. It has two states: the one that the device is in, and the
/// one that the user wants. Setting a state changes the wanted one alone; the device changes with
/// `applyChanges`. Failures are not reported: the states tell what came of it. Nothing is locked.
class OZTogglableItem : public OZItem {
  public:
    /// Makes the device match the wanted state; true if something changed.
    virtual bool applyChanges() = 0;
    /// Makes the wanted state match the device; true if something changed.
    virtual bool discardChanges() = 0;
    /// The device's state, found out anew at every call.
    [[nodiscard]] virtual bool currentEnabledState() = 0;
    /// The wanted state.
    [[nodiscard]] virtual bool enabledState() = 0;
    virtual void setEnabledState(bool enabled) = 0;
};
