#pragma once

#include "Interface/Screens/Clean/OZCleanupViewController.h"
#include "Platform/Device/Application.h"
#include "Platform/Threads/Queue.h"

#include <string>
#include <vector>

struct InterfaceContext;

/// The life of the program around its screens: when it may end, what goes on when it is left, and what it has
/// to tell meanwhile. Main thread only.
class OZAppDelegate : public LongRunningTasks {
  public:
    /// What is given outlives the delegate. Takes the device's warnings, which become dialogs.
    OZAppDelegate(InterfaceContext& context, platform::Application& application);
    OZAppDelegate(const OZAppDelegate&) = delete;
    OZAppDelegate& operator=(const OZAppDelegate&) = delete;
    ~OZAppDelegate() override;

    /// Asked when a run goes on and the program is to be left.
    void setCleanupViewController(OZCleanupViewController& screen) { _cleanup = &screen; }

    /// Called when a run has ended that was no analysis.
    void setCleanedBlock(std::function<void()> block) { _cleanedBlock = std::move(block); }

    /// False while a run goes on.
    [[nodiscard]] bool applicationShouldExitOnSuspend() const { return _applicationShouldExitOnSuspend; }
    void startLongRunningTask() override;
    void stopLongRunningTask() override;
    void close() override;

    /// The program has been left: its choices are stored, and it ends unless a run goes on.
    void applicationDidEnterBackground();
    void applicationWillEnterForeground();

    /// Somebody closes the window or ends the session. False where a run goes on: it is never broken off, and
    /// a dialog offers to close after it.
    bool windowShouldClose();
    /// Stores the choices; nothing else changes.
    void saveChoices() { _application.prepareToClose(); }

    /// Shows a line in a dialog, after a run that goes on.
    void warn(const std::string& line);

  private:
    void showWarnings();

    InterfaceContext& _context;
    platform::Application& _application;
    OZCleanupViewController* _cleanup = nullptr;
    std::function<void()> _cleanedBlock;
    bool _applicationShouldExitOnSuspend = true;
    bool _isAsking = false;
    platform::MainQueue::Token _exit = 0;
    std::vector<std::string> _warnings;
};
