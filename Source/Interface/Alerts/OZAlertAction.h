#pragma once

#include "Model/Tasks/OZDeviceAction.h"

#include <functional>
#include <memory>
#include <string>

struct InterfaceContext;

enum class OZAlertActionStyle : int { standard = 0, cancel = 1, destructive = 2 };

/// The overlay that is shown while a device action begins, by what it stands over.
enum class OZActivityHUD { general, cleanup };

/// A button of a dialog.
class OZAlertAction {
  public:
    using Handler = std::function<void(OZAlertAction& action)>;
    using Pointer = std::shared_ptr<OZAlertAction>;

    OZAlertAction(std::string title, OZAlertActionStyle style, Handler handler)
        : _title(std::move(title))
        , _style(style)
        , _handler(std::move(handler)) {}

    static Pointer make(std::string title, OZAlertActionStyle style, Handler handler = nullptr) {
        return std::make_shared<OZAlertAction>(std::move(title), style, std::move(handler));
    }
    /// A button that shows the overlay and, a second later, restarts the interface or the device. Null for
    /// the action "none". The context outlives it.
    static Pointer make(InterfaceContext& context, std::string title, OZAlertActionStyle style,
                        OZDeviceAction deviceAction, OZActivityHUD hud = OZActivityHUD::general);

    [[nodiscard]] const std::string& title() const { return _title; }
    [[nodiscard]] OZAlertActionStyle style() const { return _style; }
    /// Whether the end of a countdown takes this action.
    [[nodiscard]] bool autoDismissFlag() const { return _autoDismissFlag; }
    void setAutoDismissFlag(bool flag) { _autoDismissFlag = flag; }
    void performHandler();

  private:
    std::string _title;
    OZAlertActionStyle _style;
    Handler _handler;
    bool _autoDismissFlag = false;
};
