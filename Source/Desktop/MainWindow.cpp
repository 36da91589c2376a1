#include "Desktop/MainWindow.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QQmlContext>
#include <QQuickWindow>
#include <QSessionManager>

MainWindow::MainWindow(DeviceOpener& opener, DeviceFlow::Sources sources, std::function<void()> close)
    : _flow(
          opener, _queue, _host, std::move(sources),
          [this] {
              if (auto* device = _flow.deviceWindow(); device != nullptr) {
                  _host.setNavigator(device->navigator());
                  _images->setCache(&device->imageCache());
              }
              _chooser.update();
          },
          std::move(close))
    , _memoryPressure([this] {
        if (auto* device = _flow.deviceWindow(); device != nullptr) {
            device->warnOfMemory();
        }
    }) {
    // From a static library nothing else would link them.
    Q_INIT_RESOURCE(pages);
    _chooser.setFlow(_flow);
    followTheSession();
    followTheKeyboard();
    auto* const context = _engine.rootContext();
    context->setContextProperty("host", &_host);
    context->setContextProperty("settings", &_settings);
    context->setContextProperty("chooser", &_chooser);
    context->setContextProperty("images", _images);
    _engine.addImageProvider("oz", _images);
}

QQuickWindow* MainWindow::show() {
    _engine.load(QUrl("qrc:/Pages/Main.qml"));
    return _engine.rootObjects().isEmpty() ? nullptr
                                           : qobject_cast<QQuickWindow*>(_engine.rootObjects().front());
}

void MainWindow::followTheKeyboard() {
    auto* const keyboard = QGuiApplication::inputMethod();
    const auto tell = [this, keyboard] {
        if (auto* device = _flow.deviceWindow(); device != nullptr) {
            const QRectF frame = keyboard->keyboardRectangle();
            device->keyboardListener().keyboardChanged(
                keyboard->isVisible() && !frame.isEmpty(),
                {.x = frame.x(), .y = frame.y(), .width = frame.width(), .height = frame.height()});
        }
    };
    QObject::connect(keyboard, &QInputMethod::visibleChanged, &_host, tell);
    QObject::connect(keyboard, &QInputMethod::keyboardRectangleChanged, &_host, tell);
}

void MainWindow::followTheSession() {
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, &_host, [this] {
        if (auto* device = _flow.deviceWindow(); device != nullptr) {
            device->delegate().applicationDidEnterBackground();
        } else {
            QGuiApplication::quit();
        }
    });
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &_host, [this](QSessionManager& session) {
        if (!_flow.windowShouldClose()) {
            session.cancel();
        }
    });
    QObject::connect(
        qGuiApp, &QGuiApplication::applicationStateChanged, &_host, [this](Qt::ApplicationState state) {
            if (auto* device = _flow.deviceWindow(); device != nullptr && state != Qt::ApplicationActive) {
                device->delegate().saveChoices();
            }
        });
}
