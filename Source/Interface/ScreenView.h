#pragma once

#include "Interface/Host.h"

/// Space at the edges of what scrolls, in points.
struct Insets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    bool operator==(const Insets&) const = default;
};

/// The view of a screen, as the screen knows it. A toolkit draws what the screen says and is told what has
/// changed.
class ScreenView {
  public:
    virtual ~ScreenView() = default;

    /// The bar's titles or buttons, or the state of editing, are other ones.
    virtual void barChanged() = 0;

    // Geometry, in points of the view.
    [[nodiscard]] virtual Rectangle bounds() const = 0;
    [[nodiscard]] virtual double navigationBarBottom() const = 0;
    [[nodiscard]] virtual double tabBarHeight() const = 0;
    [[nodiscard]] virtual double safeAreaBottom() const = 0;
    /// A rectangle of the window, in the view.
    [[nodiscard]] virtual Rectangle converted(const Rectangle& inWindow) const = 0;

    /// Whether the view scrolls, so that it has insets.
    [[nodiscard]] virtual bool isScrollable() const = 0;
    /// Content and scroll bars alike; the duration is in seconds, 0 for at once.
    virtual void setInsets(const Insets& insets, double duration) = 0;
};
