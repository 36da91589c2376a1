#pragma once

#include "Desktop/MainWindow.h"
#include "Launch/LauncherOptions.h"
#include "Launch/WindowStart.h"

#include <QAccessible>
#include <QQuickWindow>
#include <functional>
#include <string>
#include <vector>

/// The real window in this process, used as a person uses it: by what a screen reader would read, by clicks
/// and by keys. An application is there by then. What is not found in time throws std::runtime_error with all
/// that is on the screen.
class WindowDriver {
  public:
    /// The environment of the drivers' process: no display, the software's own drawing, no desktop settings.
    static void prepareEnvironment();

    /// Opens the window on a device, or on the chooser where there is none. `state` is a folder for what the
    /// window keeps of recent devices.
    WindowDriver(const std::string& state, std::optional<std::string> device);
    ~WindowDriver();

    void resize(int width, int height);
    /// Waits for a button, row or switch of that name, or one that begins with it and a comma, and clicks
    /// into its middle.
    void press(const std::string& name);
    /// The same for the switch in a row of that name, and for a tab.
    void turn(const std::string& name);
    void selectTab(const std::string& name);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const std::string& text);
    /// Waits until something of that name is on the screen, up to so many seconds.
    void waitFor(const std::string& name, double seconds = 20);
    /// Lets the window run for a time, or until it says yes; false when the time is over.
    bool run(double seconds, const std::function<bool()>& until = nullptr);
    /// What a screen reader would read, a line each: role, name, state and, of what holds others, these.
    [[nodiscard]] std::vector<std::string> read();
    /// Everything on the screen that has no name and can be pressed.
    [[nodiscard]] std::vector<std::string> nameless();
    [[nodiscard]] QImage picture() { return _window->grabWindow(); }
    [[nodiscard]] DeviceFlow& flow() { return _main->flow(); }
    [[nodiscard]] QQuickWindow& window() { return *_window; }

  private:
    using Filter = bool (*)(QAccessibleInterface& element);

    QAccessibleInterface* find(const std::string& name, Filter filter);
    QAccessibleInterface* await(const std::string& name, Filter filter, double seconds = 20);
    /// Scrolls to what is out of sight, and clicks.
    void click(const std::string& name, Filter filter);

    LauncherOptions _options;
    WindowStart _start;
    std::unique_ptr<MainWindow> _main;
    QQuickWindow* _window = nullptr;
};
