#pragma once

#include "Model/Core/OZAction.h"
#include "Platform/Formats/PropertyList.h"

#include <cstddef>
#include <optional>

class OZControllerBuilder;
class OZViewController;

/// Jumps to screens from outside of them.
class OZFlowController {
  public:
    /// Throws AssertionFailure without a builder, which outlives the controller.
    explicit OZFlowController(OZControllerBuilder* controllerBuilder);

    /// Cleans by the stored choices and closes the program with the last dialog.
    void showCleanupViewControllerAndExit();
    /// Without settings, those of the engine.
    void showCleanupViewControllerWithSettings(const std::optional<platform::Dictionary>& settings,
                                               bool analyze);
    void showCleanupViewControllerWithAction(OZAction action, bool analyze);
    /// Selects a tab and gives its first screen.
    OZViewController& selectTabBarItemAtIndex(size_t index);

  private:
    OZControllerBuilder& _builder;
};
