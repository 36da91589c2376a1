#pragma once

#include "Interface/OZViewController.h"

namespace platform {
class NotificationCenter;
}

/// What is known of a keyboard on the screen, as the host tells it.
class OZKeyboardListener : public OZKeyboardState {
  public:
    /// The centre outlives the listener.
    explicit OZKeyboardListener(platform::NotificationCenter& center)
        : _center(center) {}

    /// In the window, in points; tells the screens.
    void keyboardChanged(bool isVisible, const Rectangle& frame) {
        _isVisible = isVisible;
        _frame = frame;
        _center.post(notification, static_cast<OZKeyboardState*>(this));
    }

    [[nodiscard]] bool isKeyboardVisible() const override { return _isVisible; }
    [[nodiscard]] Rectangle keyboardFrame() const override { return _frame; }

  private:
    platform::NotificationCenter& _center;
    bool _isVisible = false;
    Rectangle _frame;
};
