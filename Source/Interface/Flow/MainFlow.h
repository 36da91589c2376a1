#pragma once

#include "Interface/Flow/Navigator.h"
#include "Interface/InterfaceContext.h"
#include "Interface/Screens/Clean/OZCleanViewController.h"
#include "Interface/Screens/Clean/OZCleanupViewController.h"
#include "Interface/Screens/Text/OZTextViewController.h"

#include <functional>

class OZModelBuilder;

/// The screens of the window on one device, put together.
class MainFlow : private OZAdController, private LongRunningTasks, private OZTextViewControllerProvider {
  public:
    /// What is given outlives the flow; `close` ends the program.
    MainFlow(OZModelBuilder& modelBuilder, Host& host, std::function<void()> close);

    [[nodiscard]] Navigator& navigator() { return _navigator; }
    void start();

  private:
    [[nodiscard]] bool isAdBannerVisible() const override { return false; }
    [[nodiscard]] double adBannerHeight() const override { return 0; }
    void showInterstitial(OZViewController& /*over*/, double /*autodismissDelay*/,
                          std::function<void()> handler) override {
        handler();
    }
    void startLongRunningTask() override {}
    void stopLongRunningTask() override {}
    void close() override { _close(); }
    void presentTextViewControllerOfType(OZTextViewControllerType type, OZViewController& over) override;

    OZModelBuilder& _modelBuilder;
    std::function<void()> _close;
    Navigator _navigator;
    InterfaceContext _context;
    OZCleanupViewController _cleanup;
    OZCleanViewController _clean;
    OZTextViewController _log;
    OZTextViewController _tools;
    OZTextViewController _settings;
};
