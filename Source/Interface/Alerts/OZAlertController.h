#pragma once

#include "Interface/Alerts/OZACConcrete.h"
#include "Interface/Alerts/OZAlertAction.h"
#include "Interface/RepeatingTimer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct InterfaceContext;

/// A dialog or a sheet, whatever draws it: its rules, its countdown and its life. What is shown lives until
/// it is gone, though nobody else holds it. Who breaks a rule gets platform::Exception
/// ("NSInternalInconsistencyException"). Main thread only.
class OZAlertController : public std::enable_shared_from_this<OZAlertController>, private OZACDelegate {
  public:
    using Pointer = std::shared_ptr<OZAlertController>;
    using Block = std::function<void()>;
    using Actions = std::vector<OZAlertAction::Pointer>;

    /// The context outlives the controller.
    static Pointer make(InterfaceContext& context, std::string title, std::string message,
                        OZAlertStyle style);
    ~OZAlertController() override;

    /// What stands for the seconds in a message; one for all dialogs. An empty one breaks a rule.
    static const std::string& countdownPlaceholder();
    static void setCountdownPlaceholder(std::string placeholder);

    /// At most one destructive action, one cancel action and one that a countdown takes; at most two on a
    /// dialog that has a text field by then.
    void addAction(OZAlertAction::Pointer action);
    [[nodiscard]] const Actions& actions() const { return _actions; }
    /// Adds the field unless there is one. For dialogs alone, with fewer than two actions.
    void showTextField(const OZTextField& field);
    /// What stands in the field; none without one. For dialogs alone.
    [[nodiscard]] std::optional<std::string> textFieldText() const;

    [[nodiscard]] const std::string& title() const { return _title; }
    void setTitle(std::string title);
    [[nodiscard]] const std::string& message() const { return _message; }
    void setMessage(std::string message);
    [[nodiscard]] OZAlertStyle preferredStyle() const { return _style; }
    /// Seconds until the dialog goes by itself; 0 for never. Counts from its appearance.
    void setAutoDismissTimeout(uint64_t seconds) { _autoDismissTimeout = seconds; }
    [[nodiscard]] uint64_t autoDismissTimeout() const { return _autoDismissTimeout; }
    void setWillDismissBlock(Block block) { _willDismissBlock = std::move(block); }
    void setDidDismissBlock(Block block) { _didDismissBlock = std::move(block); }

    /// Over all screens; for dialogs alone.
    void show();
    /// In a screen, which a sheet must have.
    void show(OZViewController* screen, const AlertAnchor& anchor = {},
              const Rectangle& rectangle = Rectangle::null());
    void dismiss() { _concrete->dismiss(); }

  private:
    OZAlertController(InterfaceContext& context, std::string title, std::string message, OZAlertStyle style);

    void concreteControllerWillShow() override;
    void concreteControllerWillDismiss() override;
    void concreteControllerDidDismiss() override;

    void checkTextFieldSupport() const;
    void checkTextFieldMaxActions() const;
    void startAutoDismissTimer();
    void autoDismissTimerTick();
    [[nodiscard]] std::string countdownMessage() const;

    InterfaceContext& _context;
    std::unique_ptr<OZACConcrete> _concrete;
    std::string _title;
    std::string _message;
    OZAlertStyle _style;
    Actions _actions;
    bool _hasTextField = false;
    bool _hasAutoDismissAction = false;
    bool _hasCancelAction = false;
    bool _hasDestructiveAction = false;
    bool _shouldPerformAutoDismissAction = false;
    uint64_t _autoDismissTimeout = 0;
    std::optional<RepeatingTimer> _autoDismissTimer;
    /// The message as it was given, where it has a place for the seconds, which begins at
    /// `_placeholderStart`.
    std::optional<std::string> _countdownMessageFormat;
    size_t _placeholderStart = 0;
    size_t _placeholderLength = 0;
    Block _willDismissBlock;
    Block _didDismissBlock;
};
