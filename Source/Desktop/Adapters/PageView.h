#pragma once

#include "Desktop/Adapters/ScreenAdapter.h"
#include "Interface/ScreenView.h"

/// What every page tells its screen: pages stand between the bars, so nothing covers them.
template <class View>
class PageView : public ScreenAdapter, public View {
  public:
    using ScreenAdapter::ScreenAdapter;

    void barChanged() override { emit barUpdated(); }
    [[nodiscard]] Rectangle bounds() const override {
        return {.width = place().width, .height = place().height};
    }
    [[nodiscard]] double navigationBarBottom() const override { return 0; }
    [[nodiscard]] double tabBarHeight() const override { return 0; }
    [[nodiscard]] double safeAreaBottom() const override { return 0; }
    [[nodiscard]] Rectangle converted(const Rectangle& inWindow) const override {
        return {.x = inWindow.x - place().x,
                .y = inWindow.y - place().y,
                .width = inWindow.width,
                .height = inWindow.height};
    }
    void setInsets(const Insets& insets, double /*duration*/) override { setBottomInset(insets.bottom); }
};
