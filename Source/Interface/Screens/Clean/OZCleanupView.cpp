#include "Interface/Screens/Clean/OZCleanupView.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double ringShare = 0.55;
constexpr double ringTopShare = 0.4;
constexpr double titleShare = 0.25;
constexpr double footerShare = 2.0 / 3;
constexpr double trackShare = 0.03125;

} // namespace

void OZCleanupView::setMode(Mode mode) {
    _mode = mode;
    _isActivityVisible = true;
    if (_painter != nullptr) {
        _painter->refresh();
    }
}

void OZCleanupView::setTitleText(std::string text) {
    _titleText = std::move(text);
    if (_painter != nullptr) {
        _painter->refresh();
    }
}

void OZCleanupView::setFooterText(std::string text, bool animated) {
    _footerText = std::move(text);
    if (_painter != nullptr) {
        _painter->footerChanged(animated);
    }
}

void OZCleanupView::setProgress(float progress, bool animated) {
    _progress = progress;
    if (_painter != nullptr) {
        _painter->progressChanged(animated);
    }
}

void OZCleanupView::startAnimating() {
    _isActivityVisible = true;
    if (_painter != nullptr) {
        _painter->startSpinning();
    }
}

void OZCleanupView::completeWithHandler(std::function<void()> handler) {
    setProgress(1, true);
    _isActivityVisible = _mode != Mode::determinate;
    if (_painter != nullptr) {
        _painter->complete(std::move(handler));
    } else {
        handler();
    }
}

void OZCleanupView::reset() {
    if (_painter != nullptr) {
        _painter->reset();
    }
    setProgress(0, false);
}

CleanupLayout OZCleanupView::layoutFor(double width, double height, double screenWidth, double screenHeight,
                                       bool isIPad) {
    const double side = ringShare * std::min(width, height);
    const double top = ringTopShare * (height - side);
    const double below = height - top - side;
    const double track = std::round(trackShare * std::min(screenWidth, screenHeight));
    return {.ring = {.x = (width - side) / 2, .y = top, .width = side, .height = side},
            .titleCentre = top + side + below * titleShare,
            .footerCentre = top + side + below * footerShare,
            .trackWidth = track,
            .fillWidth = track - 2,
            .labelFont = isIPad ? 22.0 : 17.0,
            .titleFont = isIPad ? 32.0 : 22.0,
            .footerDrift = isIPad ? 170.0 : 130.0};
}
