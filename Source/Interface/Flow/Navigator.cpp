#include "Interface/Flow/Navigator.h"

#include "Interface/Host.h"
#include "Interface/OZViewController.h"

#include <utility>

void Navigator::start(const std::array<OZViewController*, tabCount>& roots, size_t selected) {
    for (size_t tab = 0; tab < tabCount; ++tab) {
        _tabs[tab] = {roots[tab]};
    }
    _selected = selected;
    run([this] { show(TransitionKind::none, nullptr, visible(), false); });
}

OZViewController& Navigator::visible() const {
    return _presented.empty() ? *_tabs.at(_selected).back() : *_presented.back();
}

void Navigator::present(OZViewController& screen, bool isAnimated) {
    run([this, &screen, isAnimated] {
        OZViewController& from = visible();
        _presented.push_back(&screen);
        show(TransitionKind::present, &from, screen, isAnimated);
    });
}

void Navigator::dismissAll(bool isAnimated) {
    run([this, isAnimated] {
        if (_presented.empty()) {
            return;
        }
        const auto gone = std::exchange(_presented, {});
        // Those below the visible one have been told already that they are out of sight.
        show(TransitionKind::dismiss, gone.back(), visible(), isAnimated);
    });
}

void Navigator::push(OZViewController& screen, bool isAnimated) {
    run([this, &screen, isAnimated] {
        OZViewController& from = visible();
        _tabs[_selected].push_back(&screen);
        show(TransitionKind::push, &from, screen, isAnimated);
    });
}

void Navigator::pop() {
    run([this] {
        auto& screens = _tabs[_selected];
        if (screens.size() > 1) {
            OZViewController* const from = screens.back();
            screens.pop_back();
            show(TransitionKind::pop, from, visible(), true);
        }
    });
}

void Navigator::popToRoot() {
    run([this] {
        auto& screens = _tabs[_selected];
        if (screens.size() > 1) {
            OZViewController* const from = screens.back();
            screens.resize(1);
            show(TransitionKind::pop, from, visible(), true);
        }
    });
}

void Navigator::selectTab(size_t index) {
    if (index == _selected) {
        popToRoot();
        return;
    }
    run([this, index] {
        OZViewController& from = visible();
        const bool isLater = index > _selected;
        _selected = index;
        show(isLater ? TransitionKind::toLaterTab : TransitionKind::toEarlierTab, &from, visible(), true);
    });
}

void Navigator::run(std::function<void()> change) {
    _waiting.push_back(std::move(change));
    while (!_isMoving && !_waiting.empty()) {
        const auto next = std::move(_waiting.front());
        _waiting.pop_front();
        next();
    }
}

void Navigator::show(TransitionKind kind, OZViewController* from, OZViewController& to, bool isAnimated) {
    const Transition transition{.kind = kind, .from = from, .to = &to, .isAnimated = isAnimated};
    _isMoving = true;
    _host.prepare(to);
    if (from != nullptr) {
        from->viewWillDisappear(isAnimated);
    }
    to.viewWillAppear(isAnimated);
    _host.transition(transition, [this, transition] { end(transition); });
}

void Navigator::end(const Transition& transition) {
    if (transition.from != nullptr) {
        transition.from->viewDidDisappear(transition.isAnimated);
    }
    transition.to->viewDidAppear(transition.isAnimated);
    _isMoving = false;
    run([] {});
}
