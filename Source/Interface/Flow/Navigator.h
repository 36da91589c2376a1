#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

class Host;
class OZViewController;

/// How one screen follows another one.
enum class TransitionKind { none, push, pop, present, dismiss, toLaterTab, toEarlierTab };

struct Transition {
    TransitionKind kind = TransitionKind::none;
    /// Null for the first screen.
    OZViewController* from = nullptr;
    OZViewController* to = nullptr;
    bool isAnimated = true;
};

/// Which screens stand where: three tabs, each with the screens that were pushed on it, and the screens over
/// all of them. Tells the screens of their appearance and has the host draw the change; a request that comes
/// meanwhile waits for its end. Main thread only; the screens outlive it.
class Navigator {
  public:
    static constexpr size_t tabCount = 3;

    explicit Navigator(Host& host)
        : _host(host) {}
    Navigator(const Navigator&) = delete;
    Navigator& operator=(const Navigator&) = delete;

    /// Shows the first screen of the selected tab.
    void start(const std::array<OZViewController*, tabCount>& roots, size_t selected);

    [[nodiscard]] size_t selectedTab() const { return _selected; }
    /// The first screen of a tab.
    [[nodiscard]] OZViewController& root(size_t tab) const { return *_tabs.at(tab).front(); }
    /// The screen on top of all.
    [[nodiscard]] OZViewController& visible() const;
    [[nodiscard]] bool isPresenting() const { return !_presented.empty(); }
    /// Whether a change is being drawn. A host takes no input for the screens meanwhile: what one leaves and
    /// the other begins would get mixed.
    [[nodiscard]] bool isMoving() const { return _isMoving; }
    /// How many screens lie below the visible one on its tab; 0 for one that is over the tabs.
    [[nodiscard]] size_t depth() const { return isPresenting() ? 0 : _tabs[_selected].size() - 1; }

    void present(OZViewController& screen, bool isAnimated = true);
    /// Takes away all that is over the tabs.
    void dismissAll(bool isAnimated = true);
    void push(OZViewController& screen, bool isAnimated = true);
    void pop();
    void popToRoot();
    /// The tab that is selected by then goes back to its first screen.
    void selectTab(size_t index);

  private:
    void run(std::function<void()> change);
    void show(TransitionKind kind, OZViewController* from, OZViewController& to, bool isAnimated);
    void end(const Transition& transition);

    Host& _host;
    std::array<std::vector<OZViewController*>, tabCount> _tabs;
    std::vector<OZViewController*> _presented;
    std::deque<std::function<void()>> _waiting;
    size_t _selected = 0;
    bool _isMoving = false;
};
