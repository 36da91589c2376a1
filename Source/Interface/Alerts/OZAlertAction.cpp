#include "Interface/Alerts/OZAlertAction.h"

#include "Interface/Host.h"
#include "Interface/InterfaceContext.h"
#include "Platform/Device/Device.h"

namespace {

// Seconds in which the overlay gets its place before the interface goes.
constexpr double overlayTime = 1;

} // namespace

OZAlertAction::Pointer OZAlertAction::make(InterfaceContext& context, std::string title,
                                           OZAlertActionStyle style, OZDeviceAction deviceAction,
                                           OZActivityHUD hud) {
    if (deviceAction == OZDeviceAction::none) {
        return nullptr;
    }
    return make(std::move(title), style, [&context, deviceAction, hud](OZAlertAction&) {
        context.host.presentActivity(hud);
        std::ignore = context.device.mainQueue().postAfter(
            overlayTime, [&context, deviceAction] { context.performDeviceAction(deviceAction); });
    });
}

void OZAlertAction::performHandler() {
    if (_handler) {
        _handler(*this);
    }
}
