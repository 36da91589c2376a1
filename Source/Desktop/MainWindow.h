#pragma once

#include "Desktop/Adapters/ChooserAdapter.h"
#include "Desktop/Adapters/DesktopHost.h"
#include "Desktop/Adapters/DesktopSettings.h"
#include "Desktop/Adapters/ImageProvider.h"
#include "Desktop/Adapters/MemoryPressure.h"
#include "Desktop/Adapters/QtMainQueue.h"
#include "Interface/Flow/DeviceFlow.h"

#include <QQmlApplicationEngine>

class QQuickWindow;

/// The window with all that stands behind it. There is an application by then, and its main thread makes and
/// uses this.
class MainWindow {
  public:
    /// The opener outlives the window; `close` ends the event loop.
    MainWindow(DeviceOpener& opener, DeviceFlow::Sources sources, std::function<void()> close);

    /// Shows the window; null where its pages cannot be loaded, which Qt has told.
    QQuickWindow* show();
    /// Opens the device that the start names, or has a person choose one.
    void start() { _flow.start(); }
    [[nodiscard]] DeviceFlow& flow() { return _flow; }

  private:
    void followTheSession();
    void followTheKeyboard();

    QtMainQueue _queue;
    DesktopHost _host;
    DesktopSettings _settings;
    ChooserAdapter _chooser;
    // The engine owns it, and goes before the caches that it asks.
    ImageProvider* _images = new ImageProvider;
    DeviceFlow _flow;
    MemoryPressure _memoryPressure;
    struct Drawn {
        DesktopHost& host;
        ~Drawn() { host.forgetScreens(); }
    } _drawn{_host};
    // Pages look at all of the above, so they go first.
    QQmlApplicationEngine _engine;
};
