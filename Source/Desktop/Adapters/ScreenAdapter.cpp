#include "Desktop/Adapters/ScreenAdapter.h"

ScreenAdapter::ScreenAdapter(OZViewController& screen, QString kind)
    : _screen(screen)
    , _kind(std::move(kind)) {}

QString ScreenAdapter::title() const {
    return QString::fromStdString(_screen.navigationItem().title);
}

void ScreenAdapter::notePlace(double x, double y, double width, double height) {
    const Rectangle place{.x = x, .y = y, .width = width, .height = height};
    if (place != _place) {
        _place = place;
        _screen.viewDidTransition();
    }
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
