#include "Desktop/Adapters/IdleInhibition.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* screenSaver = "org.freedesktop.ScreenSaver";
constexpr uint logout = 1;
constexpr uint suspend = 4;
constexpr uint idle = 8;
constexpr const char* reason = "A cleanup is running";

QDBusMessage screenSaverCall(const char* method) {
    return QDBusMessage::createMethodCall(screenSaver, "/org/freedesktop/ScreenSaver", screenSaver, method);
}

} // namespace

void IdleInhibition::set(bool on) {
    _isOn = on;
    if (!on) {
        release();
        return;
    }
    auto call = QDBusMessage::createMethodCall(portal, "/org/freedesktop/portal/desktop",
                                               "org.freedesktop.portal.Inhibit", "Inhibit");
    call << QString() << (logout | suspend | idle) << QVariantMap{{"reason", reason}};
    auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<QDBusObjectPath> reply = *finished;
        finished->deleteLater();
        if (reply.isError()) {
            askScreenSaver();
            return;
        }
        _request = reply.value();
        if (!_isOn) {
            release();
        }
    });
}

void IdleInhibition::askScreenSaver() {
    auto call = screenSaverCall("Inhibit");
    call << QString("Ozvarine") << QString(reason);
    auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<uint> reply = *finished;
        finished->deleteLater();
        _cookie = reply.isError() ? 0 : reply.value();
        if (!_isOn) {
            release();
        }
    });
}

void IdleInhibition::release() {
    if (!_request.path().isEmpty()) {
        QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
            portal, _request.path(), "org.freedesktop.portal.Request", "Close"));
        _request = QDBusObjectPath();
    }
    if (_cookie != 0) {
        auto call = screenSaverCall("UnInhibit");
        call << _cookie;
        QDBusConnection::sessionBus().asyncCall(call);
        _cookie = 0;
    }
}
