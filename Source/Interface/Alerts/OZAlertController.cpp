#include "Interface/Alerts/OZAlertController.h"

#include "Interface/InterfaceContext.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Error.h"

#include <algorithm>

namespace {

constexpr double tick = 1;

[[noreturn]] void breakRule(const char* reason) {
    throw platform::Exception("NSInternalInconsistencyException", reason);
}

std::string& placeholder() {
    static std::string placeholder = "<OZAlertControllerCountdown>";
    return placeholder;
}

} // namespace

OZAlertController::Pointer OZAlertController::make(InterfaceContext& context, std::string title,
                                                   std::string message, OZAlertStyle style) {
    return Pointer(new OZAlertController(context, std::move(title), std::move(message), style));
}

OZAlertController::OZAlertController(InterfaceContext& context, std::string title, std::string message,
                                     OZAlertStyle style)
    : _context(context)
    , _concrete(context.host.makeAlert(style))
    , _style(style) {
    _concrete->setDelegate(*this);
    setTitle(std::move(title));
    setMessage(std::move(message));
}

OZAlertController::~OZAlertController() = default;

const std::string& OZAlertController::countdownPlaceholder() {
    return placeholder();
}

void OZAlertController::setCountdownPlaceholder(std::string text) {
    if (text.empty()) {
        breakRule("Default countdown placeholder cannot be empty or nil.");
    }
    placeholder() = std::move(text);
}

void OZAlertController::addAction(OZAlertAction::Pointer action) {
    if (action->style() == OZAlertActionStyle::destructive) {
        if (_hasDestructiveAction) {
            breakRule(
                "OZAlertController can only have one action with a style of UIAlertActionStyleDestructive.");
        }
        _hasDestructiveAction = true;
    }
    if (action->style() == OZAlertActionStyle::cancel) {
        if (_hasCancelAction) {
            breakRule("OZAlertController can only have one action with a style of UIAlertActionStyleCancel.");
        }
        _hasCancelAction = true;
    }
    if (action->autoDismissFlag()) {
        if (_hasAutoDismissAction) {
            breakRule(
                "OZAlertController can only have one action with the autoDismissFlag property set to YES.");
        }
        _hasAutoDismissAction = true;
    }
    checkTextFieldMaxActions();
    _actions.push_back(action);
    _concrete->addAction(std::move(action));
}

void OZAlertController::checkTextFieldMaxActions() const {
    if (_style == OZAlertStyle::alert && _actions.size() >= 2 && _hasTextField) {
        breakRule("OZAlertController can have a maximum of two actions when it has a text field.");
    }
}

void OZAlertController::checkTextFieldSupport() const {
    if (_style != OZAlertStyle::alert) {
        breakRule("Text field is only supported on an alert with style UIAlertControllerStyleAlert.");
    }
}

void OZAlertController::showTextField(const OZTextField& field) {
    checkTextFieldSupport();
    checkTextFieldMaxActions();
    if (!_hasTextField) {
        _hasTextField = true;
        _concrete->addTextField(field);
    }
}

std::optional<std::string> OZAlertController::textFieldText() const {
    checkTextFieldSupport();
    return _hasTextField ? std::optional(_concrete->textFieldText()) : std::nullopt;
}

void OZAlertController::setTitle(std::string title) {
    _title = std::move(title);
    _concrete->setTitle(_title);
}

void OZAlertController::setMessage(std::string message) {
    _message = std::move(message);
    _concrete->setMessage(_message);
}

void OZAlertController::show() {
    if (_style != OZAlertStyle::alert) {
        breakRule("The 'show' method is only supported on an alert with style UIAlertControllerStyleAlert.");
    }
    show(nullptr);
}

void OZAlertController::show(OZViewController* screen, const AlertAnchor& anchor,
                             const Rectangle& rectangle) {
    if (screen == nullptr && _style == OZAlertStyle::actionSheet) {
        breakRule("A valid view controller is required to display an alert with style "
                  "UIAlertControllerStyleActionSheet.");
    }
    _context.alertControllers.insert(shared_from_this());
    _concrete->show(screen, anchor, rectangle);
}

void OZAlertController::concreteControllerWillShow() {
    if (_autoDismissTimeout > 0) {
        startAutoDismissTimer();
    }
}

void OZAlertController::concreteControllerWillDismiss() {
    if (_willDismissBlock) {
        _willDismissBlock();
    }
}

void OZAlertController::concreteControllerDidDismiss() {
    const Pointer alive = shared_from_this();
    _autoDismissTimer.reset();
    if (_shouldPerformAutoDismissAction) {
        const auto flagged =
            std::ranges::find_if(_actions, [](const auto& action) { return action->autoDismissFlag(); });
        if (flagged != _actions.end()) {
            (*flagged)->performHandler();
        }
    }
    if (_didDismissBlock) {
        _didDismissBlock();
    }
    _context.alertControllers.erase(alive);
}

void OZAlertController::startAutoDismissTimer() {
    if (const size_t start = _message.find(placeholder()); start != std::string::npos) {
        _countdownMessageFormat = _message;
        _placeholderStart = start;
        _placeholderLength = placeholder().size();
        setMessage(countdownMessage());
    }
    _autoDismissTimer.emplace(_context.device.mainQueue(), tick, [this] { autoDismissTimerTick(); });
}

std::string OZAlertController::countdownMessage() const {
    std::string message = *_countdownMessageFormat;
    return message.replace(_placeholderStart, _placeholderLength, std::to_string(_autoDismissTimeout));
}

void OZAlertController::autoDismissTimerTick() {
    const bool isLast = _autoDismissTimeout == 1;
    --_autoDismissTimeout;
    if (_countdownMessageFormat) {
        setMessage(countdownMessage());
    }
    if (isLast) {
        _shouldPerformAutoDismissAction = true;
        dismiss();
    }
}
