#include "Interface/Flow/DeviceWindow.h"

#include "Interface/Host.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

DeviceWindow::DeviceWindow(std::unique_ptr<OpenDevice> device, Host& host, std::function<void()> close)
    : _device(std::move(device))
    , _imageCache(makeImageCache(_device->modelBuilder(), host.imageSource()))
    , _keyboardListener(_device->modelBuilder().device().notificationCenter())
    , _navigator(host)
    , _context{.device = _device->modelBuilder().device(),
               .languages = _device->modelBuilder().localizationManager(),
               .host = host,
               .navigator = _navigator,
               .displayName = _device->modelBuilder().bundle().infoString("CFBundleDisplayName").value_or(""),
               .shortVersion =
                   _device->modelBuilder().bundle().infoString("CFBundleShortVersionString").value_or(""),
               .lookOnlyReason = _device->lookOnlyReason(),
               .performDeviceAction = [this](OZDeviceAction action) { performDeviceAction(action); }}
    , _application({.terminateWithSuccess = std::move(close),
                    .synchronizeDefaults =
                        [this] {
                            if (!_context.lookOnlyReason) {
                                std::ignore = _context.device.standardUserDefaults().synchronize();
                            }
                        }})
    , _delegate(_context, _application)
    , _controllers(&_device->modelBuilder(), &_delegate, _context, *_imageCache, _keyboardListener) {}

void DeviceWindow::warnOfMemory() {
    _context.device.notificationCenter().post(OZImageCache::memoryWarningNotification);
}

void DeviceWindow::start() {
    _controllers.showRootViewController();
    if (_context.lookOnlyReason) {
        _delegate.warn(*_context.lookOnlyReason);
    }
    for (const auto& line : _device->warnings()) {
        _delegate.warn(line);
    }
}

// On a device the program would end with the interface; here it goes on.
void DeviceWindow::performDeviceAction(OZDeviceAction action) {
    _context.device.backgroundQueue().async([this, action] {
        _device->modelBuilder().deviceActions().performAction(action);
        _context.device.mainQueue().post([this] {
            _context.host.dismissActivity(true);
            if (_controllers.cleanupViewController().exitOnComplete()) {
                _delegate.close();
            } else {
                _navigator.dismissAll();
            }
        });
    });
}
