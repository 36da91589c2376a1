#pragma once

#include "Interface/OZViewController.h"

#include <QObject>
#include <QString>

/// A screen, as pages see it: its bar, its kind of content, and the space around it.
class ScreenAdapter : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY barUpdated)
    Q_PROPERTY(QString leftTitle READ leftTitle NOTIFY barUpdated)
    Q_PROPERTY(bool leftEnabled READ isLeftEnabled NOTIFY barUpdated)
    Q_PROPERTY(QString rightTitle READ rightTitle NOTIFY barUpdated)
    Q_PROPERTY(double bottomInset READ bottomInset NOTIFY insetsUpdated)
    Q_PROPERTY(bool rightEnabled READ isRightEnabled NOTIFY barUpdated)

  public:
    /// The screen outlives the adapter.
    ScreenAdapter(OZViewController& screen, QString kind);

    [[nodiscard]] OZViewController& screen() const { return _screen; }
    [[nodiscard]] const QString& kind() const { return _kind; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString leftTitle() const { return titleOf(_screen.navigationItem().leftButton); }
    [[nodiscard]] bool isLeftEnabled() const { return isEnabled(_screen.navigationItem().leftButton); }
    [[nodiscard]] QString rightTitle() const { return titleOf(_screen.navigationItem().rightButton); }
    [[nodiscard]] bool isRightEnabled() const { return isEnabled(_screen.navigationItem().rightButton); }

    Q_INVOKABLE void pressLeft() const { press(_screen.navigationItem().leftButton); }
    Q_INVOKABLE void pressRight() const { press(_screen.navigationItem().rightButton); }

    /// Space below what scrolls, in points.
    [[nodiscard]] double bottomInset() const { return _bottomInset; }

    /// Where the page lies in the window, in points.
    Q_INVOKABLE void notePlace(double x, double y, double width, double height);

  signals:
    void barUpdated();
    void insetsUpdated();

  protected:
    [[nodiscard]] const Rectangle& place() const { return _place; }
    void setBottomInset(double inset) {
        _bottomInset = inset;
        emit insetsUpdated();
    }

  private:
    static QString titleOf(const std::optional<BarButton>& button);
    static bool isEnabled(const std::optional<BarButton>& button) { return button && button->isEnabled; }
    static void press(const std::optional<BarButton>& button);

    OZViewController& _screen;
    QString _kind;
    double _bottomInset = 0;
    Rectangle _place;
};
