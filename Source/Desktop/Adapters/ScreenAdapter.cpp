#include "Desktop/Adapters/ScreenAdapter.h"

ScreenAdapter::ScreenAdapter(OZViewController& screen, QString kind)
    : _screen(screen)
    , _kind(std::move(kind)) {}

QString ScreenAdapter::title() const {
    return QString::fromStdString(_screen.navigationItem().title);
}

QString ScreenAdapter::titleOf(const std::optional<BarButton>& button) {
    return button ? QString::fromStdString(button->title) : QString();
}

void ScreenAdapter::press(const std::optional<BarButton>& button) {
    if (isEnabled(button)) {
        // The press may change the bar, and with it the button.
        const auto action = button->action;
        action();
    }
}
