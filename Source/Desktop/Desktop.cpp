#include "Desktop/Desktop.h"

#include "Desktop/Adapters/DesktopHost.h"
#include "Desktop/Adapters/QtMainQueue.h"
#include "Interface/Flow/MainFlow.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Platform/Device/Device.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>

int ozvarineDesktop(OZModelBuilder* modelBuilder, int count, char** vector) {
    QQuickStyle::setStyle("Basic");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(count, vector);
    QGuiApplication::setApplicationDisplayName("Ozvarine");

    QtMainQueue queue;
    modelBuilder->device().useMainQueue(queue);
    DesktopHost host;
    MainFlow flow(*modelBuilder, host, [] { QGuiApplication::quit(); });
    host.setNavigator(flow.navigator());

    QQmlApplicationEngine engine;
    engine.rootContext()->setContextProperty("host", &host);
    engine.load(QUrl("qrc:/Pages/Main.qml"));
    if (engine.rootObjects().isEmpty()) {
        return 1;
    }
    flow.start();
    return QGuiApplication::exec();
}
