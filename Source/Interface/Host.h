#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <string_view>

class ImageSource;
class OZACConcrete;
class OZViewController;
struct Transition;
enum class OZActivityHUD;
enum class OZAlertStyle : int;

/// A place in a window, in points.
struct Rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    /// The one that stands for none.
    static constexpr Rectangle null() {
        return {.x = std::numeric_limits<double>::max(), .y = std::numeric_limits<double>::max()};
    }
    bool operator==(const Rectangle&) const = default;
};

/// What the interface asks of a toolkit beyond its views: to show screens and dialogs, and to do what an
/// application does on its desktop. All of it on the main thread.
class Host {
  public:
    virtual ~Host() = default;

    /// Gives a screen its view if it has none yet.
    virtual void prepare(OZViewController& screen) = 0;
    /// Draws how one screen follows another one, and calls `done` when that is over.
    virtual void transition(const Transition& transition, std::function<void()> done) = 0;

    /// A dialog that is not shown yet.
    [[nodiscard]] virtual std::unique_ptr<OZACConcrete> makeAlert(OZAlertStyle style) = 0;

    /// Shows the overlay of an activity that cannot be left until it is taken away.
    virtual void presentActivity(OZActivityHUD hud) = 0;
    virtual void dismissActivity(bool success) = 0;

    /// Opens a URL by the desktop; false where nobody does.
    virtual bool openURL(std::string_view url) = 0;
    [[nodiscard]] virtual bool canOpenURL(std::string_view url) const = 0;

    /// Keeps the desktop from going to sleep and its session from ending, or lets it again.
    virtual void setIdleTimerDisabled(bool disabled) = 0;

    /// The height of the screen that the window is on, in points.
    [[nodiscard]] virtual double screenHeight() const = 0;
    /// The program's own drawings, for as long as the host lives.
    [[nodiscard]] virtual const ImageSource& imageSource() const = 0;
};
