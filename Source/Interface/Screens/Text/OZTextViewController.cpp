#include "Interface/Screens/Text/OZTextViewController.h"

OZTextViewController::OZTextViewController(InterfaceContext& context, std::function<void()> close)
    : OZViewController(context)
    , _close(std::move(close)) {}

void OZTextViewController::setContent(std::string content) {
    _content = std::move(content);
    ++_contentNumber;
    barChanged();
}

void OZTextViewController::viewDidLoad() {
    if (_close) {
        bar().leftButton = BarButton{.action = _close};
    }
}

void OZTextViewController::localize() {
    OZViewController::localize();
    bar().title = text(_titleKey);
    if (bar().leftButton) {
        bar().leftButton->title = text("DONE");
    }
    barChanged();
}
