#pragma once

#include "Interface/Alerts/OZACConcrete.h"
#include "Interface/Alerts/OZAlertAction.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <vector>

class DesktopHost;

/// A dialog or sheet, as QML draws it.
class AlertAdapter : public QObject, public OZACConcrete {
    Q_OBJECT
    Q_PROPERTY(bool sheet READ isSheet CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QVariantList buttons READ buttons NOTIFY changed)
    Q_PROPERTY(bool asksText READ asksText NOTIFY changed)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textEdited)

  public:
    AlertAdapter(DesktopHost& host, OZAlertStyle style);
    ~AlertAdapter() override;

    [[nodiscard]] bool isSheet() const { return _style == OZAlertStyle::actionSheet; }
    [[nodiscard]] QString title() const { return QString::fromStdString(_title); }
    [[nodiscard]] QString message() const { return QString::fromStdString(_message); }
    /// Title and style of each, in the order that they stand in.
    [[nodiscard]] QVariantList buttons() const;
    [[nodiscard]] bool asksText() const { return _field.has_value(); }
    [[nodiscard]] QString text() const { return _field ? QString::fromStdString(_field->text) : QString(); }
    void setText(const QString& text);

    Q_INVOKABLE void press(int button);
    /// What Escape and a click beside a sheet do: the cancel action, where there is one.
    Q_INVOKABLE void cancel();

    void setDelegate(OZACDelegate& delegate) override { _delegate = &delegate; }
    void setTitle(const std::string& title) override;
    void setMessage(const std::string& message) override;
    void addAction(std::shared_ptr<OZAlertAction> action) override;
    void addTextField(const OZTextField& field) override;
    [[nodiscard]] std::string textFieldText() const override { return _field ? _field->text : ""; }
    void show(OZViewController* screen, const AlertAnchor& anchor, const Rectangle& rectangle) override;
    void dismiss() override { dismissBy(nullptr); }

  signals:
    void changed();
    void textEdited();

  private:
    void dismissBy(std::shared_ptr<OZAlertAction> action);

    DesktopHost& _host;
    OZAlertStyle _style;
    OZACDelegate* _delegate = nullptr;
    std::string _title;
    std::string _message;
    std::optional<OZTextField> _field;
    std::vector<std::shared_ptr<OZAlertAction>> _actions;
};
