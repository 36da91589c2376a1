#include "Interface/Flow/OZFlowController.h"

#include "Interface/Flow/Navigator.h"
#include "Interface/Flow/OZControllerBuilder.h"
#include "Platform/Files/Error.h"

OZFlowController::OZFlowController(OZControllerBuilder* controllerBuilder)
    : _builder(controllerBuilder != nullptr ? *controllerBuilder
                                            : throw platform::AssertionFailure("controllerBuilder")) {}

void OZFlowController::showCleanupViewControllerAndExit() {
    _builder.cleanupViewController().setExitOnComplete(true);
    showCleanupViewControllerWithSettings(std::nullopt, false);
}

void OZFlowController::showCleanupViewControllerWithSettings(
    const std::optional<platform::Dictionary>& settings, bool analyze) {
    _builder.cleanupViewController().startCleanup(settings, analyze);
}

void OZFlowController::showCleanupViewControllerWithAction(OZAction action, bool analyze) {
    _builder.cleanupViewController().startAction(action, analyze);
}

OZViewController& OZFlowController::selectTabBarItemAtIndex(size_t index) {
    auto& tabs = _builder.context().navigator;
    if (tabs.selectedTab() != index) {
        tabs.selectTab(index);
    }
    return tabs.root(index);
}
