#pragma once

#include <QDBusObjectPath>
#include <QObject>

/// Keeps the desktop awake and its session alive while it is switched on: by the desktop's portal, or by its
/// screen saver where there is no portal. Where there is neither, nothing happens. Never blocks.
class IdleInhibition : public QObject {
  public:
    void set(bool on);

  private:
    void askScreenSaver();
    void release();

    bool _isOn = false;
    /// What the portal gave for the asking; empty for nothing.
    QDBusObjectPath _request;
    /// What the screen saver gave; 0 for nothing.
    uint _cookie = 0;
};
