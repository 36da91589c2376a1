#include "Desktop/Adapters/AlertAdapter.h"

#include "Desktop/Adapters/DesktopHost.h"

#include <QVariantMap>
#include <algorithm>

AlertAdapter::AlertAdapter(DesktopHost& host, OZAlertStyle style)
    : _host(host)
    , _style(style) {}

AlertAdapter::~AlertAdapter() {
    _host.forget(*this);
}

void AlertAdapter::setTitle(const std::string& title) {
    _title = title;
    emit changed();
}

void AlertAdapter::setMessage(const std::string& message) {
    _message = message;
    emit changed();
}

// A cancel action stands last on a sheet and on a dialog of three or more, and first on a dialog of two.
void AlertAdapter::addAction(std::shared_ptr<OZAlertAction> action) {
    _actions.push_back(std::move(action));
    const auto cancel = std::ranges::find(_actions, OZAlertActionStyle::cancel,
                                          [](const auto& each) { return each->style(); });
    if (cancel != _actions.end()) {
        auto moved = *cancel;
        _actions.erase(cancel);
        _actions.insert(isSheet() || _actions.size() >= 2 ? _actions.end() : _actions.begin(),
                        std::move(moved));
    }
    emit changed();
}

void AlertAdapter::addTextField(const OZTextField& field) {
    _field = field;
    emit changed();
    emit textEdited();
}

void AlertAdapter::setText(const QString& text) {
    if (_field && _field->text != text.toStdString()) {
        _field->text = text.toStdString();
        emit textEdited();
    }
}

QVariantList AlertAdapter::buttons() const {
    QVariantList buttons;
    for (const auto& action : _actions) {
        buttons.push_back(QVariantMap{{"title", QString::fromStdString(action->title())},
                                      {"style", static_cast<int>(action->style())}});
    }
    return buttons;
}

void AlertAdapter::show(OZViewController* /*screen*/, const AlertAnchor& /*anchor*/,
                        const Rectangle& /*rectangle*/) {
    _delegate->concreteControllerWillShow();
    _host.showAlert(*this);
}

void AlertAdapter::press(int button) {
    dismissBy(_actions.at(static_cast<size_t>(button)));
}

void AlertAdapter::cancel() {
    const auto cancel = std::ranges::find(_actions, OZAlertActionStyle::cancel,
                                          [](const auto& each) { return each->style(); });
    if (cancel != _actions.end()) {
        dismissBy(*cancel);
    } else if (_actions.size() == 1) {
        dismissBy(_actions.front());
    }
}

void AlertAdapter::dismissBy(std::shared_ptr<OZAlertAction> action) {
    OZACDelegate& delegate = *_delegate;
    _host.forget(*this);
    delegate.concreteControllerWillDismiss();
    if (action) {
        action->performHandler();
    }
    // The last one to hold the controller, and with it this dialog, lets go here; QML may still look at it.
    QMetaObject::invokeMethod(
        &_host, [&delegate] { delegate.concreteControllerDidDismiss(); }, Qt::QueuedConnection);
}
