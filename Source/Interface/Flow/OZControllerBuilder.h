#pragma once

#include "Interface/Flow/OZFlowController.h"
#include "Interface/InterfaceContext.h"
#include "Interface/Screens/Clean/OZCleanViewController.h"
#include "Interface/Screens/Clean/OZCleanupViewController.h"
#include "Interface/Screens/Text/OZTextViewController.h"

#include <memory>

class OZAppDelegate;
class OZModelBuilder;

/// Makes every screen of a device and tells each what it stands on. Shared ones are made at first use and
/// kept; what a `build` operation makes is its caller's. Main thread only.
class OZControllerBuilder {
  public:
    /// Throws AssertionFailure where the model or the delegate is missing. All that is given outlives the
    /// builder.
    OZControllerBuilder(OZModelBuilder* modelBuilder, OZAppDelegate* applicationDelegate,
                        InterfaceContext& context, OZImageCache& imageCache,
                        OZKeyboardState& keyboardListener);
    OZControllerBuilder(const OZControllerBuilder&) = delete;
    OZControllerBuilder& operator=(const OZControllerBuilder&) = delete;
    ~OZControllerBuilder();

    [[nodiscard]] InterfaceContext& context() const { return _context; }

    // Shared.
    OZAdController& adController();
    OZCleanupViewController& cleanupViewController();
    OZFlowController& flowController();
    OZTextViewControllerProvider& textViewControllerProvider();
    /// Shows the three tabs, tools, Clean and settings, with Clean selected.
    void showRootViewController();

    std::unique_ptr<OZCleanViewController> buildCleanViewController();

  private:
    class NoAdvertisements;
    class TextProvider;

    void configureOZViewController(OZViewController& screen);
    std::unique_ptr<OZTextViewController> buildPlaceholder(const char* titleKey);

    OZModelBuilder& _modelBuilder;
    OZAppDelegate& _applicationDelegate;
    InterfaceContext& _context;
    OZImageCache& _imageCache;
    OZKeyboardState& _keyboardListener;
    std::unique_ptr<OZAdController> _adController;
    std::unique_ptr<OZTextViewControllerProvider> _textViewControllerProvider;
    std::unique_ptr<OZCleanupViewController> _cleanupViewController;
    std::unique_ptr<OZFlowController> _flowController;
    std::array<std::unique_ptr<OZViewController>, 3> _tabs;
};
