#include "Desktop/Adapters/DesktopSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* gnome = "org.gnome.desktop.interface";

using Groups = QMap<QString, QVariantMap>;

} // namespace

DesktopSettings::DesktopSettings() {
    qDBusRegisterMetaType<Groups>();
    auto bus = QDBusConnection::sessionBus();
    bus.connect(service, path, interface, "SettingChanged", this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto call = QDBusMessage::createMethodCall(service, path, interface, "ReadAll");
    call << QStringList{appearance, gnome};
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<Groups> reply = *finished;
        finished->deleteLater();
        if (reply.isError()) {
            return;
        }
        const Groups groups = reply.value();
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            for (auto value = group->begin(); value != group->end(); ++value) {
                take(group.key(), value.key(), value.value());
            }
        }
        emit changed();
    });
    qGuiApp->installEventFilter(this);
}

bool DesktopSettings::eventFilter(QObject* /*object*/, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        emit changed();
    }
    return false;
}

bool DesktopSettings::isDark() const {
    return _preference == Preference::none
               ? QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5
               : _preference == Preference::dark;
}

void DesktopSettings::take(const QString& group, const QString& key, const QVariant& value) {
    if (group == appearance && key == "color-scheme") {
        const uint number = value.toUInt();
        _preference = number == 1 ? Preference::dark : number == 2 ? Preference::light : Preference::none;
    } else if (group == gnome && key == "enable-animations") {
        _isAnimated = value.toBool();
    }
}

void DesktopSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    take(group, key, value.variant());
    emit changed();
}
