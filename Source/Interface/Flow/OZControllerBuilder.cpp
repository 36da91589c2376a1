#include "Interface/Flow/OZControllerBuilder.h"

#include "Interface/Alerts/AlertPresets.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Flow/OZAppDelegate.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device/Device.h"

/// No advertisement is ever there, so whoever waits for its end is called at once.
class OZControllerBuilder::NoAdvertisements : public OZAdController {
  public:
    [[nodiscard]] bool isAdBannerVisible() const override { return false; }
    [[nodiscard]] double adBannerHeight() const override { return 0; }
    void showInterstitial(OZViewController& /*over*/, double /*autodismissDelay*/,
                          std::function<void()> handler) override {
        handler();
    }
};

class OZControllerBuilder::TextProvider : public OZTextViewControllerProvider {
  public:
    explicit TextProvider(InterfaceContext& context)
        : _context(context)
        , _log(context, [&context] { context.navigator.dismissAll(); }) {
        _log.setTitleKey("Log");
    }

    // Another thread reads: a long log, or a file system that hangs, must not hold up the window.
    void presentTextViewControllerOfType(OZTextViewControllerType /*type*/, OZViewController& over) override {
        auto& device = _context.device;
        device.highPriorityQueue().async([this, &device, &over] {
            auto log = std::make_shared<platform::Result<std::string>>(
                device.fileManager().contentsAtPath(OZCleanupLogger::logFilePath));
            device.mainQueue().post([this, &over, log] { present(*log, over); });
        });
    }

  private:
    void present(platform::Result<std::string>& log, OZViewController& over) {
        if (!log) {
            const auto alert =
                alerts::okAlert(_context, [this](OZAlertAction&) { _context.navigator.dismissAll(); });
            alert->setMessage(_context.text("NOFILEMSG"));
            alert->show(&over);
            return;
        }
        _log.setContent(std::move(*log));
        _context.navigator.present(_log);
    }

    InterfaceContext& _context;
    OZTextViewController _log;
};

OZControllerBuilder::OZControllerBuilder(OZModelBuilder* modelBuilder, OZAppDelegate* applicationDelegate,
                                         InterfaceContext& context, OZImageCache& imageCache,
                                         OZKeyboardState& keyboardListener)
    : _modelBuilder((modelBuilder != nullptr && applicationDelegate != nullptr)
                        ? *modelBuilder
                        : throw platform::AssertionFailure("modelBuilder && applicationDelegate"))
    , _applicationDelegate(*applicationDelegate)
    , _context(context)
    , _imageCache(imageCache)
    , _keyboardListener(keyboardListener) {}

OZControllerBuilder::~OZControllerBuilder() = default;

OZAdController& OZControllerBuilder::adController() {
    if (!_adController) {
        _adController = std::make_unique<NoAdvertisements>();
    }
    return *_adController;
}

OZCleanupViewController& OZControllerBuilder::cleanupViewController() {
    if (!_cleanupViewController) {
        _cleanupViewController =
            std::make_unique<OZCleanupViewController>(_context, &_modelBuilder.core(), &adController());
        _cleanupViewController->setApplication(_applicationDelegate);
        _cleanupViewController->setTextViewControllerProvider(textViewControllerProvider());
        _applicationDelegate.setCleanupViewController(*_cleanupViewController);
        configureOZViewController(*_cleanupViewController);
    }
    return *_cleanupViewController;
}

OZFlowController& OZControllerBuilder::flowController() {
    if (!_flowController) {
        _flowController = std::make_unique<OZFlowController>(this);
    }
    return *_flowController;
}

OZTextViewControllerProvider& OZControllerBuilder::textViewControllerProvider() {
    if (!_textViewControllerProvider) {
        _textViewControllerProvider = std::make_unique<TextProvider>(_context);
    }
    return *_textViewControllerProvider;
}

void OZControllerBuilder::showRootViewController() {
    _tabs = {buildPlaceholder("ADVANCEDLBL"), buildCleanViewController(), buildPlaceholder("SETLBL")};
    _context.navigator.start({_tabs[0].get(), _tabs[1].get(), _tabs[2].get()}, 1);
}

std::unique_ptr<OZCleanViewController> OZControllerBuilder::buildCleanViewController() {
    auto screen =
        std::make_unique<OZCleanViewController>(_context, _modelBuilder.core(), cleanupViewController());
    configureOZViewController(*screen);
    return screen;
}

// Until their screens are built, the tabs say where to find what they will have.
std::unique_ptr<OZTextViewController> OZControllerBuilder::buildPlaceholder(const char* titleKey) {
    auto screen = std::make_unique<OZTextViewController>(_context, nullptr);
    screen->setTitleKey(titleKey);
    screen->setTabTitleKey(titleKey);
    screen->setContent("These are reached from a terminal so far:\n\n    ozvarine --device DIR -cli\n");
    configureOZViewController(*screen);
    return screen;
}

void OZControllerBuilder::configureOZViewController(OZViewController& screen) {
    screen.adBannerListener = &adController();
    screen.keyboardListener = &_keyboardListener;
    screen.imageCache = &_imageCache;
}
