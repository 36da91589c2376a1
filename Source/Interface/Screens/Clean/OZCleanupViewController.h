#pragma once

#include "Interface/OZViewController.h"
#include "Interface/RepeatingTimer.h"
#include "Interface/Screens/Clean/OZCleanupView.h"
#include "Model/Core/OZAction.h"
#include "Platform/Formats/PropertyList.h"
#include "Platform/Threads/Queue.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class OZCore;

/// Shows advertisements around runs; what shows none calls back at once.
class OZAdController : public OZAdBannerState {
  public:
    virtual void configure() {}
    virtual void loadInterstitial() {}
    /// Calls the handler exactly once, when the advertisement is over or there is none. Seconds.
    virtual void showInterstitial(OZViewController& over, double autodismissDelay,
                                  std::function<void()> handler) = 0;
};

/// What a run needs of the application.
class LongRunningTasks {
  public:
    virtual ~LongRunningTasks() = default;
    /// From here on the program goes on when it is left, and the device does not go to sleep; and back.
    virtual void startLongRunningTask() = 0;
    virtual void stopLongRunningTask() = 0;
    /// Closes the program.
    virtual void close() = 0;
};

/// The texts that a screen can be shown with.
enum class OZTextViewControllerType : unsigned { cleanupLog = 2 };

class OZTextViewControllerProvider {
  public:
    virtual ~OZTextViewControllerProvider() = default;
    virtual void presentTextViewControllerOfType(OZTextViewControllerType type, OZViewController& over) = 0;
};

/// The screen that every long operation of the engine runs under: it starts the engine beside the main
/// thread, polls it, and shows what has come of it. One object serves all runs, one after the other. The
/// engine knows nothing of it.
class OZCleanupViewController : public OZViewController {
  public:
    /// Throws AssertionFailure where one of both is missing. All that is given outlives the screen.
    OZCleanupViewController(InterfaceContext& context, OZCore* core, OZAdController* adController);
    ~OZCleanupViewController() override;

    void setApplication(LongRunningTasks& application) { _application = &application; }
    void setTextViewControllerProvider(OZTextViewControllerProvider& provider) {
        _textViewControllerProvider = &provider;
    }
    /// Whether the program closes with the last alert.
    void setExitOnComplete(bool exit) { _exitOnComplete = exit; }
    [[nodiscard]] bool exitOnComplete() const { return _exitOnComplete; }

    /// Without settings, those of the engine.
    void startCleanup(const std::optional<platform::Dictionary>& settings, bool analyze);
    /// Presents itself over all screens and does the action once it is there. The action "none" does nothing.
    void startAction(OZAction action, bool analyze);

    /// The names of the steps that are on, in their order and the user's language.
    [[nodiscard]] const std::vector<std::string>& activeSteps() const { return _activeSteps; }
    [[nodiscard]] OZAction action() const { return _action; }
    [[nodiscard]] bool analyzes() const { return _analyze; }
    [[nodiscard]] uint64_t currentStep() const { return _currentStep; }
    [[nodiscard]] uint64_t processedFiles() const { return _processedFiles; }
    [[nodiscard]] OZCleanupView& cleanupView() { return _cleanupView; }
    /// Whether a run goes on.
    [[nodiscard]] bool isRunning() const { return _timer.has_value(); }
    /// Whether the engine has come back from the last run, which the next tick will see.
    [[nodiscard]] bool runHasEnded() const { return !_run || runIsOver(); }

  private:
    /// A run as the worker knows it. It outlives the screen where that ends first.
    struct Run;

    void setCleanupSettings(const std::optional<platform::Dictionary>& settings);
    void setCurrentStep(uint64_t step, bool updateIndicator);
    void setProcessedFiles(uint64_t count, bool updateLabel);
    [[nodiscard]] std::string titleForAction() const;
    [[nodiscard]] bool runIsOver() const;
    void startTask();
    void progressTick();
    void fileProgressTick();
    void showInterstitial(double autodismissDelay);
    void completeTask();
    void showCompletionAlert();
    [[nodiscard]] std::string completionMessage(bool offersRespring) const;
    [[nodiscard]] bool isOn(std::string_view step) const;
    void reset();

    OZCore& _core;
    OZAdController& _adController;
    LongRunningTasks* _application = nullptr;
    OZTextViewControllerProvider* _textViewControllerProvider = nullptr;
    OZCleanupView _cleanupView;
    std::optional<platform::Dictionary> _cleanupSettings;
    std::vector<std::string> _activeSteps;
    OZAction _action{};
    bool _analyze = false;
    bool _exitOnComplete = false;
    uint64_t _currentStep = 0;
    uint64_t _processedFiles = 0;
    std::shared_ptr<Run> _run;
    std::optional<RepeatingTimer> _timer;
    // A thread of the runs' own: they never wait behind other work. Last, so that it ends first.
    platform::Queue _runQueue;
};
