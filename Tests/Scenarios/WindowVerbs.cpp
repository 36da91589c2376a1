// What scenarios can do with the screens of the window, on a host that shows them as text.

#include "Interface/Alerts/AlertPresets.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Flow/OZAppDelegate.h"
#include "Interface/Screens/Clean/OZCleanViewController.h"
#include "Interface/Screens/Clean/OZCleanupViewController.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Scenarios/Verbs.h"
#include "Tests/Scenarios/Window/TextHost.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

namespace scenarios::window {

/// The window's first screen with what stands behind it, as a start assembles it.
class Window : private OZAdController, private OZTextViewControllerProvider {
  public:
    explicit Window(World& world)
        : host([&world](const std::string& line) { world.say(line); })
        , context{.device = world.device(),
                  .languages = world.builder().localizationManager(),
                  .host = host,
                  .navigator = navigator,
                  .displayName = world.builder().bundle().infoString("CFBundleDisplayName").value_or(""),
                  .shortVersion = "1.0",
                  .performDeviceAction =
                      [this](OZDeviceAction action) {
                          host.say(fmt::format("device action {}", static_cast<int>(action)));
                      }}
        , application({.terminateWithSuccess = [this] { host.say("the program ends"); },
                       .beginBackgroundTask =
                           [this](const auto&) {
                               host.say("goes on in the background");
                               return uint64_t{1};
                           },
                       .endBackgroundTask = [this](uint64_t) { host.say("is in front again"); },
                       .synchronizeDefaults = [this] { host.say("the choices are stored"); }})
        , delegate(context, application)
        , cleanup(context, &world.builder().core(), this)
        , clean(context, world.builder().core(), cleanup)
        , painter(cleanup.cleanupView(), host) {
        context.device.mainQueue().setManualClock(true);
        cleanup.setApplication(delegate);
        delegate.setCleanupViewController(cleanup);
        cleanup.setTextViewControllerProvider(*this);
        navigator.start({&clean, &clean, &clean}, 1);
    }

    TextHost host;
    Navigator navigator{host};
    InterfaceContext context;
    platform::Application application;
    OZAppDelegate delegate;
    OZCleanupViewController cleanup;
    OZCleanViewController clean;
    TextPainter painter;

  private:
    [[nodiscard]] bool isAdBannerVisible() const override { return false; }
    [[nodiscard]] double adBannerHeight() const override { return 0; }
    void loadInterstitial() override { host.say("advertisement loads"); }
    void showInterstitial(OZViewController& /*over*/, double delay, std::function<void()> handler) override {
        host.say(fmt::format("advertisement for {} s", delay));
        handler();
    }
    void presentTextViewControllerOfType(OZTextViewControllerType type, OZViewController& /*over*/) override {
        host.say(fmt::format("text {}", static_cast<int>(type)));
    }
};

Window& windowOf(World& world) {
    return *world.kept<std::shared_ptr<Window>>([&] { return std::make_shared<Window>(world); });
}

OZTableViewController& tableOf(World& world) {
    return dynamic_cast<OZTableViewController&>(windowOf(world).navigator.visible());
}

std::string textOf(const Cell& cell) {
    std::string line = cell.text;
    if (cell.control) {
        const auto* choice = std::get_if<SegmentedControl>(&*cell.control);
        line += ": " + (choice != nullptr                             ? choice->titles.at(choice->selected)
                        : std::get<SwitchControl>(*cell.control).isOn ? "on"
                                                                      : "off");
    }
    return line + (cell.accessoryType == AccessoryType::disclosureIndicator ? " >" : "") + "  " + cell.image;
}

std::string textOf(const std::optional<BarButton>& button) {
    return !button ? "" : button->isEnabled ? " [" + button->title + "]" : " (" + button->title + ")";
}

/// The screen on top: its bar, and the rows of its sections.
VERB("screen") {
    auto& table = tableOf(world);
    const auto& bar = table.navigationItem();
    world.say(bar.title + textOf(bar.leftButton) + textOf(bar.rightButton));
    for (size_t section = 0; section < table.numberOfSections(); ++section) {
        world.say(fmt::format("-- {} {} {}", table.dataSource().sectionNameAtIndex(section),
                              table.heightForHeaderInSection(section),
                              table.heightForFooterInSection(section)));
        for (size_t row = 0; row < table.numberOfRowsInSection(section); ++row) {
            world.say(textOf(table.cellForRowAtIndexPath({.section = section, .row = row})));
        }
    }
}

IndexPath rowCalled(OZTableViewController& table, const std::string& text) {
    for (size_t section = 0; section < table.numberOfSections(); ++section) {
        for (size_t row = 0; row < table.numberOfRowsInSection(section); ++row) {
            if (table.cellForRowAtIndexPath({.section = section, .row = row}).text == text) {
                return {.section = section, .row = row};
            }
        }
    }
    throw std::runtime_error("no row: " + text);
}

/// What has begun in the background has done its work in the tree; what tells of it comes with the next tick.
void settle(Window& window) {
    while (!window.cleanup.runHasEnded()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

/// A button of the dialog on top, else of the bar, else a row.
VERB("press") {
    auto& window = windowOf(world);
    if (!window.host.alerts.empty()) {
        if (!window.host.alerts.back()->press(words.at(0))) {
            throw std::runtime_error("no button: " + words[0]);
        }
        settle(window);
        return;
    }
    const auto& bar = tableOf(world).navigationItem();
    for (const auto* button : {&bar.leftButton, &bar.rightButton}) {
        if (*button && (*button)->title == words.at(0)) {
            (*button)->action();
            settle(window);
            return;
        }
    }
    tableOf(world).didSelectRowAtIndexPath(rowCalled(tableOf(world), words[0]));
}

/// "turn ROW VALUE": a control of a row, with the number of its new state.
VERB("turn") {
    auto& table = tableOf(world);
    table.controlChanged(rowCalled(table, words.at(0)), std::stoull(words.at(1)));
}

VERB("type") {
    windowOf(world).host.alerts.back()->text = words.at(0);
}

/// "wait SECONDS [TIMES]" of the interface's clock.
VERB("wait") {
    auto& queue = windowOf(world).context.device.mainQueue();
    for (size_t times = words.size() > 1 ? std::stoull(words[1]) : 1; times > 0; --times) {
        queue.advance(std::stod(words.at(0)));
        queue.runPending();
    }
}

VERB("speak") {
    windowOf(world).context.languages.setUserLanguage(words.at(0));
}

/// Sets "exitOnComplete".
VERB("exits") {
    windowOf(world).cleanup.setExitOnComplete(true);
}

/// "action NUMBER [analyze]", as the screens of tools start it.
VERB("action") {
    auto& window = windowOf(world);
    window.cleanup.startAction(static_cast<OZAction>(std::stoul(words.at(0))), words.size() > 1);
    settle(window);
}

/// Somebody closes the window.
VERB("close") {
    world.say(windowOf(world).delegate.windowShouldClose() ? "closes" : "stays");
}

/// "leave" or "return": the program goes out of sight, and comes back.
VERB("leave") {
    windowOf(world).delegate.applicationDidEnterBackground();
}

VERB("return") {
    windowOf(world).delegate.applicationWillEnterForeground();
}

/// A line for the user from somewhere in the engine, such as items that stayed.
VERB("tell") {
    auto& device = windowOf(world).context.device;
    device.warnings().tell(words.at(0));
    device.mainQueue().runPending();
}

VERB("look-only") {
    windowOf(world).context.lookOnlyReason = words.at(0);
}

} // namespace scenarios::window
