#include "Interface/OZViewController.h"

#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <utility>

namespace {

constexpr double insetDuration = 0.2;

bool turns = true;

double heightShared(const Rectangle& first, const Rectangle& second) {
    const double height =
        std::min(first.y + first.height, second.y + second.height) - std::max(first.y, second.y);
    const double width =
        std::min(first.x + first.width, second.x + second.width) - std::max(first.x, second.x);
    return width > 0 ? std::max(height, 0.0) : 0;
}

} // namespace

OZViewController::OZViewController(InterfaceContext& context)
    : _context(context)
    , _languageChange(context.device.notificationCenter(), OZLocalizationNotification, &context.languages,
                      [this](const auto&) { localize(); }) {
    _navigationItem.title = context.displayName;
    _navigationItem.backButtonTitle = text("BACK");
}

bool OZViewController::autorotationEnabled() {
    return turns;
}

void OZViewController::setAutorotationEnabled(bool enabled) {
    turns = enabled;
}

void OZViewController::load(ScreenView& view) {
    _view = &view;
    setEditing(false, false);
    viewDidLoad();
    localize();
}

void OZViewController::viewWillAppear(bool /*animated*/) {
    _isViewVisible = true;
    auto& center = _context.device.notificationCenter();
    if (adBannerListener != nullptr) {
        adBannerWillChangeState();
        _bannerChange = platform::Observation(center, OZAdBannerState::notification, adBannerListener,
                                              [this](const auto&) { adBannerWillChangeState(); });
    }
    if (keyboardListener != nullptr) {
        keyboardWillChangeState();
        _keyboardChange = platform::Observation(center, OZKeyboardState::notification, keyboardListener,
                                                [this](const auto&) { keyboardWillChangeState(); });
    }
    runOnce(willAppearCallback);
}

void OZViewController::viewDidAppear(bool /*animated*/) {
    runOnce(didAppearCallback);
}

void OZViewController::viewWillDisappear(bool /*animated*/) {
    _bannerChange = {};
    _keyboardChange = {};
    runOnce(willDisappearCallback);
}

void OZViewController::viewDidDisappear(bool /*animated*/) {
    _isViewVisible = false;
    setEditing(false, false);
    runOnce(didDisappearCallback);
}

void OZViewController::setEditing(bool editing, bool /*animated*/) {
    _isEditing = editing;
    _editButtonTitle = text(editing ? "DONE" : "EDIT");
    barChanged();
}

double OZViewController::topInset() const {
    return _context.foundationVersion() < ios::v7_0 || _view == nullptr ? 0 : _view->navigationBarBottom();
}

double OZViewController::bottomInset() const {
    if (_view == nullptr) {
        return 0;
    }
    if (keyboardListener != nullptr && keyboardListener->isKeyboardVisible()) {
        return heightShared(_view->converted(keyboardListener->keyboardFrame()), _view->bounds());
    }
    const bool isBehindBars = _context.foundationVersion() >= ios::v7_0;
    const double bars = isBehindBars ? std::max(_view->tabBarHeight(), _view->safeAreaBottom()) : 0;
    const bool hasBanner = adBannerListener != nullptr && adBannerListener->isAdBannerVisible();
    return bars + (hasBanner ? adBannerListener->adBannerHeight() : 0);
}

void OZViewController::updateViewInsetsAnimated(bool animated) {
    if (_view != nullptr && _view->isScrollable()) {
        _view->setInsets(dynamicInsets(), animated ? insetDuration : 0);
    }
}

void OZViewController::localize() {
    _navigationItem.backButtonTitle = text("BACK");
    _editButtonTitle = text(_isEditing ? "DONE" : "EDIT");
    barChanged();
}

void OZViewController::barChanged() const {
    if (_view != nullptr) {
        _view->barChanged();
    }
}

void OZViewController::runOnce(Callback& callback) {
    if (const Callback once = std::exchange(callback, nullptr)) {
        once();
    }
}
