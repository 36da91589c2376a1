#include "Desktop/Desktop.h"

#include "Desktop/MainWindow.h"
#include "Interface/Screens/Chooser/MountedDevices.h"

#include <QGuiApplication>
#include <QQuickStyle>
#include <QQuickWindow>
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

} // namespace

int ozvarineDesktop(DeviceOpener* opener, int count, char** vector) {
    qInstallMessageHandler(tell);
    QQuickStyle::setStyle("Basic");
    // Quickest to the first picture, and nothing that is drawn here asks for more.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(count, vector);
    QGuiApplication::setApplicationDisplayName("Ozvarine");
    QGuiApplication::setDesktopFileName("ozvarine");
    MainWindow window(
        *opener,
        {.recent = RecentDevices(RecentDevices::defaultFile()), .mounted = [] { return mountedDevices(); }},
        [] { QGuiApplication::quit(); });
    if (window.show() == nullptr) {
        return EXIT_FAILURE;
    }
    window.start();
    return QGuiApplication::exec();
}
