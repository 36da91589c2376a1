#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QVariantMap>

/// What the desktop's settings say of the look of programs: by its portal, or by the palette where there is
/// none.
class DesktopSettings : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(bool animated READ isAnimated NOTIFY changed)

  public:
    /// Asks at once, and never blocks; `changed` tells when an answer has come.
    DesktopSettings();

    [[nodiscard]] bool isDark() const;
    [[nodiscard]] bool isAnimated() const { return _isAnimated; }

  signals:
    void changed();

  private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    bool eventFilter(QObject* object, QEvent* event) override;

    enum class Preference { none, dark, light };

    void take(const QString& group, const QString& key, const QVariant& value);

    Preference _preference = Preference::none;
    bool _isAnimated = true;
};
