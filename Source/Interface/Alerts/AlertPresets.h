#pragma once

#include "Interface/Alerts/OZAlertController.h"

/// The dialogs that screens show. Their title is the program's name.
namespace alerts {

using Handler = OZAlertAction::Handler;

/// No message. Counts down from 10 seconds where one of the actions has the flag for that; null actions are
/// left out.
[[nodiscard]] OZAlertController::Pointer defaultAlertWithActions(InterfaceContext& context,
                                                                 const OZAlertController::Actions& actions);
[[nodiscard]] OZAlertController::Pointer okAlert(InterfaceContext& context, Handler handler = nullptr,
                                                 bool autoDismiss = false);
/// Asks whether to restart the interface or the device; null for the action "none".
[[nodiscard]] OZAlertController::Pointer yesNoAlert(InterfaceContext& context, OZDeviceAction deviceAction);
[[nodiscard]] OZAlertController::Pointer yesNoAlert(InterfaceContext& context, Handler yes, Handler no,
                                                    bool autoDismiss = false);
/// A sheet with nothing but its cancel action.
[[nodiscard]] OZAlertController::Pointer defaultActionSheet(InterfaceContext& context);
[[nodiscard]] OZAlertController::Pointer analyzeCleanSheet(InterfaceContext& context, Handler analyze,
                                                           Handler clean, bool testModeWarning);

} // namespace alerts
