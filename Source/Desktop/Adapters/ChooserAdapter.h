#pragma once

#include "Interface/Flow/DeviceFlow.h"

#include <QObject>
#include <QUrl>
#include <QVariantList>

/// What the page shows on which a person chooses a device.
class ChooserAdapter : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool open READ isOpen NOTIFY changed)
    Q_PROPERTY(QString busy READ busy NOTIFY changed)
    Q_PROPERTY(QVariantList recent READ recent NOTIFY changed)
    Q_PROPERTY(QVariantList mounted READ mounted NOTIFY changed)
    Q_PROPERTY(QString refusal READ refusal NOTIFY changed)
    Q_PROPERTY(bool canUseDefaults READ canUseDefaults NOTIFY changed)

  public:
    /// The flow outlives what QML shows of it.
    void setFlow(DeviceFlow& flow) { _flow = &flow; }
    void update() { emit changed(); }

    /// Whether a device is open, and its screens are shown.
    [[nodiscard]] bool isOpen() const { return _flow->state() == DeviceFlow::State::open; }
    /// What goes on, in words; empty for nothing.
    [[nodiscard]] QString busy() const;
    [[nodiscard]] QVariantList recent() const { return listOf(_flow->recent()); }
    [[nodiscard]] QVariantList mounted() const { return listOf(_flow->mounted()); }
    [[nodiscard]] QString refusal() const { return QString::fromStdString(_flow->refusal()); }
    [[nodiscard]] bool canUseDefaults() const { return _flow->canUseDefaults(); }

    Q_INVOKABLE void choose(const QString& folder) { _flow->choose(folder.toStdString()); }
    Q_INVOKABLE void chooseURL(const QUrl& url) { choose(url.toLocalFile()); }
    Q_INVOKABLE void useDefaults() { _flow->useDefaults(); }
    Q_INVOKABLE void tryDemoDevice() { _flow->tryDemoDevice(); }
    /// Asked before the window closes.
    Q_INVOKABLE bool windowShouldClose() { return _flow->windowShouldClose(); }

  signals:
    void changed();

  private:
    static QVariantList listOf(const std::vector<DeviceFlow::Choice>& choices);

    DeviceFlow* _flow = nullptr;
};
