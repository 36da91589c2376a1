#include "Interface/Alerts/AlertPresets.h"

#include "Interface/InterfaceContext.h"

#include <algorithm>

namespace alerts {

namespace {

using enum OZAlertActionStyle;

constexpr uint64_t countdownSeconds = 10;

/// The texts of the language files name the seconds so.
[[maybe_unused]] const bool placeholderIsSet = [] {
    OZAlertController::setCountdownPlaceholder("<countdown>");
    return true;
}();

} // namespace

OZAlertController::Pointer defaultAlertWithActions(InterfaceContext& context,
                                                   const OZAlertController::Actions& actions) {
    auto alert = OZAlertController::make(context, context.displayName, "", OZAlertStyle::alert);
    for (const auto& action : actions) {
        if (action != nullptr) {
            alert->addAction(action);
        }
    }
    if (std::ranges::any_of(alert->actions(), [](const auto& action) { return action->autoDismissFlag(); })) {
        alert->setAutoDismissTimeout(countdownSeconds);
    }
    return alert;
}

OZAlertController::Pointer okAlert(InterfaceContext& context, Handler handler, bool autoDismiss) {
    auto okay = OZAlertAction::make("Ok", standard, std::move(handler));
    okay->setAutoDismissFlag(autoDismiss);
    return defaultAlertWithActions(context, {okay});
}

OZAlertController::Pointer yesNoAlert(InterfaceContext& context, OZDeviceAction deviceAction) {
    if (deviceAction == OZDeviceAction::none) {
        return nullptr;
    }
    auto alert = defaultAlertWithActions(
        context, {OZAlertAction::make(context, context.text("YES"), standard, deviceAction),
                  OZAlertAction::make(context.text("NO"), cancel)});
    if (deviceAction == OZDeviceAction::reboot) {
        alert->setMessage(context.text("REBOOTMSG"));
    } else if (deviceAction <= OZDeviceAction::rebuildUICacheAndRespring) {
        alert->setMessage(context.text("RESPRINGMSG2"));
    }
    return alert;
}

OZAlertController::Pointer yesNoAlert(InterfaceContext& context, Handler yes, Handler no, bool autoDismiss) {
    auto agree = OZAlertAction::make(context.text("YES"), standard, std::move(yes));
    agree->setAutoDismissFlag(autoDismiss);
    return defaultAlertWithActions(context,
                                   {agree, OZAlertAction::make(context.text("NO"), cancel, std::move(no))});
}

OZAlertController::Pointer defaultActionSheet(InterfaceContext& context) {
    auto sheet = OZAlertController::make(context, "", "", OZAlertStyle::actionSheet);
    sheet->addAction(OZAlertAction::make(context.text("CANCEL"), cancel));
    return sheet;
}

OZAlertController::Pointer analyzeCleanSheet(InterfaceContext& context, Handler analyze, Handler clean,
                                             bool testModeWarning) {
    auto sheet = defaultActionSheet(context);
    sheet->addAction(OZAlertAction::make(context.text("ANALYZEBTN"), standard, std::move(analyze)));
    sheet->addAction(OZAlertAction::make(context.text("CLEANBTN"), destructive, std::move(clean)));
    if (testModeWarning) {
        sheet->setTitle(context.text("TESTMODEADV"));
    }
    return sheet;
}

} // namespace alerts
