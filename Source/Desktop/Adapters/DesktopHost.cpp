#include "Desktop/Adapters/DesktopHost.h"

#include "Desktop/Adapters/CleanupAdapter.h"
#include "Desktop/Adapters/TableAdapter.h"
#include "Desktop/Adapters/TextAdapter.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <algorithm>
#include <utility>

DesktopHost::~DesktopHost() = default;

QStringList DesktopHost::tabTitles() const {
    QStringList titles;
    for (size_t tab = 0; _navigator != nullptr && tab < Navigator::tabCount; ++tab) {
        titles.push_back(QString::fromStdString(_navigator->root(tab).tabTitle()));
    }
    return titles;
}

void DesktopHost::prepare(OZViewController& screen) {
    if (_adapters.contains(&screen)) {
        return;
    }
    auto& adapter = _adapters[&screen];
    if (auto* table = dynamic_cast<OZTableViewController*>(&screen)) {
        auto made = std::make_unique<TableAdapter>(*table);
        table->load(*made);
        adapter = std::move(made);
    } else if (auto* cleanup = dynamic_cast<OZCleanupViewController*>(&screen)) {
        auto made = std::make_unique<CleanupAdapter>(*cleanup);
        cleanup->load(*made);
        adapter = std::move(made);
    } else if (auto* text = dynamic_cast<OZTextViewController*>(&screen)) {
        auto made = std::make_unique<TextAdapter>(*text);
        text->load(*made);
        adapter = std::move(made);
    }
}

void DesktopHost::transition(const Transition& transition, std::function<void()> done) {
    _screen = _adapters.at(transition.to).get();
    _transitionDone = std::move(done);
    emit moved(static_cast<int>(transition.kind), transition.isAnimated);
}

void DesktopHost::transitionDone() {
    if (const auto done = std::exchange(_transitionDone, nullptr)) {
        done();
    }
}

std::unique_ptr<OZACConcrete> DesktopHost::makeAlert(OZAlertStyle style) {
    return std::make_unique<AlertAdapter>(*this, style);
}

void DesktopHost::showAlert(AlertAdapter& alert) {
    _alerts.push_back(&alert);
    emit alertChanged();
}

void DesktopHost::forget(AlertAdapter& alert) {
    if (std::erase(_alerts, &alert) > 0) {
        emit alertChanged();
    }
}

void DesktopHost::presentActivity(OZActivityHUD hud) {
    _activity = hud == OZActivityHUD::cleanup ? "cleanup" : "general";
    emit activityChanged();
}

void DesktopHost::dismissActivity(bool /*success*/) {
    _activity.clear();
    emit activityChanged();
}

bool DesktopHost::openURL(std::string_view url) {
    return QDesktopServices::openUrl(QUrl(QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size()))));
}

bool DesktopHost::canOpenURL(std::string_view url) const {
    return QUrl(QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size()))).isValid();
}

double DesktopHost::screenHeight() const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? 0 : screen->size().height();
}
