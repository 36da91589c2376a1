#pragma once

#include "Interface/Flow/DeviceOpener.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Flow/OZAppDelegate.h"
#include "Interface/Flow/OZControllerBuilder.h"
#include "Interface/Images/OZImageCache.h"
#include "Interface/InterfaceContext.h"
#include "Interface/OZKeyboardListener.h"

#include <functional>
#include <memory>

/// The screens of the window on one device, put together. Main thread only.
class DeviceWindow {
  public:
    /// The host outlives it; `close` ends the program.
    DeviceWindow(std::unique_ptr<OpenDevice> device, Host& host, std::function<void()> close);

    [[nodiscard]] Navigator& navigator() { return _navigator; }
    [[nodiscard]] OZAppDelegate& delegate() { return _delegate; }
    [[nodiscard]] OZControllerBuilder& controllers() { return _controllers; }
    [[nodiscard]] OZImageCache& imageCache() { return *_imageCache; }
    [[nodiscard]] OZKeyboardListener& keyboardListener() { return _keyboardListener; }
    [[nodiscard]] InterfaceContext& context() { return _context; }
    /// The computer is short of memory: what can be made again goes.
    void warnOfMemory();
    /// Shows the first screen, and why nothing may be changed, where that is so.
    void start();

  private:
    void performDeviceAction(OZDeviceAction action);

    std::unique_ptr<OpenDevice> _device;
    std::unique_ptr<OZImageCache> _imageCache;
    OZKeyboardListener _keyboardListener;
    Navigator _navigator;
    InterfaceContext _context;
    platform::Application _application;
    OZAppDelegate _delegate;
    OZControllerBuilder _controllers;
};
