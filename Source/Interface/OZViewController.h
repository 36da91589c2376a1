#pragma once

#include "Interface/InterfaceContext.h"
#include "Interface/ScreenView.h"
#include "Platform/Threads/NotificationCenter.h"

#include <functional>
#include <optional>
#include <string>

/// Tells of a banner below all screens. A screen looks at it when it appears and whenever
/// "OZAdBannerStateNotification" is posted about it.
class OZAdBannerState {
  public:
    static constexpr std::string_view notification = "OZAdBannerStateNotification";

    virtual ~OZAdBannerState() = default;
    [[nodiscard]] virtual bool isAdBannerVisible() const = 0;
    /// Points.
    [[nodiscard]] virtual double adBannerHeight() const = 0;
};

/// Tells of a keyboard on the screen; "OZKeyboardStateNotification" is posted about it.
class OZKeyboardState {
  public:
    static constexpr std::string_view notification = "OZKeyboardStateNotification";

    virtual ~OZKeyboardState() = default;
    [[nodiscard]] virtual bool isKeyboardVisible() const = 0;
    /// In the window, in points.
    [[nodiscard]] virtual Rectangle keyboardFrame() const = 0;
};

class OZImageCache;

struct BarButton {
    std::string title;
    bool isEnabled = true;
    std::function<void()> action;
};

/// What a screen shows in the bar above it.
struct NavigationItem {
    std::string title;
    std::string backButtonTitle;
    std::optional<BarButton> leftButton;
    std::optional<BarButton> rightButton;
};

/// A screen: what it says and does, without a toolkit. A host gives it a view, and tells it of its
/// appearance. Main thread only.
class OZViewController {
  public:
    using Callback = std::function<void()>;

    /// The context outlives the screen.
    explicit OZViewController(InterfaceContext& context);
    OZViewController(const OZViewController&) = delete;
    OZViewController& operator=(const OZViewController&) = delete;
    virtual ~OZViewController() = default;

    /// Whether screens turn with the device; one switch for all.
    static bool autorotationEnabled();
    static void setAutorotationEnabled(bool enabled);

    // What a host calls.
    /// Gives the screen its view, which outlives it, and builds its content.
    void load(ScreenView& view);
    [[nodiscard]] bool isLoaded() const { return _view != nullptr; }
    virtual void viewWillAppear(bool animated);
    virtual void viewDidAppear(bool animated);
    virtual void viewWillDisappear(bool animated);
    virtual void viewDidDisappear(bool animated);
    /// The window changes its size; the duration of that is in seconds.
    void viewWillTransition(double duration) { handleAnimatedRotationWithDuration(duration); }
    void viewDidTransition() { handleRotation(); }

    [[nodiscard]] bool isViewVisible() const { return _isViewVisible; }
    [[nodiscard]] const NavigationItem& navigationItem() const { return _navigationItem; }
    /// The text of a screen that is the first of its tab, in the user's language.
    [[nodiscard]] std::string tabTitle() const { return text(_tabTitleKey); }
    [[nodiscard]] bool isEditing() const { return _isEditing; }
    virtual void setEditing(bool editing, bool animated);
    void toggleEditing() { setEditing(!_isEditing, true); }
    /// "Edit" or "Done" in the user's language.
    [[nodiscard]] const std::string& editButtonTitle() const { return _editButtonTitle; }

    // Each runs at the screen's next transition of its kind, and not again.
    Callback willAppearCallback;
    Callback didAppearCallback;
    Callback willDisappearCallback;
    Callback didDisappearCallback;

    /// What the screen shows besides its own; null where there is none. They outlive the screen.
    OZAdBannerState* adBannerListener = nullptr;
    OZKeyboardState* keyboardListener = nullptr;
    OZImageCache* imageCache = nullptr;

    // Insets of what scrolls, in points.
    [[nodiscard]] virtual double topInset() const;
    [[nodiscard]] virtual double bottomInset() const;
    [[nodiscard]] virtual Insets dynamicInsets() const {
        return {.top = topInset(), .bottom = bottomInset()};
    }

    /// Fills in all texts. Runs when the screen is loaded and at every change of the language, visible or
    /// not; screens call the base first.
    virtual void localize();

  protected:
    /// The content, without texts: those come from `localize`.
    virtual void viewDidLoad() {}
    virtual void updateViewInsetsAnimated(bool animated);
    virtual void adBannerWillChangeState() { updateViewInsetsAnimated(_isViewVisible); }
    virtual void keyboardWillChangeState() { updateViewInsetsAnimated(_isViewVisible); }
    virtual void handleRotation() {}
    virtual void handleAnimatedRotationWithDuration(double /*duration*/) {}

    [[nodiscard]] InterfaceContext& context() const { return _context; }
    /// A text in the user's language.
    [[nodiscard]] std::string text(std::string_view key) const { return _context.text(key); }
    /// Null until the screen is loaded.
    [[nodiscard]] ScreenView* view() const { return _view; }
    void setTabTitleKey(std::string_view key) { _tabTitleKey = key; }
    /// To be followed by `barChanged`.
    [[nodiscard]] NavigationItem& bar() { return _navigationItem; }
    void barChanged() const;

  private:
    static void runOnce(Callback& callback);

    InterfaceContext& _context;
    ScreenView* _view = nullptr;
    NavigationItem _navigationItem;
    std::string _editButtonTitle;
    std::string_view _tabTitleKey;
    bool _isViewVisible = false;
    bool _isEditing = false;
    platform::Observation _languageChange;
    platform::Observation _bannerChange;
    platform::Observation _keyboardChange;
};
