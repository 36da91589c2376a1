#pragma once

#include "Interface/Flow/DeviceOpener.h"
#include "Interface/Flow/DeviceWindow.h"
#include "Interface/Screens/Chooser/RecentDevices.h"
#include "Platform/Threads/Queue.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// From the start of the window to the screens of a device: opens the one that the start names, or has a
/// person choose. Nothing of a device is read on the main thread, which alone uses this.
class DeviceFlow {
  public:
    /// A row of the chooser.
    struct Choice {
        std::string folder;
        /// What it is called: the last name of its path, or a drawn-up title.
        std::string title;
        std::string detail;
    };
    /// What the chooser shows besides the choices.
    enum class State { choosing, opening, makingDemo, open };

    /// Where the chooser's devices come from.
    struct Sources {
        RecentDevices recent;
        /// Folders; called on a thread, since file systems may hang.
        std::function<std::vector<std::string>()> mounted;
    };

    /// What is given outlives the flow; `changed` is called when what the chooser shows is another, `close`
    /// ends the program.
    DeviceFlow(DeviceOpener& opener, platform::MainQueue& mainQueue, Host& host, Sources sources,
               std::function<void()> changed, std::function<void()> close);

    /// To be called once, when the window stands.
    void start();

    [[nodiscard]] State state() const { return _state; }
    [[nodiscard]] const std::vector<Choice>& recent() const { return _recentChoices; }
    [[nodiscard]] const std::vector<Choice>& mounted() const { return _mountedChoices; }
    /// Why the last folder was not opened, with what to do; empty where none was refused.
    [[nodiscard]] const std::string& refusal() const { return _refusal; }
    /// Whether the refused folder can be opened with the default choices.
    [[nodiscard]] bool canUseDefaults() const { return _canUseDefaults; }

    // What a person does. Passed over while a device is being opened.
    void choose(const std::string& folder) { open(folder, false); }
    void useDefaults() { open(_folder, true); }
    void tryDemoDevice();
    [[nodiscard]] bool windowShouldClose();

    /// Null until a device is open.
    [[nodiscard]] DeviceWindow* deviceWindow() const { return _deviceWindow.get(); }

  private:
    void open(const std::string& folder, bool resetSettings);
    void opened(DeviceOpener::Outcome& outcome);
    void refuse(OpeningFailure failure);
    void findChoices();
    void set(State state);

    DeviceOpener& _opener;
    platform::MainQueue& _mainQueue;
    Host& _host;
    Sources _sources;
    std::function<void()> _changed;
    std::function<void()> _close;
    State _state = State::choosing;
    std::string _folder;
    std::string _refusal;
    bool _canUseDefaults = false;
    std::vector<Choice> _recentChoices;
    std::vector<Choice> _mountedChoices;
    std::unique_ptr<DeviceWindow> _deviceWindow;
    // Last, so that their threads have ended before what they use is gone.
    platform::Queue _searching;
    platform::Queue _opening;
};
