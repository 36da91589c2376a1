#pragma once

#include "Desktop/Adapters/AlertAdapter.h"
#include "Desktop/Adapters/Drawings.h"
#include "Desktop/Adapters/IdleInhibition.h"
#include "Desktop/Adapters/ScreenAdapter.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Host.h"

#include <QObject>
#include <QStringList>
#include <map>
#include <memory>
#include <vector>

/// What QML knows of the window: the screen that is shown, the dialog over it, and the tabs.
class DesktopHost : public QObject, public Host {
    Q_OBJECT
    Q_PROPERTY(QObject* screen READ screen NOTIFY moved)
    Q_PROPERTY(QObject* alert READ alert NOTIFY alertChanged)
    Q_PROPERTY(QString activity READ activity NOTIFY activityChanged)
    Q_PROPERTY(int tab READ tab NOTIFY moved)
    Q_PROPERTY(bool tabsVisible READ areTabsVisible NOTIFY moved)
    Q_PROPERTY(QStringList tabTitles READ tabTitles NOTIFY moved)
    Q_PROPERTY(int depth READ depth NOTIFY moved)

  public:
    DesktopHost() = default;
    ~DesktopHost() override;

    void setNavigator(Navigator& navigator) { _navigator = &navigator; }

    [[nodiscard]] QObject* screen() const { return _screen; }
    [[nodiscard]] QObject* alert() const { return _alerts.empty() ? nullptr : _alerts.back(); }
    [[nodiscard]] const QString& activity() const { return _activity; }
    [[nodiscard]] int tab() const {
        return _navigator == nullptr ? 0 : static_cast<int>(_navigator->selectedTab());
    }
    [[nodiscard]] QStringList tabTitles() const;
    [[nodiscard]] bool areTabsVisible() const { return _navigator != nullptr && !_navigator->isPresenting(); }
    [[nodiscard]] int depth() const {
        return _navigator == nullptr ? 0 : static_cast<int>(_navigator->depth());
    }

    Q_INVOKABLE void selectTab(int index) { _navigator->selectTab(static_cast<size_t>(index)); }
    Q_INVOKABLE void back() { _navigator->pop(); }
    /// The change that was drawn has come to its end.
    Q_INVOKABLE void transitionDone();

    void prepare(OZViewController& screen) override;
    void transition(const Transition& transition, std::function<void()> done) override;
    std::unique_ptr<OZACConcrete> makeAlert(OZAlertStyle style) override;
    void setIdleTimerDisabled(bool disabled) override { _idleInhibition.set(disabled); }
    void presentActivity(OZActivityHUD hud) override;
    void dismissActivity(bool success) override;
    bool openURL(std::string_view url) override;
    [[nodiscard]] bool canOpenURL(std::string_view url) const override;
    [[nodiscard]] double screenHeight() const override;
    [[nodiscard]] const ImageSource& imageSource() const override { return _drawings; }

    /// What is drawn of screens goes, before the screens themselves.
    void forgetScreens() { _adapters.clear(); }
    void showAlert(AlertAdapter& alert);
    void forget(AlertAdapter& alert);

  signals:
    /// Another screen is shown; the kind of the change is that of `TransitionKind`.
    void moved(int kind, bool animated);
    void alertChanged();
    void activityChanged();

  private:
    Navigator* _navigator = nullptr;
    std::map<OZViewController*, std::unique_ptr<ScreenAdapter>> _adapters;
    ScreenAdapter* _screen = nullptr;
    std::vector<AlertAdapter*> _alerts;
    std::function<void()> _transitionDone;
    QString _activity;
    IdleInhibition _idleInhibition;
    Drawings _drawings;
};
