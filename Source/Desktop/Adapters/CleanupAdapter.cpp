#include "Desktop/Adapters/CleanupAdapter.h"

#include <QVariantMap>
#include <utility>

CleanupAdapter::CleanupAdapter(OZCleanupViewController& screen)
    : PageView(screen, "progress")
    , _view(screen.cleanupView()) {
    _view.setPainter(this);
}

CleanupAdapter::~CleanupAdapter() {
    _view.setPainter(nullptr);
}

bool CleanupAdapter::isDeterminate() const {
    return _view.mode() == OZCleanupView::Mode::determinate;
}

QVariantMap CleanupAdapter::layout(double width, double height) const {
    const bool isLarge = std::min(width, height) >= 768;
    const auto layout = OZCleanupView::layoutFor(width, height, width, height, isLarge);
    return {{"x", layout.ring.x},
            {"y", layout.ring.y},
            {"side", layout.ring.width},
            {"title", layout.titleCentre},
            {"footer", layout.footerCentre},
            {"track", layout.trackWidth},
            {"fill", layout.fillWidth},
            {"labelFont", layout.labelFont},
            {"titleFont", layout.titleFont},
            {"drift", layout.footerDrift},
            {"activityWidth", OZCleanupView::activityWidth},
            {"speed", OZCleanupView::animationSpeed},
            {"footerDuration", OZCleanupView::footerDuration * 1000}};
}

void CleanupAdapter::startSpinning() {
    _isSpinning = true;
    emit spinningChanged();
}

void CleanupAdapter::complete(std::function<void()> handler) {
    _handler = std::move(handler);
    _isSpinning = false;
    emit spinningChanged();
    emit completing();
}

void CleanupAdapter::completed() {
    if (const auto handler = std::exchange(_handler, nullptr)) {
        handler();
    }
}

void CleanupAdapter::reset() {
    _isSpinning = false;
    emit spinningChanged();
}
