#include "Tests/Scenarios/Window/TextHost.h"

#include "Interface/Alerts/OZAlertAction.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Table/OZTableViewController.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

namespace scenarios {

/// A phone's view, with nothing drawn.
class TextHost::View : public TableView {
  public:
    void barChanged() override {}
    [[nodiscard]] Rectangle bounds() const override { return {.width = 375, .height = 667}; }
    [[nodiscard]] double navigationBarBottom() const override { return 64; }
    [[nodiscard]] double tabBarHeight() const override { return 49; }
    [[nodiscard]] double safeAreaBottom() const override { return 0; }
    [[nodiscard]] Rectangle converted(const Rectangle& inWindow) const override { return inWindow; }
    void setInsets(const Insets& /*insets*/, double /*duration*/) override {}
    void reloadData() override {}
    void reloadSectionIndexTitles() override {}
    void reloadRow(IndexPath /*place*/) override {}
    void layOut() override {}
    void selectRow(IndexPath /*place*/) override {}
    void deselectRow(IndexPath /*place*/, bool /*animated*/) override {}
    void scrollToRow(IndexPath /*place*/) override {}
    void setEditing(bool /*editing*/, double /*duration*/) override {}
    [[nodiscard]] double contentOffset() const override { return _offset; }
    void setContentOffset(double offset, bool /*animated*/) override { _offset = offset; }
    [[nodiscard]] double heightOfSection(size_t /*section*/) const override { return 0; }
    [[nodiscard]] bool hasVisibleImage() const override { return false; }
    [[nodiscard]] double heightThatFits(const HeaderFooterView& /*label*/) const override { return 30; }

  private:
    double _offset = 0;
};

TextHost::TextHost(Say say)
    : _say(std::move(say)) {}

// What is shown would outlive the window otherwise.
TextHost::~TextHost() {
    _say = [](const std::string&) {};
    while (!alerts.empty()) {
        alerts.back()->dismiss();
    }
}

void TextHost::prepare(OZViewController& screen) {
    if (screen.isLoaded()) {
        return;
    }
    _views.push_back(std::make_unique<View>());
    if (auto* table = dynamic_cast<OZTableViewController*>(&screen)) {
        table->load(*_views.back());
    } else {
        screen.load(*_views.back());
    }
}

void TextHost::transition(const Transition& transition, std::function<void()> done) {
    constexpr const char* names[] = {"",          "pushed",    "popped",     "presented",
                                     "dismissed", "later tab", "earlier tab"};
    if (transition.kind != TransitionKind::none) {
        say(names[static_cast<size_t>(transition.kind)]);
    }
    done();
}

std::unique_ptr<OZACConcrete> TextHost::makeAlert(OZAlertStyle style) {
    return std::make_unique<TextAlert>(*this, style);
}

void TextHost::presentActivity(OZActivityHUD hud) {
    say(hud == OZActivityHUD::cleanup ? "activity over a cleanup" : "activity");
}

void TextHost::dismissActivity(bool success) {
    say(success ? "activity done" : "activity failed");
}

void TextHost::setIdleTimerDisabled(bool disabled) {
    say(disabled ? "the device stays awake" : "the device may sleep");
}

bool TextHost::openURL(std::string_view url) {
    say("opened " + std::string(url));
    return true;
}

TextAlert::~TextAlert() {
    std::erase(_host.alerts, this);
}

void TextAlert::tell() const {
    std::string line = _style == OZAlertStyle::alert ? "alert" : "sheet";
    line += _title.empty() ? "" : " " + _title;
    for (const auto& part : {_message}) {
        line += part.empty() ? "" : ": " + part;
    }
    std::ranges::replace(line, '\n', '/');
    line += text ? " {" + *text + "}" : "";
    for (const auto& action : _actions) {
        const char* marks[] = {"[{}]", "({})", "<{}>"};
        line += " " + fmt::format(fmt::runtime(marks[static_cast<int>(action->style())]), action->title());
    }
    _host.say(line);
}

void TextAlert::setMessage(const std::string& message) {
    _message = message;
    if (_isShown) {
        tell();
    }
}

void TextAlert::show(OZViewController* /*screen*/, const AlertAnchor& /*anchor*/,
                     const Rectangle& /*rectangle*/) {
    _delegate->concreteControllerWillShow();
    _isShown = true;
    _host.alerts.push_back(this);
    tell();
}

bool TextAlert::press(const std::string& title) {
    const auto action =
        std::ranges::find_if(_actions, [&](const auto& each) { return each->title() == title; });
    if (action == _actions.end()) {
        return false;
    }
    dismissBy(*action);
    return true;
}

void TextAlert::dismissBy(const std::shared_ptr<OZAlertAction>& action) {
    const auto pressed = action;
    OZACDelegate& delegate = *_delegate;
    _isShown = false;
    std::erase(_host.alerts, this);
    delegate.concreteControllerWillDismiss();
    if (pressed) {
        pressed->performHandler();
    }
    delegate.concreteControllerDidDismiss();
}

void TextPainter::footerChanged(bool animated) {
    _host.say("footer " + _view.footerText() + (animated ? " ~" : ""));
}

void TextPainter::progressChanged(bool animated) {
    _host.say(fmt::format("ring {:.2f}{}", _view.progress(), animated ? " ~" : ""));
}

void TextPainter::startSpinning() {
    _host.say("spinning below " + _view.titleText());
}

void TextPainter::complete(std::function<void()> handler) {
    _host.say("spinning ends");
    handler();
}

} // namespace scenarios
