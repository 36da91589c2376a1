#include "Desktop/Desktop.h"

#include "Desktop/Adapters/ChooserAdapter.h"
#include "Desktop/Adapters/DesktopHost.h"
#include "Desktop/Adapters/QtMainQueue.h"
#include "Interface/Flow/DeviceFlow.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSessionManager>
#include <cstdio>
#include <cstdlib>

namespace {

// A display that cannot be reached ends Qt by an abort; a line and a status are enough.
void tell(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    std::fprintf(stderr, "ozvarine: %s\n", qPrintable(message));
    if (type == QtFatalMsg) {
        std::_Exit(EXIT_FAILURE);
    }
}

void followTheSession(QGuiApplication& application, DeviceFlow& flow) {
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application, [&flow] {
        if (flow.deviceWindow() != nullptr) {
            flow.deviceWindow()->delegate().applicationDidEnterBackground();
        } else {
            QGuiApplication::quit();
        }
    });
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application,
                     [&flow](QSessionManager& session) {
                         if (!flow.windowShouldClose()) {
                             session.cancel();
                         }
                     });
    QObject::connect(&application, &QGuiApplication::applicationStateChanged, &application,
                     [&flow](Qt::ApplicationState state) {
                         if (state != Qt::ApplicationActive && flow.deviceWindow() != nullptr) {
                             flow.deviceWindow()->delegate().saveChoices();
                         }
                     });
}

} // namespace

int ozvarineDesktop(DeviceOpener* opener, int count, char** vector) {
    qInstallMessageHandler(tell);
    QQuickStyle::setStyle("Basic");
    // Quickest to the first picture, and nothing that is drawn here asks for more.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(count, vector);
    QGuiApplication::setApplicationDisplayName("Ozvarine");
    QGuiApplication::setDesktopFileName("ozvarine");

    QtMainQueue queue;
    DesktopHost host;
    ChooserAdapter chooser;
    DeviceFlow flow(
        *opener, queue, host, RecentDevices(RecentDevices::defaultFile()),
        [&] {
            if (flow.deviceWindow() != nullptr) {
                host.setNavigator(flow.deviceWindow()->navigator());
            }
            chooser.update();
        },
        [] { QGuiApplication::quit(); });
    chooser.setFlow(flow);
    followTheSession(application, flow);

    QQmlApplicationEngine engine;
    engine.rootContext()->setContextProperty("host", &host);
    engine.rootContext()->setContextProperty("chooser", &chooser);
    engine.load(QUrl("qrc:/Pages/Main.qml"));
    if (engine.rootObjects().isEmpty()) {
        return EXIT_FAILURE;
    }
    flow.start();
    return QGuiApplication::exec();
}
